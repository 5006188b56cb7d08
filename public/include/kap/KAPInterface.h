// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "kap/KAPAdopt.h"
#include "kap/KAPTypes.h"

// The declaration of an interface: its name and, for each method in slot order, the method's name,
// the procedure's name in the binder, the function type and the traits. One declaration serves
// everyone: the table of names, the slot of a method, typed calls, typed registration, what becomes
// a no-op when the binding ends, and what a host's fault injection and accounting do.
//
//   struct TotalsInterface
//       : TKAPInterface<"TotalsInterface",
//                       // The sum of the array's numbers. Borrows the array. Failure: 0 and a
//                       // report. [shared read]
//                       TKAPMethod<"Sum", "TotalsSumProc", double(POSArray* numbers)>> {};
//
//   if (!KAPRegisterInterface<TotalsInterface>(&TotalsSumProc)) return 0;     // the component
//   double sum = TKAPInterfaceClient<TotalsInterface>::Call<"Sum">(numbers);  // its client
//
// A misspelt method name, a missing procedure, a procedure of another type and one that is not
// `noexcept` do not compile; the first error says why in a sentence. Nor do two methods of one
// name, and parameters and results that compilers may lay out in different ways: a method has
// pointers, numbers, enumerations and bool.
//
// Tables only grow: add new methods at the end, so that slots keep their numbers. A method whose
// function type must change gets a new procedure name, by convention with a suffix such as "V2": a
// component that knows only the old revision then finds the old procedure or none.
//
// The comment above a method is its contract. It ends with a thread tag:
//
//   [any thread]      no restriction
//   [shared read]     any thread, together with other reads of the same object, but not while the
//                     object changes
//   [exclusive]       any thread; nothing else may use the same object at the same time
//   [binding thread]  the thread that binds and unbinds the runtime

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The kinds of calls that a host's fault injection distinguishes.
enum class KAPFault : unsigned char {
  kNever,      // fault injection leaves the call alone; the default in a declaration
  kAny,        // every kind together; for fault rules, never for a declaration
  kAtom,       // making an atom
  kError,      // making an error
  kBlock,      // taking or resizing a block of memory
  kContainer,  // making a container
  kReference,  // adding a reference to a container
  kInstance,   // registering an interface or an instance of a container, finding an instance
  kMethod,     // finding a method of a container
  kBuffer,     // making a shared buffer
  kStream,     // making a stream
  kRead,       // reading from a stream
  kWrite,      // writing to a stream
  kSeek,       // moving the position of a stream, to its start as well
  kMark,       // asking for the position of a stream
  kIndependentStream,  // making a stream from another one
  kCache,              // making an identity, an item, a purge or a set of the cache
  kSink,               // making a sink or a filter
  kProgress,           // making a progress object
  kCount               // keep last
};

// The kinds of resources that a host counts for its leak report.
enum class KAPResource : unsigned char {
  kNothing,     // the call makes nothing counted; the default in a declaration
  kAtom,        // references to atoms
  kError,       // references to errors, other than core errors
  kContainer,   // references to containers
  kBlock,       // blocks of memory
  kBuffer,      // references to shared buffers
  kFile,        // open files
  kCacheID,     // references to identities
  kCacheItem,   // items in the cache
  kCacheSet,    // references to sets of identities
  kCachePurge,  // purges in progress
  kSink,        // references to sinks and filters
  kProgress,    // references to progress objects
  kCount        // keep last
};

// What code needs to know about a method besides its function type.
struct KAPTraits {
  // The method becomes a no-op when the binding ends. Set it for methods that release something:
  // static objects may release what they hold after the host is gone. Destructors may call only
  // such methods (TKAPProcTable::CallReleasing).
  bool fNoOpUnbound = false;
  // The procedure may throw, so that registering it does not require `noexcept`. For procedures
  // whose only callers are C++ and catch what they throw.
  bool fThrows = false;
  // The kind of call for a host's fault injection, and what a successful call adds to its
  // accounting.
  KAPFault fFault = KAPFault::kNever;
  KAPResource fMakes = KAPResource::kNothing;
};

// The traits that declarations use: of a method that releases something, of one that may throw, of
// one that fault injection fails, and of one that also makes a counted resource.
inline constexpr KAPTraits kKAPReleases = {.fNoOpUnbound = true};
inline constexpr KAPTraits kKAPThrows = {.fThrows = true};
constexpr KAPTraits KAPFails(KAPFault fault) { return {.fFault = fault}; }
constexpr KAPTraits KAPMakes(KAPResource resource, KAPFault fault) {
  return {.fFault = fault, .fMakes = resource};
}

// A string literal as a template argument.
template <std::size_t Size>
struct TKAPName {
  // The text, and the same without its terminator.
  // NOLINTNEXTLINE(google-explicit-constructor): a string literal stands for the name itself
  constexpr TKAPName(const char (&text)[Size]) {
    for (std::size_t i = 0; i < Size; ++i) fText[i] = text[i];
  }
  constexpr std::string_view View() const { return {fText, Size - 1}; }  // without the terminator

  // The terminated text. Public, since a template argument has no private members.
  char fText[Size] = {};
};

// An entry of a table to load: plain pointers to static strings, as the untyped loaders need them.
struct _t_KAPFTabEntry {
  const char* fMethodName;  // within the interface
  const char* fProcName;    // in the binder
};

// An entry of a table to register.
struct _t_KAPFTabRegEntry {
  const char* fMethodName;  // within the interface
  const char* fProcName;    // in the binder
  void* fProc;              // the procedure
};

// Whether a procedure of the type `Proc` promises not to throw when called as `Method`. Lambdas
// count as procedures.
template <class Proc, class Method>
inline constexpr bool kKAPIsNoexceptProc = false;
template <class Proc, class Result, class... Args>
inline constexpr bool kKAPIsNoexceptProc<Proc, Result (*)(Args...)> =
    std::is_nothrow_invocable_v<Proc, Args...>;

// Whether a type crosses the binder: its layout is the same for every compiler and language.
template <class Type>
inline constexpr bool kKAPCrosses = std::is_void_v<Type> || std::is_arithmetic_v<Type> ||
                                    std::is_enum_v<Type> || std::is_pointer_v<Type>;

// The same for all the types of a method.
template <class Function>
inline constexpr bool kKAPAllCross = false;
template <class Result, class... Args>
inline constexpr bool kKAPAllCross<Result(Args...)> = kKAPCrosses<Result> &&
                                                      (kKAPCrosses<Args> && ...);

// Whether a type of functions says `noexcept`.
template <class Function>
inline constexpr bool kKAPSaysNoexcept = false;
template <class Result, class... Args>
inline constexpr bool kKAPSaysNoexcept<Result(Args...) noexcept> = true;

// Whether a caller must use a result: an error, a new reference or a block leaks if nothing takes
// it, and a bool says whether the call has done anything.
template <class Result>
inline constexpr bool kKAPMustUse = std::is_pointer_v<Result> || std::is_same_v<Result, bool>;

// Whether a type is a TKAPNewHandle.
template <class Given>
inline constexpr bool kKAPIsNewHandle = false;
template <class Object>
inline constexpr bool kKAPIsNewHandle<TKAPNewHandle<Object>> = true;

// Calls do not take a new handle (TKAPNewHandle): the procedure would borrow it, and nothing would
// release it afterwards.
template <class Result>
struct TKAPNoNewHandles {
  // One error, instead of a conversion.
  template <class... Given>
  requires(kKAPIsNewHandle<std::remove_cvref_t<Given>> || ...) Result operator()(Given&&...) const {
    static_assert(sizeof...(Given) == 0, "a new handle needs an owner: a call only borrows it");
    return Result();
  }
};

// A call of one method: a function object. `GetProc` returns the procedure. Its parameters are
// exactly those that the method declares, so an argument of another type is an error in the line
// that passes it, and a literal null pointer is an argument like any other.
template <auto GetProc, class Proc = decltype(GetProc())>
struct TKAPCall;

// For a method without a result, or with one that may be ignored.
template <auto GetProc, class Result, class... Args>
struct TKAPCall<GetProc, Result (*)(Args...)> : TKAPNoNewHandles<Result> {
  using TKAPNoNewHandles<Result>::operator();
  // Calls the procedure.
  Result operator()(Args... args) const { return GetProc()(args...); }
};

// For a method with a result that must be used.
template <auto GetProc, class Result, class... Args>
requires(kKAPMustUse<Result>) struct TKAPCall<GetProc, Result (*)(Args...)>
    : TKAPNoNewHandles<Result> {
  using TKAPNoNewHandles<Result>::operator();
  // Calls the procedure.
  [[nodiscard]] Result operator()(Args... args) const { return GetProc()(args...); }
};

// A call that releases something. Does not throw. Returns false if the procedure is missing.
template <auto GetProc, class Proc = decltype(GetProc())>
struct TKAPReleasingCall;

// Of a procedure with any parameters.
template <auto GetProc, class Result, class... Args>
struct TKAPReleasingCall<GetProc, Result (*)(Args...)> : TKAPNoNewHandles<bool> {
  using TKAPNoNewHandles::operator();
  // Calls the procedure, if there is one.
  bool operator()(Args... args) const noexcept {
    const auto proc = GetProc();
    if (!proc) [[unlikely]]
      return false;
    proc(args...);
    return true;
  }
};

// The result of a call that does not compile, so that the error about it stays the only one.
struct KAPNoResult {
  // Stands for any result.
  template <class Result>
  operator Result() const;  // NOLINT(google-explicit-constructor): stands for any result
};

// The method of a misspelt name, for the same reason: takes any arguments.
struct KAPNoMethod {
  // Takes any arguments.
  template <class... Args>
  KAPNoResult operator()(Args&&...) const;
};

// One method of an interface. `Function` is a function type, such as `double(POSArray*)`.
template <TKAPName MethodName, TKAPName ProcName, class Function, KAPTraits Traits = KAPTraits()>
struct TKAPMethod {
  static_assert(std::is_function_v<Function>);
  static_assert(!kKAPSaysNoexcept<Function>,
                "write the type of a method without noexcept: all procedures are");
  static_assert(kKAPAllCross<Function> || kKAPSaysNoexcept<Function>,
                "a method has pointers, numbers, enumerations and bool: no class or reference "
                "crosses the binder");
  // The type of the procedure.
  using Proc = Function*;
  // The names, as text and as an entry of a table, and what code needs to know besides.
  static constexpr std::string_view kMethodName = MethodName.View();
  static constexpr _t_KAPFTabEntry kEntry = {MethodName.fText, ProcName.fText};
  static constexpr KAPTraits kTraits = Traits;
};

// An interface: `Name` and the methods in slot order. Derive a named struct from it, so that error
// messages and debuggers show the interface's name instead of the whole list.
template <TKAPName Name, class... Methods>
struct TKAPInterface {
  // The interface name, the number of methods, and the names and traits of each by slot.
  static constexpr const char* kName = Name.fText;
  static constexpr std::size_t kCount = sizeof...(Methods);
  static constexpr _t_KAPFTabEntry kEntries[kCount] = {Methods::kEntry...};
  static constexpr KAPTraits kTraits[kCount] = {Methods::kTraits...};

 private:
  static constexpr std::size_t Find(std::string_view method) {
    constexpr std::string_view kNames[] = {Methods::kMethodName...};
    std::size_t slot = 0;
    while (slot < kCount && kNames[slot] != method) ++slot;
    return slot;
  }
  static constexpr bool HasDistinctNames() {
    constexpr std::string_view kNames[] = {Methods::kMethodName...};
    for (std::size_t slot = 0; slot < kCount; ++slot) {
      if (Find(kNames[slot]) != slot) return false;
    }
    return true;
  }
  // Falls back to slot 0 after a failed assertion, so that a misspelt name produces one error
  // message instead of a cascade.
  template <TKAPName Method>
  static constexpr std::size_t SlotOf() {
    static_assert(HasDistinctNames(), "two methods of the interface have the same name");
    static_assert(kHas<Method>, "the interface has no method of this name");
    return kHas<Method> ? Find(Method.View()) : 0;
  }

 public:
  // Whether there is a method of this name: kHas<"Sum">.
  template <TKAPName Method>
  static constexpr bool kHas = Find(Method.View()) < kCount;

  // The slot of a method: kSlot<"Sum">.
  template <TKAPName Method>
  static constexpr std::size_t kSlot = SlotOf<Method>();

  // The type of a procedure, by slot.
  template <std::size_t Slot>
  using ProcAt = typename std::tuple_element_t<Slot, std::tuple<Methods...>>::Proc;

  // The same by name.
  template <TKAPName Method>
  using Proc = ProcAt<kSlot<Method>>;

  // Checks at compile time that `procs` may be registered: one for each method, in slot order, of
  // the method's type and `noexcept`.
  template <class... Procs>
  static constexpr bool CheckProcs() {
    static_assert(HasDistinctNames(), "two methods of the interface have the same name");
    static_assert(sizeof...(Procs) == kCount, "an interface needs one procedure for each method");
    if constexpr (sizeof...(Procs) == kCount) {
      constexpr bool fit = (std::is_convertible_v<Procs, typename Methods::Proc> && ...);
      static_assert(fit, "a procedure does not have the type that its method declares");
      if constexpr (fit) {
        constexpr bool promised =
            ((Methods::kTraits.fThrows || kKAPIsNoexceptProc<Procs, typename Methods::Proc>)&&...);
        static_assert(promised,
                      "a registered procedure must be noexcept: no exception may leave it");
        return true;
      }
    }
    return false;
  }

  // The entries that register `procs` as this interface's procedures, in slot order. The entries
  // point to static strings. KAPRegisterInterface uses them; it also checks for `noexcept`.
  static std::array<_t_KAPFTabRegEntry, kCount> Registration(typename Methods::Proc... procs) {
    return {{{Methods::kEntry.fMethodName, Methods::kEntry.fProcName,
              reinterpret_cast<void*>(procs)}...}};
  }
};

// A list of interfaces, for code that treats all of them alike.
template <class... Interfaces>
struct TKAPInterfaceSet {
  // How many interfaces there are, and their names.
  static constexpr std::size_t kCount = sizeof...(Interfaces);
  static constexpr const char* kNames[kCount] = {Interfaces::kName...};

  // Calls visit.operator()<Interface>() for each interface, in order.
  template <class Visitor>
  static constexpr void ForEach(Visitor&& visit) {
    (visit.template operator()<Interfaces>(), ...);
  }
};

// The outcome of loading the procedures of an interface.
enum class KAPLoadOutcome {
  kLoaded,            // all procedures are there
  kMissingProcedure,  // the runtime is bound, and the host lacks a procedure
  kUnavailable        // no host is bound, or binding is under way
};

}  // namespace KAP_T_MT
