// SPDX-License-Identifier: MIT
#include "RuntimeTest.h"

namespace {

using namespace KAP_T_MT;
using KAP_T_MT::KAPFault;
using Slots = const KAPVTabGeneric::Slot*;

int gFills;

int CountedInit(KAPContainer* container, int required, KAPVTabGeneric::Slot* slots) {
  ++gFills;
  return TInterfaceConstructor<EchoInterface>::InitProc(container, required, slots);
}

class MethodTableTest : public BoundTest {
 protected:
  MethodTableTest() {
    gFills = 0;
    RegisterEcho(fHost);
  }
  Slots Get(const CKAPContainerHolder& container) {
    return fList.GetVTabDynamic(container.Handle(), &CountedInit);
  }
  void* Third() const { return EchoProc(fHost, 2); }

  CKAPContainerHolder fA1{MakeContainer("A"), true};
  CKAPContainerHolder fA2{MakeContainer("A"), true};
  CKAPContainerHolder fB{MakeContainer("B"), true};
  KAPVTabListGeneric fList{EchoInterface::kCount};
};

TEST_F(MethodTableTest, OneTablePerImplementation) {
  const Slots a = Get(fA1);
  const Slots b = Get(fB);
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a[2], Third());
  EXPECT_NE(b, a);
  HostTap::Clear();
  EXPECT_EQ(Get(fA2), a);
  EXPECT_EQ(Get(fB), b);
  EXPECT_EQ(HostTap::TakeCalls(), Log());
  EXPECT_EQ(gFills, 2);
  EXPECT_EQ(fList.Count(), 2u);
}

TEST_F(MethodTableTest, RefilledInPlaceWhenTheCounterMoved) {
  const Slots a = Get(fA1);
  const Slots b = Get(fB);
  fHost.Unregister(EchoInterface::kName);
  RegisterEcho<10>(fHost);
  const BalancedScope balanced(fHost);
  EXPECT_EQ(Get(fA2), a);
  EXPECT_EQ(a[2], Third());
  EXPECT_EQ(gFills, 3);
  EXPECT_NE(b[2], Third());
  EXPECT_EQ(Get(fB), b);
  EXPECT_EQ(b[2], Third());
  EXPECT_EQ(fList.Count(), 2u);
}

TEST_F(MethodTableTest, ANoHoldsUntilTheCounterMoves) {
  fHost.HideProcedure(EchoInterface::kName, "Second");
  EXPECT_EQ(Get(fA1), nullptr);
  fHost.StopFaults();
  EXPECT_EQ(Get(fA1), nullptr);
  EXPECT_EQ(gFills, 1);
  MoveCounter(fHost);
  EXPECT_NE(Get(fA1), nullptr);
  MoveCounter(fHost);
  fHost.HideInterface(EchoInterface::kName);
  EXPECT_EQ(Get(fA1), nullptr);  // as does a yes
  EXPECT_EQ(Get(fA2), nullptr);
  EXPECT_EQ(gFills, 3);
}

// Whichever call of the host fails during a fill, the next use fills again, without the counter
// moving.
TEST_F(MethodTableTest, AFailedFillIsDoneAgain) {
  for (const bool first : {true, false}) {
    for (unsigned long n = 1, failed = 1; failed != 0; ++n) {
      SCOPED_TRACE(testing::Message() << (first ? "first" : "refill") << ", call " << n);
      first ? fList.DeleteAll() : MoveCounter(fHost);
      fHost.FailCall(KAPFault::kAny, n);
      const std::string thrown = Thrown([&] { Get(fA1); });
      failed = fHost.Fired();
      EXPECT_NE(thrown.empty(), failed) << thrown;
      EXPECT_TRUE(!failed || thrown == kBadAlloc || thrown == kOutOfMemory) << thrown;
      fHost.StopFaults();
      const Slots slots = Get(fA1);
      ASSERT_NE(slots, nullptr);
      EXPECT_EQ(slots[2], Third());
      EXPECT_EQ(fList.Count(), 1u);
      EXPECT_TRUE(failed ||
                  n > 9);  // three methods with two atoms and one call each, two for the table
    }
  }
}

// A host's "GetMethod" may call back into the list that calls it.
KAPVTabListGeneric* gList;
Slots gSlotsDuringFill;
KAPContainerInterface::Proc<"GetMethod"> gGetMethod;
int gOptional;

KAPError* GetMethodAskingBack(void** out, KAPContainer* container, KAPStringAtom* methodName,
                              KAPStringAtom* procName, int optional) {
  gOptional = optional;
  gSlotsDuringFill = gList->GetVTabDynamic(container, &CountedInit);
  return gGetMethod(out, container, methodName, procName, optional);
}

TEST_F(MethodTableTest, AFillThatAsksForItsOwnTable) {
  gList = &fList;
  gGetMethod = fHost.Proc<KAPContainerInterface, "GetMethod">();
  ReplaceProc<KAPContainerInterface, "GetMethod">(fHost, &GetMethodAskingBack);
  MoveCounter(fHost);
  const Slots slots = Get(fA1);
  ASSERT_NE(slots, nullptr);
  EXPECT_EQ(gSlotsDuringFill, nullptr);  // not filled yet
  EXPECT_EQ(gOptional, 0);
  MoveCounter(fHost);
  EXPECT_EQ(Get(fA1), slots);
  EXPECT_EQ(gSlotsDuringFill, slots);  // as the last fill left them
  EXPECT_EQ(gFills, 2);
  EXPECT_EQ(fList.Count(), 1u);
}

// The count of a table that was never filled is 0, and so is the counter here.
TEST(MethodTableCounterTest, AFailedFirstFillAtCounterZero) {
  static unsigned long counter;
  TestHost host;
  ReplaceProc<KAPBinderInterface, "KAPGetUnregisterCountAddr">(host, [] { return &counter; });
  ASSERT_TRUE(KAPClientInit(host.GetProcAddress()));
  RegisterEcho(host);
  {
    TDelVTabList<EchoInterface> tables;
    const CKAPContainerHolder container(MakeContainer("A"), true);
    host.FailCall(KAPFault::kMethod, 1);
    EXPECT_EQ(Thrown([&] { tables.InitVTab(container.Handle()); }), kOutOfMemory);
    EXPECT_EQ(Thrown([&] { tables.InitVTab(container.Handle()); }), "");
  }
  KAPClientTerminate();
}

TEST_F(MethodTableTest, NoSignature) {
  const CKAPContainerHolder empty;
  const BalancedScope balanced(fHost);
  for (KAPContainer* container : {empty.Handle(), static_cast<KAPContainer*>(nullptr)}) {
    EXPECT_EQ(Thrown([&] { fList.GetVTabDynamic(container, &CountedInit); }),
              "couldn't get signature||0");
  }
  EXPECT_EQ(gFills, 0);
}

}  // namespace
