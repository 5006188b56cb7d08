#include <stdexcept>

#include "TestHost.h"

namespace {

class BinderTest : public HostTest {
 protected:
  template <class Proc>
  Proc Own(const char* name) {
    return reinterpret_cast<Proc>(fHost.GetProcAddress()("KAP", name, name));
  }
  void* Find(const char* interfaceName, const char* methodName, const char* procName) {
    return fHost.GetProcAddress()(interfaceName, methodName, procName);
  }

  int (*fRegister)(const char*, const char*, const char*,
                   void*) = Own<decltype(fRegister)>("KAPRegisterProcAddress");
  void (*fUnregister)(const char*) = Own<decltype(fUnregister)>("KAPUnregisterInterface");
  void (*fReport)(const char*) = Own<decltype(fReport)>("KAPReportError");
  const unsigned long* fCounter = Own<unsigned long* (*)()>("KAPGetUnregisterCountAddr")();

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

  fUnregister("I");
  EXPECT_EQ(Find("I", "M", "P"), nullptr);
  EXPECT_EQ(Find("I", "M2", "P"), nullptr);
}

TEST_F(BinderTest, CounterGrowsByOneForEachInterfaceUnregistered) {
  const unsigned long before = *fCounter;
  fRegister("I", "M", "P", &fFirst);
  fRegister("I", "M2", "P", &fFirst);
  EXPECT_EQ(*fCounter, before);
  fUnregister("I");
  EXPECT_EQ(*fCounter, before + 1);
  fUnregister("I");
  fUnregister("never registered");
  fUnregister(nullptr);
  EXPECT_EQ(*fCounter, before + 1);
}

TEST_F(BinderTest, NullsAreRefused) {
  EXPECT_EQ(fRegister(nullptr, "M", "P", &fFirst), 0);
  EXPECT_EQ(fRegister("I", nullptr, "P", &fFirst), 0);
  EXPECT_EQ(fRegister("I", "M", nullptr, &fFirst), 0);
  EXPECT_EQ(fRegister("I", "M", "P", nullptr), 0);
  EXPECT_EQ(Find(nullptr, "M", "P"), nullptr);
  EXPECT_EQ(Find("I", nullptr, "P"), nullptr);
  EXPECT_EQ(Find("I", "M", nullptr), nullptr);
}

TEST_F(BinderTest, EmbedderReplacesAProcedureOfTheHost) {
  static int calls = 0;
  calls = 0;
  void (*addRef)(KAPStringAtom*) = [](KAPStringAtom*) { ++calls; };
  ASSERT_TRUE(fHost.Register("KAPStringInterface", "AddRef", "KAPAddRefStringAtomProc",
                             reinterpret_cast<void*>(addRef)));
  fHost.Strings<"AddRef">(nullptr);
  EXPECT_EQ(calls, 1);
}

TEST_F(BinderTest, CollectsReports) {
  fReport("first");
  fReport(nullptr);
  EXPECT_EQ(fHost.Reports().size(), 2u);
  EXPECT_EQ(fHost.TakeReports().front(), "first");
  EXPECT_TRUE(fHost.Reports().empty());
}

TEST_F(BinderTest, SecondHostIsRefused) {
  try {
    KAPHost::Host second;
    FAIL();
  } catch (const std::logic_error& error) {
    EXPECT_NE(std::string(error.what()).find("another host lives"), std::string::npos);
  }
  EXPECT_NE(Find("KAP", "KAPReportError", "KAPReportError"), nullptr);  // the first one still works
}

}  // namespace
