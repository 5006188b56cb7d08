// SPDX-License-Identifier: MIT
#include <type_traits>

#include "probe/Checks.h"
#include "probe/Services.h"

// The conventions of result places, tried with every method that the declarations say has one.

namespace KAPProbe {

namespace {

constexpr char kNullPlace[] = "A null result place is an error, and nothing is done.";
constexpr char kClearedPlace[] = "After an error the result places are null or 0.";

template <class First>
inline constexpr bool kIsPlace = false;
template <class Value>
inline constexpr bool kIsPlace<Value*> = std::is_pointer_v<Value> ||
                                         (std::is_integral_v<Value> && !std::is_const_v<Value>);

template <class Proc>
void CallWithoutPlace(const char*, const char*, const char*, Proc) {}

template <class First, class... Rest>
void CallWithoutPlace(const char* interfaceName, const char* methodName, const char* procName,
                      KAPError* (*)(First, Rest...)) {
  if constexpr (kIsPlace<First>) {
    const auto proc = reinterpret_cast<KAPError* (*)(First, Rest...)>(
        MustFind(interfaceName, methodName, procName));
    MustFail(proc(First(), Rest()...), std::string(methodName) + " without a result place");
  }
}

template <class Interface>
void CheckNullPlaces() {
  [&]<std::size_t... kSlots>(std::index_sequence<kSlots...>) {
    (CallWithoutPlace(Interface::kName, Interface::kEntries[kSlots].fMethodName,
                      Interface::kEntries[kSlots].fProcName,
                      typename Interface::template ProcAt<kSlots>()),
     ...);
  }
  (std::make_index_sequence<Interface::kCount>());
}

template <class Value>
Value Anything() {
  static int anything = 0;
  if constexpr (std::is_pointer_v<Value>) {
    return static_cast<Value>(static_cast<void*>(&anything));
  } else {
    return 77;
  }
}

// The place of a call that fails holds something before.
template <class Interface, TKAPName Method, class Value, class... Args>
void CheckCleared(const char* what, const Args&... args) {
  Value value = Anything<Value>();
  Fails<Interface, Method>(what, &value, args...);
  Expect(!value, std::string(Method.fText) + " returns an error and a result");
}

void CheckContainers() {
  using Containers = KAPContainerInterface;
  CheckCleared<Containers, "CloneContainer", KAPContainer*>("of null", nullptr);
  CheckCleared<Containers, "GetMethod", void*>("of null", nullptr, nullptr, nullptr, 1);
  CheckCleared<Containers, "GetParentMethod", void*>("of null", nullptr, nullptr, nullptr, nullptr);
  CheckCleared<Containers, "NGetInstance", void*>("of null", nullptr, nullptr);
}

void CheckFilters() {
  using Filters = KAPFilterInterface;
  Sink sink;
  Do<Filters, "NewNullDataSink">(sink.Place());
  CheckCleared<Filters, "GetVellumcodeFilter", KAPFilter*>("of a sink", sink.Get());
  CheckCleared<Filters, "GetChainState", unsigned long>("of a sink", sink.Get());
}

constexpr Check kChecks[] = {
    {"containers.null-place", "KAPContainerInterface", "NewFullContainer", kNullPlace,
     &CheckNullPlaces<KAPContainerInterface>},
    {"containers.error-place", "KAPContainerInterface", "CloneContainer", kClearedPlace,
     &CheckContainers},
    {"streams.null-place", "KAPStreamFactoryInterface", "NewPositionableMemoryStream", kNullPlace,
     &CheckNullPlaces<KAPStreamFactoryInterface>},
    {"streams.error-place", "KAPStreamFactoryInterface", "NewPositionableFileStream", kClearedPlace,
     [] {
       CheckCleared<KAPStreamFactoryInterface, "NewPositionableFileStream", KAPContainer*>(
           "of a missing file", "/no/such/file", "rb");
     }},
    {"filters.null-place", "KAPFilterInterface", "NewNullDataSink", kNullPlace,
     &CheckNullPlaces<KAPFilterInterface>},
    {"filters.error-place", "KAPFilterInterface", "GetVellumcodeFilter", kClearedPlace,
     &CheckFilters},
};

}  // namespace

std::span<const Check> ConventionChecks() { return kChecks; }

}  // namespace KAPProbe
