// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include <algorithm>
#include <optional>

#include "HostTap.h"
#include "TestHost.h"
#include "dir/KAPUtilsDirInterfaces.h"
#include "pos/POSInterfaceSets.h"

namespace {

using Texts = std::vector<std::string>;
using KAP_T_MT::KAPFault;

template <class... Sets>
Texts NamesOf() {
  Texts names;
  (names.insert(names.end(), std::begin(Sets::kNames), std::end(Sets::kNames)), ...);
  return names;
}

using KAP_T_MT::KAPUtilsDirInterfaceSet;

const Texts kInterfaces = NamesOf<KAP_T_MT::POSInterfaceSet, KAP_T_MT::POSStreamerInterfaceSet,
                                  KAP_T_MT::POSValidatorInterfaceSet, KAPUtilsDirInterfaceSet>();
// The groups in the reverse order, each from its first to its last.
const Texts kWithdrawn = NamesOf<KAPUtilsDirInterfaceSet, KAP_T_MT::POSValidatorInterfaceSet,
                                 KAP_T_MT::POSStreamerInterfaceSet, KAP_T_MT::POSInterfaceSet>();
const Texts kAtoms = {
    "POSObjectImpl",   "POSObjectInterface",   "POSDictIteratorImpl", "POSDictIteratorInterface",
    "POSStreamerImpl", "POSStreamerInterface", "POSValidatorImpl",    "POSValidatorInterface",
    "KAPUtilsDir",     "KAPUtilsDirInterface"};

// A registration, parsed from the string that the tap records: "interface/method/procedure".
struct Registration {
  explicit Registration(const std::string& text)
      : fInterface(text.substr(0, text.find('/'))),
        fMethod(text.substr(fInterface.size() + 1, text.rfind('/') - fInterface.size() - 1)),
        fProc(text.substr(text.rfind('/') + 1)) {}
  bool IsIn(const KAPHost::Host& host) const {
    return host.Find(fInterface.c_str(), fMethod.c_str(), fProc.c_str()) != nullptr;
  }

  std::string fInterface, fMethod, fProc;
};

class LibraryEntryTest : public HostTest {
 protected:
  bool Initialize() { return fLibrary->Initialize(&HostTap::GetProc); }
  void Terminate() {
    fLibrary->Terminate();
    EXPECT_TRUE(fHost.TakeSnapshot().IsEmpty()) << fHost.TakeSnapshot();
  }
  // Expects initialisation to fail under the current faults and to succeed without them.
  void FailAndRecover() {
    EXPECT_FALSE(Initialize());
    EXPECT_FALSE(Initialize());
    Terminate();
    fHost.StopFaults();
    EXPECT_TRUE(Initialize());
    Terminate();
  }
  std::vector<Registration> RegistrationsSoFar() const {
    const Texts texts = HostTap::TextsOf("KAPRegisterProcAddress");
    return {texts.begin(), texts.end()};
  }

  HostTap fTap{fHost};
  std::optional<KAPHost::Component> fLibrary{KAP_LIBRARY_PATH};
};

TEST_F(LibraryEntryTest, AtomsAndInterfacesInOrder) {
  for (int round = 0; round < 2; ++round) {
    HostTap::Clear();
    EXPECT_TRUE(Initialize());
    Texts interfaces;
    for (const Registration& registration : RegistrationsSoFar()) {
      EXPECT_TRUE(registration.IsIn(fHost)) << registration.fProc;
      interfaces.push_back(registration.fInterface);
    }
    interfaces.erase(std::unique(interfaces.begin(), interfaces.end()), interfaces.end());
    EXPECT_EQ(interfaces, kInterfaces);
    EXPECT_EQ(HostTap::TextsOf("NewStringAtom"), kAtoms);
    EXPECT_EQ(HostTap::TextsOf("Alloc").size(), 1u);

    HostTap::Clear();
    Terminate();
    EXPECT_EQ(HostTap::TextsOf("KAPUnregisterInterface"), kWithdrawn);
    EXPECT_EQ(HostTap::TextsOf("DeleteStringAtom"), Texts(kAtoms.rbegin(), kAtoms.rend()));

    fLibrary.reset();
    EXPECT_EQ(dlopen(KAP_LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD), nullptr);
    fLibrary.emplace(KAP_LIBRARY_PATH);
  }
}

TEST_F(LibraryEntryTest, WhatIsOutOfTurnChangesNothing) {
  auto nothingAsked = [] { return HostTap::TakeCalls().empty() && HostTap::TakeLookUps().empty(); };
  for (int round = 0; round < 2; ++round) {
    HostTap::Clear();
    Terminate();
    EXPECT_EQ(fLibrary->Version(), 65793);
    EXPECT_TRUE(nothingAsked());
    EXPECT_TRUE(Initialize());
    HostTap::Clear();
    EXPECT_FALSE(Initialize());  // deliberate: not reported as success
    EXPECT_FALSE(fLibrary->Initialize(nullptr));
    EXPECT_TRUE(nothingAsked());
    Terminate();
  }
  EXPECT_FALSE(fLibrary->Initialize(nullptr));
  EXPECT_FALSE(Initialize());  // deliberate: a failed initialisation needs termination too
  Terminate();
  EXPECT_TRUE(Initialize());
}

TEST_F(LibraryEntryTest, FailEachCall) {
  fHost.CountCalls();
  EXPECT_TRUE(Initialize());
  const unsigned long calls = fHost.CallCount(KAPFault::kAny);
  Terminate();
  EXPECT_GT(calls, kAtoms.size());
  for (unsigned long n = 1; n <= calls; ++n) {
    SCOPED_TRACE(n);
    fHost.FailCall(KAPFault::kAny, n);
    FailAndRecover();
  }
}

TEST_F(LibraryEntryTest, LoseEachProcedure) {
  EXPECT_TRUE(Initialize());
  Terminate();
  const Log lookUps = HostTap::TakeLookUps();
  EXPECT_GT(lookUps.size(), 30u);
  for (const auto& [interfaceName, method] : lookUps) {
    SCOPED_TRACE(interfaceName + " " + method);
    fHost.HideProcedure(interfaceName.c_str(), method.c_str());
    FailAndRecover();
  }
}

TEST_F(LibraryEntryTest, FailEachRegistration) {
  HostTap::Clear();
  EXPECT_TRUE(Initialize());
  const std::vector<Registration> all = RegistrationsSoFar();
  Terminate();
  for (const Registration& failing : all) {
    SCOPED_TRACE(failing.fInterface + " " + failing.fMethod);
    fHost.FailRegistration(failing.fInterface.c_str(), failing.fMethod.c_str());
    EXPECT_FALSE(Initialize());
    for (const Registration& other : all) {  // the earlier ones remain
      EXPECT_EQ(other.IsIn(fHost), &other < &failing) << other.fProc;
    }
    Terminate();
    for (const Registration& other : all) EXPECT_FALSE(other.IsIn(fHost)) << other.fProc;
    fHost.StopFaults();
  }
}

TEST_F(LibraryEntryTest, ObjectsWorkOnAfterTheNextInitialize) {
  EXPECT_TRUE(Initialize());
  KAPContainer* array =
      fHost.Proc<KAP_T_MT::POSObjectStatics, "CreateFromText">()("[[1]]", nullptr);
  fLibrary->Terminate();
  EXPECT_TRUE(Initialize());
  KAPContainer* clone = fHost.Proc<KAP_T_MT::POSObjectInterface, "Clone">()(array);
  EXPECT_NE(clone, array);
  EXPECT_TRUE((fHost.Proc<KAP_T_MT::POSObjectInterface, "IsEqual">()(clone, array)));
  for (KAPContainer* object : {array, clone}) fHost.Containers<"Release">(object);
  Terminate();
}

// A caller may keep the address of a procedure longer than the library is initialised.
TEST_F(LibraryTest, ProceduresAfterTermination) {
  using namespace KAP_T_MT;
  const auto getType = fHost.Proc<POSObjectInterface, "GetType">();
  const auto isNumber = fHost.Proc<POSNumberInterface, "IsPOSNumber">();
  KAPContainer* container = nullptr;
  fHost.Containers<"NewContainer">(&container);
  fLibrary.Terminate();
  EXPECT_EQ(getType(container), 0);
  EXPECT_FALSE(isNumber(container));
  fHost.Containers<"Release">(container);
}

}  // namespace
