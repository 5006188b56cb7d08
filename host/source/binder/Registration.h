// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include "binder/Binder.h"
#include "binder/Failures.h"
#include "faults/Gate.h"
#include "kap/KAPInterface.h"

// Registering the host's procedures. What the declaration of a method says is done here, once for
// all: a procedure's body sees result places that are not null and hold null or 0, and runs only
// when fault injection lets it. A procedure whose declaration asks for neither is registered as it
// is.
//
//   RegisterProcs<KAP_T_MT::KAPStringInterface, &NewStringAtom, &DeleteStringAtom, &GetCString,
//                 &AddRef>(binder);

namespace KAPHost {

using KAP_T_MT::KAPResource;
using KAP_T_MT::KAPTraits;

// Registers an interface of the host. Each interface of KAPHostInterfaceSet has a specialisation in
// the file with its procedures; one that is forgotten does not link.
template <class Interface>
void RegisterService(Binder& binder);

template <class Type>
inline constexpr bool kIsResultPlace = false;
template <class Type>
inline constexpr bool kIsResultPlace<Type*> = std::is_scalar_v<Type> && !std::is_const_v<Type>;

// The size of the block that a procedure is asked for: its last std::size_t.
template <class... Args>
std::size_t BlockSize(Args... args) noexcept {
  std::size_t size = 0;
  const auto take = [&](auto arg) {
    if constexpr (std::is_same_v<decltype(arg), std::size_t>) size = arg;
  };
  (take(args), ...);
  return size;
}

// A procedure that makes errors returns null when it cannot; any other with such a result returns
// an error.
template <class Result, KAPTraits kTraits>
Result Failure() noexcept {
  if constexpr (std::is_same_v<Result, KAPError*> && kTraits.fMakes != KAPResource::kError) {
    return MemoryError();
  } else {
    return Result();
  }
}

// A procedure with the prologue that its declaration asks for.
template <KAPTraits kTraits, auto kProc>
struct GuardedProc;

template <KAPTraits kTraits, class Result, class... Args, Result (*kProc)(Args...) noexcept>
struct GuardedProc<kTraits, kProc> {
  static constexpr bool kCanFail = kTraits.fFault != KAPFault::kNever;
  static constexpr bool kHasResultPlace = [] {
    if constexpr (std::is_same_v<Result, KAPError*> && sizeof...(Args) != 0) {
      return kIsResultPlace<std::tuple_element_t<0, std::tuple<Args...>>>;
    }
    return false;
  }();

  static Result Call(Args... args) noexcept {
    if constexpr (kHasResultPlace) {
      if (!Clear(args...)) return InvalidArgument();
    }
    if constexpr (kCanFail) {
      if (MayFail()) [[unlikely]]
        return CallUnlessItFails(args...);
    }
    return kProc(args...);
  }

  static constexpr Result (*kGuarded)(Args...) noexcept = kCanFail || kHasResultPlace ? &Call
                                                                                      : kProc;

 private:
  // Apart, so that everyday calls save no registers.
  [[gnu::noinline]] static Result CallUnlessItFails(Args... args) noexcept {
    std::size_t size = 0;
    if constexpr (kTraits.fFault == KAPFault::kBlock) size = BlockSize(args...);
    return Fails(kTraits.fFault, size) ? Failure<Result, kTraits>() : kProc(args...);
  }
  template <class Place, class... Others>
  static bool Clear(Place* out, const Others&...) noexcept {
    if (!out) return false;
    *out = Place();
    return true;
  }
};

template <class Signature>
struct NoexceptProc;
template <class Result, class... Args>
struct NoexceptProc<Result (*)(Args...)> {
  using Type = Result (*)(Args...) noexcept;
};

template <class Interface, auto... kProcs, class Visitor, std::size_t... kSlots>
void ForEachGuarded(Visitor visit, std::index_sequence<kSlots...>) {
  static_assert(
      (std::is_same_v<decltype(kProcs),
                      typename NoexceptProc<typename Interface::template ProcAt<kSlots>>::Type> &&
       ...),
      "each procedure is noexcept and has the type of its declaration, in slot order");
  (visit.template operator()<kSlots, GuardedProc<Interface::kTraits[kSlots], kProcs>>(), ...);
}

// Calls visit.operator()<Slot, GuardedProc>() for each method of an interface. The procedures are
// in slot order.
template <class Interface, auto... kProcs, class Visitor>
void ForEachGuarded(Visitor visit) {
  static_assert(sizeof...(kProcs) == Interface::kCount, "one procedure for each method");
  ForEachGuarded<Interface, kProcs...>(visit, std::make_index_sequence<Interface::kCount>());
}

// Registers an interface's procedures under the names of its declaration.
template <class Interface, auto... kProcs>
void RegisterProcs(Binder& binder) {
  ForEachGuarded<Interface, kProcs...>([&]<std::size_t kSlot, class Guarded>() {
    constexpr auto entry = Interface::kEntries[kSlot];
    binder.Register(Interface::kName, entry.fMethodName, entry.fProcName,
                    reinterpret_cast<void*>(Guarded::kGuarded));
  });
}

}  // namespace KAPHost
