// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "kap/KAPInterface.h"

// What a plug-in for `kapcheck component --scenario PLUGIN` exports: one of these or both. The
// plug-in is a shared library that uses the component as one of its clients does.
//
//   // A typical use of the component. Returns nonzero if all of it succeeded.
//   KAP_CHECK_EXPORT int KAPCheckScenario(KAPGetProcAddressProc getProcAddress) { ... }
//
//   // The interfaces whose procedures kapcheck may call with random arguments.
//   KAP_CHECK_DECLARE(TotalsInterface)
//
// KAPCheckScenario is called on one thread while the component is initialised, any number of times,
// and also with a host that lacks procedures or fails some of the calls. Whether it succeeds or
// not, it releases whatever it takes, keeps no procedure of the host for the next run, leaves no
// thread running, prints nothing to standard output, and throws nothing. Then the component alone
// accounts for what is left. An exception of the component that it catches is a failure of the
// component, unless the plug-in declares a method that may throw.
//
// A declared procedure must cope with any argument that its types allow: null, a live handle of
// another kind, a string that means nothing. The interface of a procedure that does not, that must
// not be called on several threads, or that does harm outside the process, is not declared.
// - Numbers are from 0 to 63. A pointer to something that is not const leads to 4096 bytes of zeros
//   for a result. Pointers to procedures are null.
// - A result is a new reference, except that a handle which the call was given comes back without
//   one. Strings are not released.

// Exports a function of the plug-in.
#define KAP_CHECK_EXPORT extern "C" [[gnu::visibility("default")]]

// Declares one or more interfaces (TKAPInterface) or sets of them (TKAPInterfaceSet). Use it once
// in a plug-in, outside all namespaces.
#define KAP_CHECK_DECLARE(...)                                                                   \
  KAP_CHECK_EXPORT const KAPCheck::DeclaredMethod* KAPCheckDeclarations(std::size_t* outCount) { \
    using Table = KAPCheck::TDeclarations<__VA_ARGS__>;                                          \
    *outCount = Table::kMethods.size();                                                          \
    return Table::kMethods.data();                                                               \
  }

// The types are hidden: the plug-in and kapcheck each compile their own.
namespace [[gnu::visibility("hidden")]] KAPCheck {

// What an argument or a result is, as far as its type tells. A place is a pointer to a result.
enum class ValueKind : int {
  kNothing,  // void
  kInteger,  // bool, integers of all sizes, enumerations that have a fixed type
  kReal,     // float, double
  kAtom,
  kString,  // const char*
  kBytes,   // const unsigned char*
  kUnits,   // const unsigned short*, which a zero ends
  kContainer,
  kError,
  kContainerPlace,
  kAtomPlace,
  kPlace,      // a place for any other result, or for bytes
  kData,       // void*
  kProcedure,  // a pointer to a function
  kOther,      // not called: kapcheck cannot make such a value
};

// A value of any kind. Which member holds it follows from the kind.
struct Value {
  // One for each group of kinds.
  unsigned long fInteger = 0;
  double fReal = 0;
  void* fPointer = nullptr;
};

// One method, in a form that kapcheck can call without knowing its type.
struct DeclaredMethod {
  // The names, and whether the procedure may throw.
  const char* fInterface;
  const char* fMethod;
  const char* fProc;
  bool fThrows;
  // The result and the `fCount` arguments.
  ValueKind fResult;
  const ValueKind* fArguments;
  std::size_t fCount;
  // Calls `proc` with `fCount` arguments.
  void (*fCall)(void* proc, Value* result, const Value* arguments);
};

// Whether each value of the integer type is one of the enumeration.
template <class Type>
inline constexpr bool kIsFixedEnum = std::is_enum_v<Type>&& requires {
  Type{0};
};

// What a type is.
template <class Type>
constexpr ValueKind KindOf() {
  if constexpr (std::is_void_v<Type>) {
    return ValueKind::kNothing;
  } else if constexpr (std::is_integral_v<Type> || kIsFixedEnum<Type>) {
    return ValueKind::kInteger;
  } else if constexpr (std::is_floating_point_v<Type>) {
    return ValueKind::kReal;
  } else if constexpr (std::is_same_v<Type, KAPStringAtom*>) {
    return ValueKind::kAtom;
  } else if constexpr (std::is_same_v<Type, const char*>) {
    return ValueKind::kString;
  } else if constexpr (std::is_same_v<Type, const unsigned char*>) {
    return ValueKind::kBytes;
  } else if constexpr (std::is_same_v<Type, const unsigned short*>) {
    return ValueKind::kUnits;
  } else if constexpr (std::is_same_v<Type, KAPContainer*>) {
    return ValueKind::kContainer;
  } else if constexpr (std::is_same_v<Type, KAPError*>) {
    return ValueKind::kError;
  } else if constexpr (std::is_same_v<Type, KAPContainer**>) {
    return ValueKind::kContainerPlace;
  } else if constexpr (std::is_same_v<Type, KAPStringAtom**>) {
    return ValueKind::kAtomPlace;
  } else if constexpr (std::is_same_v<Type, void*>) {
    return ValueKind::kData;
  } else if constexpr (std::is_pointer_v<Type>) {
    using Pointee = std::remove_pointer_t<Type>;
    if constexpr (std::is_function_v<Pointee>) return ValueKind::kProcedure;
    if constexpr (std::is_scalar_v<Pointee> && !std::is_const_v<Pointee>) return ValueKind::kPlace;
    return ValueKind::kOther;
  } else {
    return ValueKind::kOther;
  }
}

// A value as the argument of a procedure.
template <class Type>
Type FromValue(const Value& value) {
  if constexpr (std::is_integral_v<Type> || std::is_enum_v<Type>) {
    return static_cast<Type>(value.fInteger);
  } else if constexpr (std::is_floating_point_v<Type>) {
    return static_cast<Type>(value.fReal);
  } else if constexpr (std::is_pointer_v<Type>) {
    return reinterpret_cast<Type>(value.fPointer);
  } else {
    return Type();
  }
}

// The result of a procedure as a value.
template <class Type>
Value ToValue(Type result) {
  Value value;
  if constexpr (std::is_integral_v<Type> || std::is_enum_v<Type>) {
    value.fInteger = static_cast<unsigned long>(result);
  } else if constexpr (std::is_floating_point_v<Type>) {
    value.fReal = static_cast<double>(result);
  } else if constexpr (std::is_function_v<std::remove_pointer_t<Type>>) {
    value.fPointer = reinterpret_cast<void*>(result);
  } else if constexpr (std::is_pointer_v<Type>) {
    value.fPointer = const_cast<void*>(static_cast<const void*>(result));
  }
  return value;
}

// Calls procedures of one type.
template <class Proc>
struct TCaller;
// Their results and arguments, from the type.
template <class Result, class... Args>
struct TCaller<Result (*)(Args...)> {
  // What the result and the arguments are.
  static constexpr ValueKind kResult = KindOf<Result>();
  static constexpr std::size_t kCount = sizeof...(Args);
  // One more than needed, because an array cannot be empty.
  static constexpr ValueKind kArguments[kCount + 1] = {KindOf<Args>()..., ValueKind::kNothing};

  // A DeclaredMethod::fCall.
  static void Call(void* proc, Value* result, const Value* arguments) {
    const auto typed = reinterpret_cast<Result (*)(Args...)>(proc);
    [&]<std::size_t... kPlaces>(std::index_sequence<kPlaces...>) {
      if constexpr (std::is_void_v<Result>) {
        typed(FromValue<Args>(arguments[kPlaces])...);
      } else {
        *result = ToValue(typed(FromValue<Args>(arguments[kPlaces])...));
      }
    }
    (std::make_index_sequence<kCount>());
  }
};

// The methods of an interface, in slot order.
template <class Interface>
constexpr auto MethodsOf() {
  return [&]<std::size_t... kSlots>(std::index_sequence<kSlots...>) {
    return std::array<DeclaredMethod, sizeof...(kSlots)>{
        {{Interface::kName, Interface::kEntries[kSlots].fMethodName,
          Interface::kEntries[kSlots].fProcName, Interface::kTraits[kSlots].fThrows,
          TCaller<typename Interface::template ProcAt<kSlots>>::kResult,
          TCaller<typename Interface::template ProcAt<kSlots>>::kArguments,
          TCaller<typename Interface::template ProcAt<kSlots>>::kCount,
          &TCaller<typename Interface::template ProcAt<kSlots>>::Call}...}};
  }
  (std::make_index_sequence<Interface::kCount>());
}

// Calls visit.operator()<Interface>() for an interface, or for each one of a set.
template <class Declared, class Visitor>
constexpr void VisitInterfaces(Visitor&& visit) {
  if constexpr (requires { Declared::kName; }) {
    visit.template operator()<Declared>();
  } else {
    Declared::ForEach(visit);
  }
}

// The methods of all interfaces and sets, in order.
template <class... Declared>
struct TDeclarations {
  // How many there are.
  static constexpr std::size_t kCount = [] {
    std::size_t count = 0;
    const auto add = [&]<class Interface>() { count += Interface::kCount; };
    (VisitInterfaces<Declared>(add), ...);
    return count;
  }();
  // The methods, one after another.
  static constexpr auto kMethods = [] {
    std::array<DeclaredMethod, kCount> all{};
    std::size_t filled = 0;
    const auto append = [&]<class Interface>() {
      for (const DeclaredMethod& method : MethodsOf<Interface>()) all[filled++] = method;
    };
    (VisitInterfaces<Declared>(append), ...);
    return all;
  }();
};

}  // namespace KAPCheck
