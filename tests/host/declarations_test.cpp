// SPDX-License-Identifier: MIT
#include <cstring>

#include "TestHost.h"

// Every procedure of the host, called according to its declaration. An interface that is added to
// KAPHostInterfaceSet, or a method of any interface here, is covered without further work.

namespace {

using namespace KAP_T_MT;

// The methods of streams, which the reference host also registers by interface name.
using StreamMethods = TKAPInterfaceSet<KAPSimpleStreamInterface, KAPRewindableStreamInterface,
                                       KAPPositionableStreamInterface>;

template <class Result, class First>
constexpr bool kIsResultPlace =
    std::is_same_v<Result, KAPError*>&& std::is_scalar_v<First> && !std::is_const_v<First>;
template <class Result, class... Args>
constexpr bool kTakesPlace = false;
template <class Result, class First, class... Rest>
constexpr bool kTakesPlace<Result, First*, Rest...> = kIsResultPlace<Result, First>;

class DeclarationsTest : public HostTest {
 protected:
  // Calls visit.operator()<traits>(procedure) for each procedure.
  template <class Visitor>
  void ForEachProc(Visitor visit) {
    const auto visitAll = [&]<class Interface>() {
      [&]<std::size_t... kSlots>(std::index_sequence<kSlots...>) {
        (VisitOne<Interface, kSlots>(visit), ...);
      }
      (std::make_index_sequence<Interface::kCount>());
    };
    KAPHostInterfaceSet::ForEach(visitAll);
    StreamMethods::ForEach(visitAll);
  }
  template <class Interface, std::size_t kSlot, class Visitor>
  void VisitOne(Visitor visit) {
    constexpr auto entry = Interface::kEntries[kSlot];
    // The positionable streams' interface has the methods of the simpler ones as well.
    SCOPED_TRACE(testing::Message() << Interface::kName << ", " << entry.fMethodName);
    void* const proc = fHost.Find(Interface::kName, entry.fMethodName, entry.fProcName);
    ASSERT_NE(proc, nullptr);
    visit.template operator()<Interface::kTraits[kSlot]>(
        reinterpret_cast<typename Interface::template ProcAt<kSlot>>(proc));
  }

  // Releases what a call has created after all.
  template <KAPTraits kTraits, class Handle>
  void Dispose(Handle* handle) {
    if constexpr (kTraits.fMakes == KAPResource::kContainer) fHost.Containers<"Release">(handle);
    if constexpr (kTraits.fMakes == KAPResource::kSink) {
      fHost.Call<KAPFilterInterface, "Release">(handle);
    }
    if constexpr (kTraits.fMakes == KAPResource::kError) fHost.Errors<"Release">(handle);
    if constexpr (kTraits.fFault == KAPFault::kBlock) fHost.Memory<"Free">(handle);
  }

  // Calls with null and 0 for all arguments except the result place. Expects an error and a cleared
  // place, or success.
  template <KAPTraits kTraits, class Place, class... Rest>
  void CallWithPlace(KAPError* (*proc)(Place*, Rest...)) {
    Place place;
    std::memset(&place, 0x55, sizeof place);
    KAPError* const error = proc(&place, Rest()...);
    EXPECT_TRUE(!error || place == Place());
    EXPECT_TRUE(error || kTraits.fMakes == KAPResource::kNothing || place != Place());
    if constexpr (std::is_pointer_v<Place>) {
      if (!error) Dispose<kTraits>(place);
    }
    fHost.Errors<"Release">(error);
  }
  template <KAPTraits kTraits, class Result, class First, class... Rest>
  void CallWithNulls(Result (*proc)(First*, Rest...)) {
    if constexpr (kIsResultPlace<Result, First>) {
      EXPECT_EQ(fHost.TakeMessage(proc(nullptr, Rest()...)), "invalid argument");
      CallWithPlace<kTraits>(proc);
    } else if constexpr (std::is_same_v<Result, KAPError*> &&
                         kTraits.fMakes == KAPResource::kNothing) {
      EXPECT_EQ(fHost.TakeMessage(proc(nullptr, Rest()...)).substr(0, 8), "invalid ");
    } else if constexpr (std::is_void_v<Result>) {
      proc(nullptr, Rest()...);
    } else if constexpr (std::is_pointer_v<Result>) {
      Result const result = proc(nullptr, Rest()...);
      EXPECT_TRUE(!result || kTraits.fFault != KAPFault::kNever);
      Dispose<kTraits>(result);
    } else {
      EXPECT_EQ(proc(nullptr, Rest()...), Result());
    }
  }
  template <KAPTraits kTraits, class Result, class... Args>
  void CallWithNulls(Result (*)(Args...)) {}  // no handle and no place: nothing to be null

  template <KAPTraits kTraits, class Result, class... Args>
  void CallFailing(Result (*proc)(Args...)) {
    fHost.FailCall(kTraits.fFault, 1);
    if constexpr (kTakesPlace<Result, Args...>) {
      FailWithPlace(proc);
    } else if constexpr (std::is_same_v<Result, KAPError*> &&
                         kTraits.fMakes == KAPResource::kNothing) {
      EXPECT_EQ(proc(Args()...), fHost.Errors<"GetCoreError">(1));
    } else {
      EXPECT_EQ(proc(Args()...), Result());
    }
    EXPECT_TRUE(fHost.Fired());
    EXPECT_EQ(fHost.CallCount(kTraits.fFault), 1u);
    fHost.StopFaults();
  }
  template <class Place, class... Rest>
  void FailWithPlace(KAPError* (*proc)(Place*, Rest...)) {
    Place place;
    std::memset(&place, 0x55, sizeof place);
    EXPECT_EQ(proc(&place, Rest()...), fHost.Errors<"GetCoreError">(1));
    EXPECT_TRUE(place == Place());
  }
};

TEST_F(DeclarationsTest, NullArgumentsAreErrorsOrIgnored) {
  ForEachProc([this]<KAPTraits kTraits>(auto proc) { CallWithNulls<kTraits>(proc); });
  EXPECT_EQ(fHost.TakeReport(), "(a report without a message)");
  EXPECT_TRUE(fHost.TakeSnapshot().IsEmpty()) << fHost.TakeSnapshot();
}

TEST_F(DeclarationsTest, EveryDeclaredFaultCanBeInjected) {
  ForEachProc([this]<KAPTraits kTraits>(auto proc) {
    if constexpr (kTraits.fFault != KAPFault::kNever) CallFailing<kTraits>(proc);
  });
}

}  // namespace
