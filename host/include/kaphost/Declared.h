// SPDX-License-Identifier: MIT
#pragma once

#include <cxxabi.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <memory>
#include <span>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "kap/KAPInterface.h"

// Procedures that observe calls, made from the declarations of interfaces. A program declares the
// interfaces that its host observes in addition to its own:
//
//   KAPHost::HostOptions options;
//   options.fDebug.fTrace = "calls.txt";
//   options.fDebug.fDeclared = KAPHost::Declare<KAP_T_MT::POSInterfaceSet>();
//
// The rest of this header implements Declare.

namespace KAPHost {

// What an argument or a result is, as far as its type says.
enum class ValueKind : unsigned char {
  kNothing,
  kBool,
  kSigned,
  kUnsigned,
  kReal,
  kText,  // zero-terminated
  kAtom,
  kError,
  kContainer,
  kBuffer,
  kPointer,
  kPlace,  // where the procedure writes a result
  kOther,
};

// An argument or a result, without its type.
struct WatchedValue {
  ValueKind fKind = ValueKind::kNothing;    // what it is
  ValueKind fPlaced = ValueKind::kNothing;  // of a place: what it holds
  unsigned char fSize = 0;                  // of a place: its size in bytes
  std::uint64_t fBits = 0;                  // the value

  // The value as a pointer.
  template <class Pointer = void*>
  Pointer As() const noexcept {
    return reinterpret_cast<Pointer>(fBits);
  }
};

struct DeclaredMethod;

// One procedure that is observed. A static object: code that kept the address of an observing
// procedure may call it as long as the process lives.
struct WatchedProc {
  std::atomic<void*> fTarget = nullptr;                  // the procedure
  std::atomic<const char*> fInterface = nullptr;         // under which it is registered
  std::atomic<const char*> fCallee = nullptr;            // the component that has registered it
  std::atomic<const DeclaredMethod*> fMethod = nullptr;  // what it implements
  std::atomic<bool> fIsUnloaded = false;                 // since it was registered
};

// How many procedures of one method are observed. More than one component may implement a method,
// such as those of streams. Further procedures are not observed, and the trace says so.
inline constexpr unsigned kWatchedVariants = 8;

// A static object for each method.
struct DeclaredMethod {
  const char* fInterface;                        // the names in the binder
  const char* fMethod;                           // of the method
  const char* fProc;                             // and of the procedure
  bool fReleases;                                // of the traits: fNoOpUnbound
  bool fThrows;                                  // and fThrows
  std::array<void*, kWatchedVariants> fEntries;  // the observing procedures
  WatchedProc* fProcs;                           // what each of them observes
};

// One call that is observed, on the stack of its thread.
class WatchedCall {
 public:
  // `watchCall` is the address of the function that makes the call.
  WatchedCall(const WatchedProc& proc, const void* returnAddress, const void* watchCall,
              std::span<const WatchedValue> arguments) noexcept;
  WatchedCall(const WatchedCall&) = delete;
  WatchedCall& operator=(const WatchedCall&) = delete;
  ~WatchedCall();

  // Whether the procedure must not be called, because an argument is not a handle.
  bool IsRefused() const noexcept { return fIsRefused; }
  // The error that a rejected call returns: a new reference.
  KAPError* Refusal() const noexcept;

  // The call has ended. To be called once, one of them.
  void Return(const WatchedValue& result) noexcept;
  void Throw() noexcept;

 private:
  friend class Watcher;
  friend struct Site CurrentSite(bool withStack) noexcept;

  const char* FindCaller() const noexcept;
  void End(const WatchedValue* result) noexcept;

  class Watcher* fWatcher;  // null: the call is not observed
  const WatchedProc& fProc;
  const void* fReturnAddress;
  const void* fWatchCall;
  std::span<const WatchedValue> fArguments;
  const char* fInterface = "";
  const char* fCaller = "";
  const char* fCallee = "";
  WatchedCall* fOuter = nullptr;
  bool fIsRefused = false;
  const void* fObject = nullptr;               // whose use is counted until the end
  std::unique_ptr<struct TraceEntry> fTraced;  // null: not in the trace
};

// What a value of the type is.
template <class Type>
constexpr ValueKind KindOf() noexcept {
  using Pointee = std::remove_pointer_t<Type>;
  if (std::is_void_v<Type>) return ValueKind::kNothing;
  if (std::is_same_v<Type, bool>) return ValueKind::kBool;
  if (std::is_floating_point_v<Type>) return ValueKind::kReal;
  if (std::is_enum_v<Type> || std::is_signed_v<Type>) return ValueKind::kSigned;
  if (std::is_integral_v<Type>) return ValueKind::kUnsigned;
  if (!std::is_pointer_v<Type>) return ValueKind::kOther;
  if (std::is_same_v<Pointee, const char>) return ValueKind::kText;
  if (std::is_same_v<Pointee, KAPStringAtom>) return ValueKind::kAtom;
  if (std::is_same_v<Pointee, KAPError>) return ValueKind::kError;
  if (std::is_same_v<Pointee, KAPContainer>) return ValueKind::kContainer;
  if (std::is_same_v<Pointee, KAPSharedBuffer>) return ValueKind::kBuffer;
  return ValueKind::kPointer;
}

// The value without its type.
template <class Type>
WatchedValue ValueOf(Type value) noexcept {
  WatchedValue watched{.fKind = KindOf<Type>()};
  if constexpr (std::is_floating_point_v<Type>) {
    watched.fBits = std::bit_cast<std::uint64_t>(static_cast<double>(value));
  } else if constexpr (std::is_pointer_v<Type>) {
    watched.fBits = reinterpret_cast<std::uint64_t>(value);
  } else if constexpr (std::is_integral_v<Type> || std::is_enum_v<Type>) {
    watched.fBits = static_cast<std::uint64_t>(value);
  }
  return watched;
}

// The first argument of a procedure that returns an error is where it writes its result, if it
// points to something that a procedure can write.
template <class Result, class First, class... Others>
void MarkPlace(WatchedValue& first) noexcept {
  using Placed = std::remove_pointer_t<First>;
  if constexpr (std::is_same_v<Result, KAPError*> && std::is_pointer_v<First> &&
                std::is_scalar_v<Placed> && !std::is_const_v<Placed>) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): the place of a pointer is meant
    first = {ValueKind::kPlace, KindOf<Placed>(), sizeof(Placed), first.fBits};
  }
}

// One function for each type of procedures. The observing procedures, one for each method and
// variant, only call it.
template <class Result, class... Args>
[[gnu::noinline]] Result WatchCall(const WatchedProc& proc, const void* returnAddress,
                                   Args... args) {
  const auto target =
      reinterpret_cast<Result (*)(Args...)>(proc.fTarget.load(std::memory_order_acquire));
  WatchedValue values[sizeof...(Args) + 1] = {ValueOf(args)...};
  if constexpr (sizeof...(Args) != 0) MarkPlace<Result, Args...>(values[0]);
  WatchedCall call(proc, returnAddress, reinterpret_cast<const void*>(&WatchCall<Result, Args...>),
                   {values, sizeof...(Args)});
  try {
    if (call.IsRefused()) {
      if constexpr (std::is_void_v<Result>) {
        return call.Return({});
      } else if constexpr (std::is_same_v<Result, KAPError*>) {
        Result refusal = call.Refusal();
        call.Return(ValueOf(refusal));
        return refusal;
      } else {
        call.Return(ValueOf(Result()));
        return Result();
      }
    }
    if constexpr (std::is_void_v<Result>) {
      target(args...);
      call.Return({});
    } else {
      const Result result = target(args...);
      call.Return(ValueOf(result));
      return result;
    }
  } catch (const abi::__forced_unwind&) {
    throw;  // not an exception: the thread ends
  } catch (...) {
    call.Throw();
    throw;
  }
}

// The observing procedures of one method.
template <class Interface, std::size_t kSlot, class Proc>
struct WatchedMethod;

// With the types of the method.
template <class Interface, std::size_t kSlot, class Result, class... Args>
struct WatchedMethod<Interface, kSlot, Result (*)(Args...)> {
  // One of them.
  template <unsigned kVariant>
  static Result Call(Args... args) {
    return WatchCall<Result, Args...>(fProcs[kVariant], __builtin_return_address(0), args...);
  }

  // The static object of the method.
  static const DeclaredMethod& Declared() {
    constexpr auto entry = Interface::kEntries[kSlot];
    static const DeclaredMethod declared{
        Interface::kName,
        entry.fMethodName,
        entry.fProcName,
        Interface::kTraits[kSlot].fNoOpUnbound,
        Interface::kTraits[kSlot].fThrows,
        Entries(std::make_integer_sequence<unsigned, kWatchedVariants>()),
        fProcs};
    return declared;
  }

 private:
  template <unsigned... kVariants>
  static std::array<void*, kWatchedVariants> Entries(
      std::integer_sequence<unsigned, kVariants...>) {
    return {reinterpret_cast<void*>(&Call<kVariants>)...};
  }

  inline static constinit WatchedProc fProcs[kWatchedVariants];
};

// Adds the methods of an interface.
template <class Interface, std::size_t... kSlots>
void DeclareSlots(std::vector<const DeclaredMethod*>& methods, std::index_sequence<kSlots...>) {
  (methods.push_back(
       &WatchedMethod<Interface, kSlots, typename Interface::template ProcAt<kSlots>>::Declared()),
   ...);
}

// The methods of all interfaces of some sets (TKAPInterfaceSet).
template <class... Sets>
std::vector<const DeclaredMethod*> Declare() {
  std::vector<const DeclaredMethod*> methods;
  const auto add = [&]<class Interface>() {
    DeclareSlots<Interface>(methods, std::make_index_sequence<Interface::kCount>());
  };
  (Sets::ForEach(add), ...);
  return methods;
}

}  // namespace KAPHost
