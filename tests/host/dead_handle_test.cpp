// SPDX-License-Identifier: MIT
#include <climits>

#include "TestHost.h"

// Handles that are used while what they refer to is being destroyed, or afterwards.

namespace {

using namespace KAP_T_MT;

// What a delete procedure does to the object that is being destroyed.
std::function<void()> gOnDelete;
int gDeleted;

void Delete(void*) {
  ++gDeleted;
  gOnDelete();
}
KAPError* DeleteClient(void* client) {
  Delete(client);
  return nullptr;
}
KAPError* Write(void*, const unsigned char*, std::size_t) { return nullptr; }
KAPError* Update(void*, float, const char*, int) { return nullptr; }

class DeadHandleTest : public HostTest {
 protected:
  DeadHandleTest() { gDeleted = 0; }
  ~DeadHandleTest() override { gOnDelete = nullptr; }

  // The delete procedure takes a reference and releases it: the object goes once all the same.
  template <class Interface, TKAPName AddRef, TKAPName Release, class Handle>
  void Resurrect(Handle* handle) {
    gOnDelete = [this, handle] {
      fHost.Call<Interface, AddRef>(handle);
      fHost.Call<Interface, Release>(handle);
      fHost.Call<Interface, Release>(handle);
    };
    ASSERT_NE(handle, nullptr);
    fHost.Call<Interface, AddRef>(handle);
    fHost.Call<Interface, Release>(handle);
    EXPECT_EQ(gDeleted, 0);
    fHost.Call<Interface, Release>(handle);
    EXPECT_EQ(std::exchange(gDeleted, 0), 1);
    EXPECT_TRUE(fHost.TakeSnapshot().IsEmpty()) << fHost.TakeSnapshot();
  }
};

TEST_F(DeadHandleTest, DeleteProceduresCannotResurrect) {
  int data = 0;
  KAPContainer* container = nullptr;
  fHost.Containers<"NewFullContainer">(&container, &data, nullptr, nullptr, &Delete);
  Resurrect<KAPContainerInterface, "AddRef", "Release">(container);
  Resurrect<KAPErrorInterface, "AddRef", "Release">(
      fHost.Errors<"NewError">("m", "c", 0L, static_cast<void*>(&data), &Delete));
  Resurrect<KAPSharedBuffInterface, "AddRef", "Release">(
      fHost.Call<KAPSharedBuffInterface, "NewBuffer">(4ul, &data, &Delete, nullptr, nullptr));
  KAPDataSink* sink = nullptr;
  fHost.Call<KAPFilterInterface, "NewClientDataSink">(&sink, &data, &Write, &DeleteClient);
  Resurrect<KAPFilterInterface, "AddRef", "Release">(sink);
  Resurrect<KAPProgressInterface, "AddRef", "Release">(
      fHost.Call<KAPProgressInterface, "NewClientProgress">(&data, &Update, &DeleteClient));
  KAPCacheID* const id = fHost.Call<KAPCacheInterface, "NewCacheID">();
  fHost.Call<KAPCacheInterface, "Add">(id, &data, 1ul, &Delete);
  Resurrect<KAPCacheInterface, "AddRef", "Release">(id);
}

// What a delete procedure adds to a dying object would never be released.
TEST_F(DeadHandleTest, DeleteProceduresCannotAdd) {
  int data = 0;
  KAPStringAtom* const name = fHost.Atom("name");
  KAPContainer* container = nullptr;
  fHost.Containers<"NewFullContainer">(&container, &data, name, name, &Delete);
  gOnDelete = [&] {
    EXPECT_EQ(fHost.TakeMessage(fHost.Containers<"RegisterInterface">(container, name, name)),
              "invalid container");
    KAPContainer* clone = container;
    EXPECT_EQ(fHost.TakeMessage(fHost.Containers<"CloneContainer">(&clone, container)),
              "invalid container");
  };
  fHost.Containers<"Release">(container);
  KAPDataSink* sink = nullptr;
  KAPDataSink* null = nullptr;
  KAPDataSink* other = nullptr;
  fHost.Call<KAPFilterInterface, "NewNullDataSink">(&null);
  fHost.Call<KAPFilterInterface, "NewIdentityFilter">(&other, null);
  fHost.Call<KAPFilterInterface, "NewClientDataSink">(&sink, &data, &Write, &DeleteClient);
  gOnDelete = [&] {
    KAPDataSink* filter = sink;
    EXPECT_EQ((fHost.Do<KAPFilterInterface, "NewIdentityFilter">(&filter, sink)),
              "the target is being destroyed");
    EXPECT_EQ((fHost.Do<KAPFilterInterface, "SetDataSink">(other, sink)),
              "the target is being destroyed");
  };
  fHost.Call<KAPFilterInterface, "Release">(sink);
  for (KAPDataSink* each : {other, null}) fHost.Call<KAPFilterInterface, "Release">(each);
  // A set that holds the last reference to an identity, whose item adds another one.
  KAPCacheSet* const set = fHost.Call<KAPCacheInterface, "NewCacheSet">();
  KAPCacheID* const id = fHost.Call<KAPCacheInterface, "NewCacheID">();
  KAPCacheSet* const second = fHost.Call<KAPCacheInterface, "NewCacheSet">();
  KAPCacheID* const another = fHost.Call<KAPCacheInterface, "NewCacheID">();
  fHost.Call<KAPCacheInterface, "SearchForID">(set, id);
  fHost.Call<KAPCacheInterface, "Add">(id, &data, 1ul, &Delete);
  fHost.Call<KAPCacheInterface, "Release">(id);
  gOnDelete = [&] {
    EXPECT_FALSE((fHost.Call<KAPCacheInterface, "Add">(id, &data, 1ul, &Delete)));
    EXPECT_FALSE((fHost.Call<KAPCacheInterface, "SearchForID">(set, another)));
    for (int i = 0; i < 2; ++i) {
      EXPECT_FALSE((fHost.Call<KAPCacheInterface, "SearchForID">(second, id)));
    }
    fHost.Call<KAPCacheInterface, "AddRefCacheSet">(set);
    fHost.Call<KAPCacheInterface, "DeleteCacheSet">(set);
  };
  fHost.Call<KAPCacheInterface, "DeleteCacheSet">(set);
  fHost.Call<KAPCacheInterface, "DeleteCacheSet">(second);
  fHost.Call<KAPCacheInterface, "Release">(another);
  EXPECT_EQ(gDeleted, 3);
  fHost.Strings<"DeleteStringAtom">(name);
}

// A count at its limit stays there, and the container is never destroyed.
TEST_F(DeadHandleTest, CountsSaturate) {
  KAPContainer* container = nullptr;
  fHost.Containers<"NewFullContainer">(&container, this, nullptr, nullptr, &Delete);
  gOnDelete = [] {};
  int& count = *const_cast<int*>(fHost.Containers<"DebugGetRefCountAddr">(container));
  count = INT_MAX - 1;
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(fHost.Containers<"AddRef">(container));
  EXPECT_EQ(count, INT_MAX);
  for (int i = 0; i < 3; ++i) fHost.Containers<"Release">(container);
  EXPECT_EQ(count, INT_MAX);
  EXPECT_EQ(gDeleted, 0);
  count = 1;
  fHost.Containers<"Release">(container);
  EXPECT_EQ(gDeleted, 1);
}

class ChecksTest : public ::testing::Test {
 protected:
  // The first line of the only report; misuse_test.cpp compares the others.
  std::string TakeHeadline() {
    const std::string report = fHost.TakeReport();
    return report.substr(0, report.find('\n'));
  }

  TestHost fHost{true};
};

TEST_F(ChecksTest, UseOfTheDeadIsReported) {
  KAPStringAtom* const atom = fHost.Atom("Name");
  KAPContainer* container = nullptr;
  fHost.Containers<"NewFullContainer">(&container, this, atom, atom, nullptr);
  KAPError* const error = fHost.Errors<"NewError">("message", "c", 0L, nullptr, nullptr);
  KAPContainer* stream = nullptr;
  fHost.Call<KAPStreamFactoryInterface, "NewPositionableMemoryStream">(&stream);
  fHost.Containers<"Release">(container);
  fHost.Containers<"Release">(stream);
  fHost.Errors<"Release">(error);
  EXPECT_EQ(fHost.TakeReports(), std::vector<std::string>());

  fHost.Containers<"Release">(container);
  EXPECT_EQ(TakeHeadline(), "KAP host: release of a dead container \"Name\"");
  EXPECT_FALSE(fHost.Containers<"AddRef">(container));
  EXPECT_EQ(TakeHeadline(), "KAP host: AddRef of a dead container \"Name\"");
  for (auto release : {fHost.Proc<KAPContainerInterface, "DecrementWithoutDelete">(),
                       fHost.Proc<KAPContainerInterface, "DeleteUnownedContainer">()}) {
    release(container);
    EXPECT_EQ(TakeHeadline(), "KAP host: release of a dead container \"Name\"");
  }
  fHost.Errors<"Release">(error);
  EXPECT_EQ(TakeHeadline(), "KAP host: release of a dead error \"message\"");
  fHost.Errors<"AddRef">(error);
  EXPECT_EQ(TakeHeadline(), "KAP host: AddRef of a dead error \"message\"");
  // What a dead handle holds is gone, but asking is not a crash.
  EXPECT_EQ(fHost.Errors<"GetErrorMessage">(error), nullptr);
  EXPECT_EQ(TakeHeadline(), "KAP host: use of a dead error \"message\"");
  EXPECT_EQ((fHost.Do<KAPRewindableStreamInterface, "Rewind">(stream)), "invalid container");
  EXPECT_EQ(TakeHeadline(), "KAP host: use of a dead container \"KAPHostPositionableStream\"");

  fHost.Strings<"DeleteStringAtom">(atom);
}

// The types of containers go before the records of dead ones.
TEST(ChecksAtTheEndTest, DeadContainersInTheLeakReport) {
  KAPContainer* container = nullptr;
  KAPStringAtom* atom = nullptr;
  void (*release)(KAPContainer*) = nullptr;
  void (*deleteAtom)(KAPStringAtom*) = nullptr;
  bool isReported = false;
  std::vector<std::string> reports;
  {
    KAPHost::Host host({.fOnReport = [&](const auto& text) { reports.push_back(text); },
                        .fOnLeak = [&](const auto&) { isReported = true, release(container); },
                        .fChecks = true});
    const auto newAtom = host.Proc<KAPStringInterface, "NewStringAtom">();
    release = host.Proc<KAPContainerInterface, "Release">();
    deleteAtom = host.Proc<KAPStringInterface, "DeleteStringAtom">();
    atom = newAtom("leaked");
    KAPStringAtom* const name = newAtom("Name");
    host.Proc<KAPContainerInterface, "NewFullContainer">()(&container, nullptr, name, name,
                                                           nullptr);
    deleteAtom(name);
    release(container);
  }
  EXPECT_TRUE(isReported);
  ASSERT_EQ(reports.size(), 1u);
  EXPECT_TRUE(reports[0].starts_with("KAP host: release of a dead container \"Name\"\n"));
  deleteAtom(atom);
}

// What the call about leaks does with an atom does not keep it alive for the next host.
TEST(ChecksAtTheEndTest, AtomsInTheLeakReport) {
  KAPStringAtom* atom = nullptr;
  KAPStringAtom* (*newAtom)(const char*) = nullptr;
  void (*deleteAtom)(KAPStringAtom*) = nullptr;
  const auto useAgain = [&](const KAPHost::Snapshot&) {
    for (int i = 0; i < 4; ++i) deleteAtom(newAtom("leaked"));
  };
  {
    KAPHost::Host host(
        {.fOnReport = {}, .fOnLeak = useAgain, .fMemory = KAPHost::HostMemory::kPages});
    newAtom = host.Proc<KAPStringInterface, "NewStringAtom">();
    deleteAtom = host.Proc<KAPStringInterface, "DeleteStringAtom">();
    atom = newAtom("leaked");
  }
  KAPHost::Host host({.fOnReport = {},
                      .fOnLeak = [](const auto&) {},
                      .fChecks = true,
                      .fMemory = KAPHost::HostMemory::kPages});
  deleteAtom(atom);
  deleteAtom(atom);
  EXPECT_EQ(host.TakeReports(),
            std::vector<std::string>{"KAP host: release of a dead atom \"leaked\""});
}

// A new atom of the same text is not the dead one.
TEST_F(ChecksTest, DeadAtoms) {
  KAPStringAtom* const dead = fHost.Atom("text");
  fHost.Strings<"DeleteStringAtom">(dead);
  KAPStringAtom* const live = fHost.Atom("text");
  EXPECT_NE(live, dead);
  fHost.Strings<"AddRef">(dead);
  EXPECT_EQ(TakeHeadline(), "KAP host: AddRef of a dead atom \"text\"");
  fHost.Strings<"DeleteStringAtom">(dead);
  EXPECT_EQ(TakeHeadline(), "KAP host: release of a dead atom \"text\"");
  EXPECT_EQ(fHost.TakeText(live), "text");
}

}  // namespace
