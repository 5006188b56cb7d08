// SPDX-License-Identifier: MIT
#include <algorithm>
#include <stdexcept>

#include "TestHost.h"
#include "kap/KAPBinderInterface.h"
#include "kap/KAPCacheInterface.h"

namespace {

using KAP_T_MT::KAPResource;
using KAPHost::Component;
using KAPHost::LoadError;

class ComponentTest : public HostTest {};

TEST_F(ComponentTest, IsInitialisedTerminatedAndUnloaded) {
  {
    Component component = fHost.Load(SMALL_COMPONENT, "Small");
    EXPECT_EQ(component.Version(), 7);
    EXPECT_EQ(fHost.TakeSnapshot().Of(KAPResource::kAtom, "kept by a component").fNumber, 1);
    const auto answer =
        reinterpret_cast<int (*)()>(fHost.Find("SmallInterface", "Answer", "SmallAnswerProc"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);

    Component moved = std::move(component);
    EXPECT_NE(fHost.Find("SmallInterface", "Answer", "SmallAnswerProc"), nullptr);
  }
  EXPECT_EQ(fHost.Find("SmallInterface", "Answer", "SmallAnswerProc"), nullptr);
  EXPECT_TRUE(fHost.TakeSnapshot().IsEmpty());
}

// A component that does not unregister a procedure: it can no longer be looked up, and a caller
// that kept its address does not crash.
TEST_F(ComponentTest, ProceduresLeftRegistered) {
  const unsigned long* const counter =
      fHost.Call<KAP_T_MT::KAPBinderInterface, "KAPGetUnregisterCountAddr">();
  int (*answer)() = nullptr;
  unsigned long before = 0;
  {
    const Component component = fHost.Load(SMALL_COMPONENT, "Small");
    void* const proc = fHost.Find("SmallInterface", "Answer", "SmallAnswerProc");
    answer = reinterpret_cast<int (*)()>(proc);
    fHost.Register("LeftInterface", "Answer", "P", proc);
    fHost.Register("MixedInterface", "Answer", "P", proc);
    fHost.Register("MixedInterface", "Other", "P", this);
    before = *counter;
  }
  EXPECT_EQ(*counter, before + 3);
  EXPECT_EQ(fHost.Find("LeftInterface", "Answer", "P"), nullptr);
  EXPECT_EQ(fHost.Find("MixedInterface", "Answer", "P"), nullptr);
  EXPECT_EQ(fHost.Find("MixedInterface", "Other", "P"), this);
  EXPECT_EQ(answer(), 42);
  std::vector<std::string> reports = fHost.TakeReports();
  std::sort(reports.begin(), reports.end());
  const std::string start = "KAP host: Small (\"" SMALL_COMPONENT "\") was unloaded while ";
  EXPECT_EQ(reports, (std::vector{start + "\"LeftInterface\" was registered",
                                  start + "\"MixedInterface\" was registered"}));
}

TEST_F(ComponentTest, SecondLoadLeavesTheFirst) {
  Component first = fHost.Load(SMALL_COMPONENT, "Small");
  try {
    const Component second = fHost.Load(SMALL_COMPONENT, "Small");
    ADD_FAILURE();
  } catch (const LoadError& error) {
    EXPECT_STREQ(error.what(), "\"" SMALL_COMPONENT "\" is already initialised");
  }
  {
    Component second(SMALL_COMPONENT, "Small");
    EXPECT_FALSE(second.Initialize(fHost.GetProcAddress()));
    second.Terminate();
  }
  EXPECT_NE(fHost.Find("SmallInterface", "Answer", "SmallAnswerProc"), nullptr);
  first.Terminate();
  const Component again = fHost.Load(SMALL_COMPONENT, "Small");
  EXPECT_NE(fHost.Find("SmallInterface", "Answer", "SmallAnswerProc"), nullptr);
}

TEST_F(ComponentTest, FailedInitialisationMakesWayForAnother) {
  const auto answer = [&] { return fHost.Find("SmallInterface", "Answer", "SmallAnswerProc"); };
  Component first(SMALL_COMPONENT, "Small");
  fHost.FailRegistration("SmallInterface", "Answer");
  EXPECT_FALSE(first.Initialize(fHost.GetProcAddress()));
  fHost.StopFaults();
  Component second(SMALL_COMPONENT, "Small");
  EXPECT_TRUE(second.Initialize(fHost.GetProcAddress()));
  first.Terminate();
  EXPECT_NE(answer(), nullptr);
  Component third = std::move(second);
  second.Terminate();
  EXPECT_FALSE(second.Initialize(fHost.GetProcAddress()));
  first = std::move(third);
  third.Terminate();
  EXPECT_NE(answer(), nullptr);
}

// A client purge and a delete procedure that outlive their component: neither is called in memory
// that holds something else.
TEST_F(ComponentTest, AddressesLeftBehind) {
  int count = 0;
  KAPContainer* container = nullptr;
  {
    const Component component = fHost.Load(SMALL_COMPONENT, "Small");
    fHost.Containers<"NewFullContainer">(
        &container, &count, nullptr, nullptr,
        reinterpret_cast<KAPDeleteProc>(fHost.Find("SmallInterface", "Delete", "SmallDeleteProc")));
  }
  fHost.Containers<"Release">(container);
  EXPECT_EQ(count, 1);
  {
    const Component component = fHost.Load(SMALL_COMPONENT, "Small");
    fHost.Call<KAP_T_MT::KAPCacheInterface, "AddClientPurge">(
        reinterpret_cast<KAP_T_MT::KAPClientPurgeProc>(
            fHost.Find("SmallInterface", "Purge", "SmallPurgeProc")),
        0);
  }
  EXPECT_EQ(fHost.TakeReport(), "KAP host: Small (\"" SMALL_COMPONENT
                                "\") was unloaded while a client purge was registered");
  fHost.Call<KAP_T_MT::KAPCacheInterface, "PurgeAllStaticCaches">();
  EXPECT_EQ(fHost.TakeReports(), std::vector<std::string>());
}

TEST_F(ComponentTest, FailuresNameFileAndReason) {
  const struct {
    const char* why;
    std::string path;
    std::string name;
    std::string part;
  } rows[] = {{"the program itself", "", "Small", "the path is empty"},
              {"no such file", "/no/such/file.so", "Small", "cannot open shared object file"},
              {"no such entry point", SMALL_COMPONENT, "Big", "BigInitialize"},
              {"fails to initialise", SMALL_COMPONENT, "Small", "SmallInitialize failed"}};
  fHost.FailRegistration("SmallInterface", "Answer");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    try {
      const Component none = fHost.Load(row.path, row.name);
      ADD_FAILURE();
    } catch (const LoadError& error) {
      const std::string text = error.what();
      EXPECT_NE(text.find(row.part), std::string::npos) << text;
      EXPECT_NE(text.find(row.path), std::string::npos) << text;
    }
  }
}

}  // namespace
