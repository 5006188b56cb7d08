#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "kap/KAPTypes.h"

// Declaring an interface: its name, and for each method the method's name, the procedure's binder
// name and the procedure's signature, in slot order. Everything else (the table of names, the slot
// of a method, typed calls, typed registration) follows from this one declaration:
//
//   struct KAPStringInterface
//       : TKAPInterface<"KAPStringInterface",
//                       TKAPMethod<"GetCString", "KAPGetCStringProc", const char*(KAPStringAtom*)>,
//                       ...> {};
//
// A method that an interface does not have, or a procedure of another signature, does not compile.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

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

// An entry of a table to be loaded, and of a table to be registered.
struct _t_KAPFTabEntry {
  const char* fMethodName;
  const char* fProcName;
};

struct _t_KAPFTabRegEntry {
  const char* fMethodName;
  const char* fProcName;
  void* fProc;
};

template <TKAPName MethodName, TKAPName ProcName, class Signature>
struct TKAPMethod {
  static_assert(std::is_function_v<Signature>);
  using Proc = Signature*;
  static constexpr std::string_view kMethodName = MethodName.View();
  static constexpr _t_KAPFTabEntry kEntry = {MethodName.fText, ProcName.fText};
};

template <TKAPName Name, class... Methods>
struct TKAPInterface {
  static constexpr const char* kName = Name.fText;
  static constexpr std::size_t kCount = sizeof...(Methods);
  static constexpr _t_KAPFTabEntry kEntries[kCount] = {Methods::kEntry...};

  // The slot of the method; a name that the interface does not have is a compile-time error.
  template <TKAPName Method>
  static constexpr std::size_t kSlot = [] {
    constexpr std::string_view names[] = {Methods::kMethodName...};
    std::size_t slot = 0;
    while (slot < kCount && names[slot] != Method.View()) ++slot;
    return slot;
  }();

  template <std::size_t Slot>
  using ProcAt = typename std::remove_reference_t<decltype(std::get<Slot>(
      std::declval<std::tuple<Methods...>&>()))>::Proc;

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

}  // namespace KAP_T_MT
