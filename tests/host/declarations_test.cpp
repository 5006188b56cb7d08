// SPDX-License-Identifier: MIT
#include <cstring>
#include <tuple>
#include <utility>

#include "TestHost.h"

// Every procedure of the host, called according to its declaration. An interface that is added to
// KAPHostInterfaceSet, or a method of any interface here, is covered without further work.

namespace {

using namespace KAP_T_MT;

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
    // The reference host also registers these by interface name.
    KAPStreamInterfaceSet::ForEach(visitAll);
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

template <class Result, class... Params>
Result Nothing(Params...) {
  return Result();
}

class NullTest : public HostTest {
 protected:
  // Calls a procedure with each of these arguments null, which it does not accept.
  template <class Interface, TKAPName Method, class... Args>
  void EachNull(Args... args) {
    const auto nullAt = [&]<std::size_t kAt>() {
      std::tuple<Args...> changed(args...);
      if constexpr (std::is_pointer_v<std::tuple_element_t<kAt, std::tuple<Args...>>>) {
        if (!std::exchange(std::get<kAt>(changed), nullptr)) return;
        SCOPED_TRACE(testing::Message() << Method.fText << ", argument " << kAt);
        std::apply([&](auto... all) { this->template ExpectRefusal<Interface, Method>(all...); },
                   changed);
      }
    };
    [&]<std::size_t... kAll>(std::index_sequence<kAll...>) {
      (nullAt.template operator()<kAll>(), ...);
    }
    (std::index_sequence_for<Args...>());
  }

 private:
  template <class Interface, TKAPName Method, class... Args>
  void ExpectRefusal(Args... args) {
    using Result = decltype(fHost.Call<Interface, Method>(args...));
    if constexpr (std::is_void_v<Result>) {
      fHost.Call<Interface, Method>(args...);
    } else if constexpr (std::is_same_v<Result, KAPError*>) {
      EXPECT_EQ((fHost.Do<Interface, Method>(args...).substr(0, 8)), "invalid ");
    } else {
      EXPECT_EQ((fHost.Call<Interface, Method>(args...)), Result());
    }
  }
};

TEST_F(NullTest, EachArgumentAlone) {
  using Cache = KAPCacheInterface;
  using Containers = KAPContainerInterface;
  using Filters = KAPFilterInterface;
  using Streams = KAPStreamFactoryInterface;
  void* const object = this;
  void* place = nullptr;
  std::size_t count = 0;
  unsigned char bytes[1] = {};
  KAPContainer* stream = nullptr;
  EXPECT_EQ((fHost.Do<Streams, "NewPositionableMemoryStream">(&stream)), "");
  KAPContainer* made = nullptr;
  KAPDataSink* sink = nullptr;
  EXPECT_EQ((fHost.Do<Filters, "NewNullDataSink">(&sink)), "");
  KAPDataSink* filter = nullptr;
  KAPCacheID* const id = fHost.Call<Cache, "NewCacheID">();
  KAPCacheSet* const set = fHost.Call<Cache, "NewCacheSet">();
  KAPStringAtom* const atom = fHost.Atom("atom");

  EachNull<Cache, "Add">(id, object, 1ul, KAPDeleteProc());
  EachNull<Cache, "UpdateCost">(id, object, 1ul);
  EachNull<Cache, "ReturnCost">(id, object);
  EachNull<Cache, "MarkNoPurge">(id, object);
  EachNull<Cache, "MarkPurge">(id, object);
  EachNull<Cache, "SearchForID">(set, id);
  EachNull<Cache, "RemoveID">(set, id);
  EachNull<Containers, "RegisterInterface">(stream, atom, atom);
  EachNull<Containers, "RegisterInstance">(stream, atom, nullptr, KAPDeleteProc());
  EachNull<Containers, "GetMethod">(&place, stream, atom, atom, 0);
  EachNull<Containers, "GetParentMethod">(&place, stream, atom, atom, atom);
  EachNull<Containers, "GetInstance">(stream, atom);
  EachNull<Containers, "NGetInstance">(&place, stream, atom);

  const KAPSinkWriteProc write = &Nothing;
  const KAPSinkDeleteProc release = &Nothing;
  const KAPFilterCloseProc close = &Nothing;
  const KAPFilterGetVellumcodeFilterProc code = &Nothing;
  EachNull<Filters, "NewClientDataSink">(&filter, object, write, release);
  EachNull<Filters, "NewClientFilter">(&filter, sink, object, write, release, close, code);
  EachNull<Filters, "NewFilterJPEG">(&filter, sink, object, write, release, close, code,
                                     KAPImageParmsProc(&Nothing),
                                     KAPCompressionParmsProc(&Nothing));
  EachNull<Filters, "Write">(sink, +bytes, 1ul);
  EachNull<KAPProgressInterface, "NewClientProgress">(object, KAPProgressUpdateProc(&Nothing),
                                                      KAPProgressDeleteProc(&Nothing));

  const KAPClientReadProc read = &Nothing;
  const KAPClientWriteProc writeTo = &Nothing;
  const KAPClientDeleteProc end = &Nothing;
  const KAPClientCreateStreamProc create = &Nothing;
  const KAPClientRewindProc rewind = &Nothing;
  EachNull<Streams, "NewPositionableBufferStream">(&made, +bytes, 1ul);
  EachNull<Streams, "NewPositionableFileStream">(&made, "path", "r");
  EachNull<Streams, "NewClientSimpleStream">(&made, object, read, writeTo, end);
  EachNull<Streams, "NewClientRewindableStream">(&made, object, read, writeTo, end, create, rewind);
  EachNull<Streams, "NewClientPositionableStream">(&made, object, read, writeTo, end, create,
                                                   rewind, create, KAPClientMarkProc(&Nothing),
                                                   KAPClientSeekProc(&Nothing));
  EachNull<KAPSimpleStreamInterface, "Read">(&count, stream, +bytes, 1ul);
  EachNull<KAPSimpleStreamInterface, "Write">(stream, +bytes, 1ul);

  fHost.Strings<"DeleteStringAtom">(atom);
  fHost.Call<Cache, "DeleteCacheSet">(set);
  fHost.Call<Cache, "Release">(id);
  fHost.Call<Filters, "Release">(sink);
  fHost.Containers<"Release">(stream);
}

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
