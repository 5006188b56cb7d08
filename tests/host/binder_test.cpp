// SPDX-License-Identifier: MIT
#include <stdexcept>

#include "TestHost.h"

namespace {

class BinderTest : public HostTest {
 protected:
  void* Find(const char* interfaceName, const char* methodName, const char* procName) {
    return fHost.GetProcAddress()(interfaceName, methodName, procName);
  }

  using Binder = KAP_T_MT::KAPBinderInterface;
  Binder::Proc<"KAPRegisterProcAddress"> fRegister = fHost.Proc<Binder, "KAPRegisterProcAddress">();
  Binder::Proc<"KAPUnregisterInterface"> fUnregister =
      fHost.Proc<Binder, "KAPUnregisterInterface">();
  const unsigned long* fCounter = fHost.Call<Binder, "KAPGetUnregisterCountAddr">();

  int fFirst = 0, fSecond = 0;  // stand for procedures
};

TEST_F(BinderTest, RegistersReplacesAndUnregisters) {
  EXPECT_NE(fRegister("I", "M", "P", &fFirst), 0);
  EXPECT_NE(fRegister("I", "M2", "P", &fSecond), 0);
  EXPECT_EQ(Find("I", "M", "P"), &fFirst);
  EXPECT_EQ(Find("I", "M2", "P"), &fSecond);
  EXPECT_EQ(Find("I", "M", "P2"), nullptr);
  EXPECT_EQ(Find("I2", "M", "P"), nullptr);

  EXPECT_NE(fRegister("I", "M", "P", &fSecond), 0);
  EXPECT_EQ(Find("I", "M", "P"), &fSecond);

  const unsigned long before = *fCounter;
  fUnregister("I");
  EXPECT_EQ(Find("I", "M", "P"), nullptr);
  EXPECT_EQ(Find("I", "M2", "P"), nullptr);
  EXPECT_EQ(*fCounter, before + 1);
  for (const char* unknown : {"I", "never registered", static_cast<const char*>(nullptr)}) {
    fUnregister(unknown);
  }
  EXPECT_EQ(*fCounter, before + 1);
}

TEST_F(BinderTest, NullsAreErrors) {
  EXPECT_EQ(fRegister(nullptr, "M", "P", &fFirst), 0);
  EXPECT_EQ(fRegister("I", nullptr, "P", &fFirst), 0);
  EXPECT_EQ(fRegister("I", "M", nullptr, &fFirst), 0);
  EXPECT_EQ(fRegister("I", "M", "P", nullptr), 0);
  EXPECT_EQ(Find(nullptr, "M", "P"), nullptr);
  EXPECT_EQ(Find("I", nullptr, "P"), nullptr);
  EXPECT_EQ(Find("I", "M", nullptr), nullptr);
}

TEST_F(BinderTest, SecondHostThrows) {
  EXPECT_THROW(static_cast<void>(KAPHost::Host()), std::logic_error);
  EXPECT_NE(Find("KAP", "KAPReportError", "KAPReportError"), nullptr);  // the first one still works
}

}  // namespace
