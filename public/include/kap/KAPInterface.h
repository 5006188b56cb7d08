#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "kap/KAPTypes.h"

// Declaring an interface: its name and, for each method in slot order, the method's name, the
// procedure's name in the binder, its signature and its traits. Everything else follows from this
// one declaration: the table of names, the slot of a method, typed calls, typed registration, what
// becomes a no-op when the binding ends, and what a host's fault injection and accounting do.
//
//   struct KAPStringInterface
//       : TKAPInterface<"KAPStringInterface",
//                       // The text of `atom`, borrowed: it lives as long as the atom. [any thread]
//                       TKAPMethod<"GetCString", "KAPGetCStringProc", const char*(KAPStringAtom*)>,
//                       ...> {};
//
// A method that an interface does not have, or a procedure of another signature, does not compile.
// Tables only grow: new methods go to the end, so that slots keep their numbers.
//
// The comment above a method is its contract. It ends with a thread tag:
//
//   [any thread]      no restriction
//   [shared read]     any thread, together with other reads of the same object, not while it
//                     changes
//   [exclusive]       any thread; nothing else may use the same object at the same time
//   [binding thread]  the thread that binds and unbinds the runtime

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The kinds of calls that a host's fault injection tells apart.
enum class KAPFault : unsigned char {
  kNever,  // the call cannot fail; the default in a declaration
  kAny,    // all others together; used in rules, never in a declaration
  kAtom,
  kError,
  kBlock,
  kContainer,
  kReference,  // a reference to a container
  kInstance,
  kMethod,
  kBuffer,
  kStream,
  kRead,
  kWrite,
  kSeek,
  kMark,
  kIndependentStream,
  kCache,
  kSink,
  kProgress,
  kCount  // keep last
};

// The kinds of things that a host counts for its leak report.
enum class KAPResource : unsigned char {
  kNothing,  // the call makes nothing that is counted; the default in a declaration
  kAtom,
  kError,
  kContainer,
  kBlock,
  kBuffer,
  kFile,
  kCacheID,
  kCacheItem,
  kCacheSet,
  kCachePurge,
  kSink,
  kProgress,
  kCount  // keep last
};

// What code needs to know of a method besides its signature.
struct KAPTraits {
  // Becomes a no-op when the binding ends. Set for what releases something: static objects may
  // still do so when the host is gone. Only such a method may be called where nothing may throw.
  bool fNoOpUnbound = false;
  KAPFault fFault = KAPFault::kNever;
  KAPResource fMakes = KAPResource::kNothing;
};

inline constexpr KAPTraits kKAPReleases = {.fNoOpUnbound = true};

constexpr KAPTraits KAPFails(KAPFault fault) { return {.fFault = fault}; }
constexpr KAPTraits KAPMakes(KAPResource resource, KAPFault fault) {
  return {.fFault = fault, .fMakes = resource};
}

// A name as a template argument.
template <std::size_t Size>
struct TKAPName {
  // NOLINTNEXTLINE(google-explicit-constructor): a string literal stands for the name itself
  constexpr TKAPName(const char (&text)[Size]) {
    for (std::size_t i = 0; i < Size; ++i) fText[i] = text[i];
  }
  constexpr std::string_view View() const { return {fText, Size - 1}; }

  char fText[Size] = {};
};

// An entry of a table to be loaded.
struct _t_KAPFTabEntry {
  const char* fMethodName;
  const char* fProcName;
};

// An entry of a table to be registered.
struct _t_KAPFTabRegEntry {
  const char* fMethodName;
  const char* fProcName;
  void* fProc;
};

template <TKAPName MethodName, TKAPName ProcName, class Signature, KAPTraits Traits = KAPTraits()>
struct TKAPMethod {
  static_assert(std::is_function_v<Signature>);
  using Proc = Signature*;
  static constexpr std::string_view kMethodName = MethodName.View();
  static constexpr _t_KAPFTabEntry kEntry = {MethodName.fText, ProcName.fText};
  static constexpr KAPTraits kTraits = Traits;
};

template <TKAPName Name, class... Methods>
struct TKAPInterface {
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
  // A misspelt name costs one line of error: the slot is that of the first method then.
  template <TKAPName Method>
  static constexpr std::size_t SlotOf() {
    constexpr std::size_t kFound = Find(Method.View());
    static_assert(kFound < kCount, "the interface has no method of this name");
    return kFound < kCount ? kFound : 0;
  }

 public:
  // The slot of the method.
  template <TKAPName Method>
  static constexpr std::size_t kSlot = SlotOf<Method>();

  template <std::size_t Slot>
  using ProcAt = typename std::tuple_element_t<Slot, std::tuple<Methods...>>::Proc;

  template <TKAPName Method>
  using Proc = ProcAt<kSlot<Method>>;

  // The entries that register `procs` as this interface's procedures, in slot order. Entries refer
  // to static texts.
  static std::array<_t_KAPFTabRegEntry, kCount> Registration(typename Methods::Proc... procs) {
    return {{{Methods::kEntry.fMethodName, Methods::kEntry.fProcName,
              reinterpret_cast<void*>(procs)}...}};
  }
};

// A list of interfaces.
template <class... Interfaces>
struct TKAPInterfaceSet {
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
  kLoaded,
  kMissingProcedure,  // the runtime is bound, and the host lacks a procedure
  kUnavailable        // the runtime is not bound, or not yet: then nothing is an error
};

}  // namespace KAP_T_MT
