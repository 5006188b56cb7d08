// SPDX-License-Identifier: MIT
#include "TestHost.h"

namespace {

using KAP_T_MT::KAPFault;

// The rules of fault injection. declarations_test.cpp tests that each procedure obeys them.
class FaultTest : public HostTest {
 protected:
  bool TryAtom() {
    KAPStringAtom* atom = fHost.Atom("injected");
    fHost.Strings<"DeleteStringAtom">(atom);
    return atom;
  }
  bool TryBlock(std::size_t size = 16) {
    void* block = fHost.Memory<"Alloc">(size);
    fHost.Memory<"Free">(block);
    return block;
  }
};

TEST_F(FaultTest, TheNthCallOfAKindFails) {
  for (const KAPFault kind : {KAPFault::kAtom, KAPFault::kAny}) {
    fHost.FailCall(kind, 2);
    EXPECT_TRUE(TryAtom());
    EXPECT_FALSE(fHost.Fired());
    EXPECT_FALSE(TryAtom());
    EXPECT_TRUE(fHost.Fired());
    EXPECT_TRUE(TryAtom());
    EXPECT_EQ(fHost.CallCount(KAPFault::kAtom), 3u);
    EXPECT_EQ(fHost.CallCount(KAPFault::kAny), 3u);

    fHost.FailFrom(kind, 2);
    EXPECT_TRUE(TryAtom());
    EXPECT_FALSE(TryAtom());
    EXPECT_FALSE(TryAtom());
    fHost.StopFaults();
    EXPECT_TRUE(fHost.Fired());
    EXPECT_TRUE(TryAtom());
  }
}

TEST_F(FaultTest, KindsHaveRulesOfTheirOwn) {
  fHost.FailFrom(KAPFault::kAtom, 1);
  EXPECT_FALSE(TryAtom());
  EXPECT_TRUE(TryBlock());
  fHost.FailCall(KAPFault::kBlock, 1);  // the rule for atoms stays
  EXPECT_FALSE(TryBlock());
  EXPECT_FALSE(TryAtom());
}

TEST_F(FaultTest, LargeBlocks) {
  fHost.FailBlocksAbove(64);
  EXPECT_TRUE(TryBlock(64));
  EXPECT_FALSE(TryBlock(65));
  void* const block = fHost.Memory<"Realloc">(nullptr, 64ul);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(fHost.Memory<"Realloc">(block, 65ul), nullptr);
  fHost.Memory<"Free">(block);
}

TEST_F(FaultTest, HiddenProceduresAndFailingRegistrations) {
  using Binder = KAP_T_MT::KAPBinderInterface;
  const auto registerProc = fHost.Proc<Binder, "KAPRegisterProcAddress">();
  const auto find = fHost.GetProcAddress();
  fHost.FailRegistration(nullptr, "M");
  fHost.FailRegistration("I", nullptr);
  fHost.HideProcedure(nullptr, "M2");
  fHost.HideProcedure("I", nullptr);
  fHost.HideInterface(nullptr);
  fHost.FailRegistration("I", "M");
  EXPECT_EQ(registerProc("I", "M", "P", this), 0);
  EXPECT_NE(registerProc("I", "M2", "P", this), 0);
  EXPECT_EQ(find("I", "M2", "P"), this);
  fHost.HideProcedure("I", "M2");
  EXPECT_EQ(find("I", "M2", "P"), nullptr);
  fHost.HideInterface("KAP");
  EXPECT_EQ((fHost.Proc<Binder, "KAPReportError">()), nullptr);
  EXPECT_TRUE(fHost.Fired());
  fHost.StopFaults();
  EXPECT_EQ(find("I", "M2", "P"), this);
  EXPECT_NE(registerProc("I", "M", "P", this), 0);
  fHost.Unregister("I");
}

}  // namespace
