// SPDX-License-Identifier: MIT
#include "KAPUtilsC.h"
#include "RuntimeTest.h"

// The functions of the C header that fetch and register tables of procedures, with a host that
// fails.

namespace {

class CTablesTest : public HostTest {
 protected:
  CTablesTest() {
    const KAPGetProcAddressProc getProc = fHost.GetProcAddress();
    EXPECT_TRUE(KAPBinderInterfaceLoad(&fBinder, getProc));
    EXPECT_TRUE(KAPContainerInterfaceLoad(&fContainers, getProc));
    EXPECT_TRUE(KAPStringInterfaceLoad(&fStrings, getProc));
    EXPECT_TRUE(KAPErrorInterfaceLoad(&fErrors, getProc));
  }
  bool Load(KAPSimpleStreamInterfaceProcs* procs, KAPContainer* container) const {
    return KAPSimpleStreamInterfaceLoadFrom(procs, &fContainers, &fStrings, &fErrors, container);
  }

  KAPBinderInterfaceProcs fBinder;
  KAPContainerInterfaceProcs fContainers;
  KAPStringInterfaceProcs fStrings;
  KAPErrorInterfaceProcs fErrors;
};

TEST_F(CTablesTest, MethodsOfAContainer) {
  KAPStreamFactoryInterfaceProcs factory;
  ASSERT_TRUE(KAPStreamFactoryInterfaceLoad(&factory, fHost.GetProcAddress()));
  KAPContainer* stream = nullptr;
  ASSERT_EQ(factory.NewPositionableMemoryStream(&stream), nullptr);
  const auto sweep = [&](const FailingCall& call) {
    const BalancedScope balanced(fHost);
    KAPSimpleStreamInterfaceProcs procs;
    bool complete = false;
    const bool fails = call.During(fHost, [&] { complete = Load(&procs, stream); });
    EXPECT_EQ(complete, !fails);
    EXPECT_TRUE(fails || (procs.Read && procs.Write));
    return fails;
  };
  EXPECT_GE(FailingCall::Sweep(sweep), 10u);  // two methods, each with two atoms and a call
  KAPContainer* empty = nullptr;
  ASSERT_EQ(fContainers.NewContainer(&empty), nullptr);
  KAPSimpleStreamInterfaceProcs none;
  EXPECT_FALSE(Load(&none, empty));
  EXPECT_TRUE(!none.Read && !none.Write);
  fContainers.Release(empty);
  fContainers.Release(stream);
}

TEST_F(CTablesTest, Registration) {
  const char* const name = KAPDataBlockStreamInterface_NAME;
  const KAPDataBlockStreamInterfaceProcs procs = {[](auto...) -> KAPError* { return nullptr; },
                                                  [](auto...) -> KAPError* { return nullptr; }};
  fHost.FailRegistration(name, "Rewind");
  EXPECT_FALSE(KAPDataBlockStreamInterfaceRegister(&procs, &fBinder));
  fBinder.KAPUnregisterInterface(name);
  fHost.StopFaults();
  EXPECT_TRUE(KAPDataBlockStreamInterfaceRegister(&procs, &fBinder));
  KAPDataBlockStreamInterfaceProcs found;
  EXPECT_TRUE(KAPDataBlockStreamInterfaceLoad(&found, fHost.GetProcAddress()));
  EXPECT_EQ(found.Rewind, procs.Rewind);
  fBinder.KAPUnregisterInterface(name);
}

}  // namespace
