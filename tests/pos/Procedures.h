// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "POSStreamer.h"
#include "World.h"
#include "pos/POSInterfaceSets.h"

// Every registered procedure of property objects, called from its declaration alone, so that one
// sweep reaches them all.

// The arguments with which a procedure does something and succeeds, of which one may be bad.
class Given {
 public:
  Given(const World& world, std::string_view interfaceName, std::string_view method);

  // From now on the argument at this position is this handle, or null if it is not a handle.
  void Spoil(std::size_t position, KAPContainer* handle) {
    fBadPosition = position;
    fBadHandle = handle;
  }

  template <class T>
  T Argument(std::size_t position);

  KAPContainer* Subject() const { return fSubject.get(); }
  // Everything that the procedure could change.
  std::string Show() const { return fWorld.Show(fWatched); }
  static int Released() { return gReleased; }  // calls of the release procedure so far

 private:
  static int gReleased;

  const World& fWorld;
  Object fDict;
  Object fSubject;
  Object fOther;
  KAPContainer* fThird;
  Object fWatched;
  OwnedAtom fKey;
  unsigned long fNumber = 0;
  const char* fText;
  const char* fEnd = nullptr;
  std::size_t fBadPosition = ~std::size_t{0};
  KAPContainer* fBadHandle = nullptr;
};

template <class T>
T Given::Argument(std::size_t position) {
  static constexpr unsigned char kBytes[] = {1, 2, 3};
  static constexpr unsigned short kUnits[] = {0x41, 0};
  const bool bad = position == fBadPosition;
  if constexpr (std::is_same_v<T, KAPContainer*>) {
    if (bad) return fBadHandle;
    return position == 0 ? fSubject.get() : position == 1 ? fOther.get() : fThird;
  } else if constexpr (std::is_same_v<T, double>) {
    return 1.5;
  } else if constexpr (std::is_same_v<T, unsigned long>) {
    return fNumber;
  } else if constexpr (std::is_same_v<T, const char**>) {
    return &fEnd;
  } else {
    if (bad) return nullptr;
    if constexpr (std::is_same_v<T, KAPStringAtom*>) return fKey.get();
    if constexpr (std::is_same_v<T, const char*>) return fText;
    if constexpr (std::is_same_v<T, const unsigned char*>) return kBytes;
    if constexpr (std::is_same_v<T, const unsigned short*>) return kUnits;
    if constexpr (std::is_same_v<T, void*>) return &gReleased;
    if constexpr (std::is_same_v<T, KAP_T_MT::POSReleaseProc>) return [](void*) { ++gReleased; };
  }
}

template <class Proc>
struct Signature;

template <class R, class... Args>
struct Signature<R (*)(Args...)> {
  using Result = R;
  template <std::size_t Position>
  using Arg = std::tuple_element_t<Position, std::tuple<Args...>>;
  static constexpr std::size_t kCount = sizeof...(Args);
};

// One procedure. `Call` returns whether it failed by its result (nothing for one without a result),
// and releases a handle that it returned.
template <class Interface, std::size_t Slot>
struct Procedure {
  using Proc = typename Interface::template ProcAt<Slot>;
  using Types = Signature<Proc>;

  static constexpr const char* kInterface = Interface::kName;
  static constexpr std::string_view kMethod = Interface::kEntries[Slot].fMethodName;

  static std::optional<bool> Call(const World& world, Given& given) {
    return CallWith(world, given, std::make_index_sequence<Types::kCount>());
  }

  // Whether the argument must be there for the procedure to succeed.
  template <std::size_t Position>
  static constexpr bool Needs() {
    using T = typename Types::template Arg<Position>;
    if (std::is_same_v<T, const char*>) {
      return !kMethod.starts_with("DebugDump") && kMethod != "Serialize";
    }
    return std::is_same_v<T, KAPContainer*> || std::is_same_v<T, KAPStringAtom*> ||
           std::is_same_v<T, const unsigned char*> || std::is_same_v<T, const unsigned short*>;
  }

 private:
  template <std::size_t... Positions>
  static std::optional<bool> CallWith(const World& world, Given& given,
                                      std::index_sequence<Positions...>) {
    const auto proc = reinterpret_cast<Proc>(world.Find(
        kInterface, Interface::kEntries[Slot].fMethodName, Interface::kEntries[Slot].fProcName));
    using Result = typename Types::Result;
    if constexpr (std::is_void_v<Result>) {
      proc(given.Argument<typename Types::template Arg<Positions>>(Positions)...);
      return std::nullopt;
    } else {
      const Result result =
          proc(given.Argument<typename Types::template Arg<Positions>>(Positions)...);
      if constexpr (std::is_same_v<Result, KAPContainer*>) world.Own(result);
      return kMethod == "IsDone" ? result != Result() : result == Result();
    }
  }
};

// Calls visit.operator()<Procedure<...>>() for each procedure.
template <class Visitor>
void ForEachProcedure(Visitor visit) {
  using namespace KAP_T_MT;
  const auto visitAll = [&]<class Interface>(const Interface*) {
    [&]<std::size_t... Slots>(std::index_sequence<Slots...>) {
      (visit.template operator()<Procedure<Interface, Slots>>(), ...);
    }
    (std::make_index_sequence<Interface::kCount>());
  };
  const auto visitOne = [&]<class Interface>() { visitAll(static_cast<Interface*>(nullptr)); };
  POSInterfaceSet::ForEach(visitOne);
  POSStreamerInterfaceSet::ForEach(visitOne);
}
