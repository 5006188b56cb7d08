// SPDX-License-Identifier: MIT
#include "TestHost.h"

namespace {

using KAP_T_MT::KAPResource;
using KAPHost::Holding;

// The arguments of the delete procedures, in order.
std::string gDeleted;
void DeleteNamed(void* name) { gDeleted += static_cast<const char*>(name); }

class ContainerTest : public HostTest {
 protected:
  ContainerTest() { gDeleted.clear(); }
  ~ContainerTest() override {
    for (KAPStringAtom* atom : {fImpl, fInterface, fOther}) fHost.Strings<"DeleteStringAtom">(atom);
  }

  KAPContainer* New() {
    KAPContainer* container = nullptr;
    EXPECT_EQ(
        fHost.Containers<"NewFullContainer">(&container, fNameA, fImpl, fInterface, &DeleteNamed),
        nullptr);
    return container;
  }
  void Release(KAPContainer* container) { fHost.Containers<"Release">(container); }
  int RefCount(KAPContainer* container) {
    return *fHost.Containers<"DebugGetRefCountAddr">(container);
  }
  // The primary instance (0) and the signature (1).
  const void* Word(const KAPContainer* container, int number) {
    const char* record =
        reinterpret_cast<const char*>(container) + fHost.Containers<"GetOffsetToPrimaryInstance">();
    return reinterpret_cast<void* const*>(record)[number];
  }
  void* Instance(KAPContainer* container, KAPStringAtom* name) {
    void* instance = this;
    EXPECT_EQ(fHost.Containers<"NGetInstance">(&instance, container, name), nullptr);
    EXPECT_EQ(fHost.Containers<"GetInstance">(container, name), instance);
    return instance;
  }
  // With a parent: among the interfaces registered before those of that instance.
  void* Method(KAPContainer* container, const char* methodName, const char* procName,
               KAPStringAtom* parent = nullptr) {
    KAPStringAtom* method = fHost.Atom(methodName);
    KAPStringAtom* proc = fHost.Atom(procName);
    void* found = this;
    KAPError* error =
        parent ? fHost.Containers<"GetParentMethod">(&found, container, parent, method, proc)
               : fHost.Containers<"GetMethod">(&found, container, method, proc, 0);
    EXPECT_EQ(error, nullptr);
    fHost.Strings<"DeleteStringAtom">(method);
    fHost.Strings<"DeleteStringAtom">(proc);
    return found;
  }

  char fNameA[2] = "a", fNameB[2] = "b", fNameC[2] = "c";
  KAPStringAtom* fImpl = fHost.Atom("Impl");
  KAPStringAtom* fInterface = fHost.Atom("Interface");
  KAPStringAtom* fOther = fHost.Atom("Other");
};

TEST_F(ContainerTest, LastReleaseDeletesTheInstance) {
  KAPContainer* container = New();
  EXPECT_EQ(Word(container, 0), fNameA);
  EXPECT_EQ(Word(container, 1), fHost.Strings<"GetCString">(fImpl));
  EXPECT_EQ(fHost.TakeText(fHost.Containers<"GetSignature">(container)), "Impl");
  EXPECT_EQ(Instance(container, fImpl), fNameA);
  EXPECT_EQ(Instance(container, fOther), nullptr);

  EXPECT_TRUE(fHost.Containers<"AddRef">(container));
  EXPECT_EQ(RefCount(container), 2);
  EXPECT_EQ(fHost.TakeSnapshot().Of(KAPResource::kContainer, "Impl"), (Holding{1, 2}));
  Release(container);
  EXPECT_EQ(gDeleted, "");
  Release(container);
  EXPECT_EQ(gDeleted, "a");
}

TEST_F(ContainerTest, ContainerBeingDestroyedTakesNoReference) {
  static const TestHost* host = nullptr;
  static KAPContainer* dying = nullptr;
  host = &fHost;
  KAPDeleteProc inspect = [](void*) {
    EXPECT_FALSE(host->Containers<"AddRef">(dying));
    host->Containers<"Release">(dying);  // as by a caller that does not check
    gDeleted += "once ";
  };
  fHost.Containers<"NewFullContainer">(&dying, fNameA, fImpl, fInterface, inspect);
  Release(dying);
  EXPECT_EQ(gDeleted, "once ");
}

TEST_F(ContainerTest, UnownedContainersLiveUntilTheyAreDeleted) {
  KAPContainer* container = New();
  fHost.Containers<"DeleteUnownedContainer">(container);
  EXPECT_EQ(gDeleted, "");  // there is a reference
  fHost.Containers<"DecrementWithoutDelete">(container);
  EXPECT_EQ(fHost.TakeSnapshot().Of(KAPResource::kContainer, "Impl"), (Holding{1, 0}));
  Release(container);
  EXPECT_EQ(gDeleted, "");
  EXPECT_NE(fHost.TakeReport().find("without references"), std::string::npos);

  EXPECT_TRUE(fHost.Containers<"AddRef">(container));
  fHost.Containers<"DecrementWithoutDelete">(container);
  fHost.Containers<"DeleteUnownedContainer">(container);
  EXPECT_EQ(gDeleted, "a");
}

TEST_F(ContainerTest, EmptyContainerIsEquipped) {
  KAPContainer* container = nullptr;
  ASSERT_EQ(fHost.Containers<"NewContainer">(&container), nullptr);
  EXPECT_EQ(Word(container, 0), nullptr);
  EXPECT_EQ(Word(container, 1), nullptr);
  EXPECT_EQ(fHost.Containers<"GetSignature">(container), nullptr);
  fHost.Containers<"AddRef">(container);

  const auto add = [&](KAPStringAtom* name, void* instance) {
    return fHost.TakeMessage(
        fHost.Containers<"RegisterInstance">(container, name, instance, &DeleteNamed));
  };
  EXPECT_EQ(add(fImpl, fNameA), "");
  EXPECT_EQ(Word(container, 0), fNameA);
  EXPECT_EQ(Word(container, 1), fHost.Strings<"GetCString">(fImpl));
  EXPECT_EQ(fHost.TakeSnapshot().Of(KAPResource::kContainer, "Impl"), (Holding{1, 2}));
  EXPECT_EQ(add(fOther, fNameB), "");
  EXPECT_EQ(add(fInterface, fNameC), "");
  EXPECT_NE(add(fOther, fNameA), "");  // the name is taken
  EXPECT_EQ(Instance(container, fOther), fNameB);

  Release(container);
  Release(container);
  EXPECT_EQ(gDeleted, "cba");
}

TEST_F(ContainerTest, MethodsOfAllInterfacesAreFound) {
  int first = 0, second = 0, third = 0;  // stand for procedures
  fHost.Register("Interface", "M", "P", &first);
  fHost.Register("Interface", "M2", "P", &second);
  fHost.Register("Other", "M", "P", &third);
  KAPContainer* container = New();
  EXPECT_EQ(Method(container, "M", "P"), &first);
  EXPECT_EQ(Method(container, "M", "P2"), nullptr);

  // A later interface hides the earlier one, which GetParentMethod still finds.
  EXPECT_EQ(fHost.Containers<"RegisterInterface">(container, fOther, fOther), nullptr);
  EXPECT_EQ(Method(container, "M", "P"), &third);
  EXPECT_EQ(Method(container, "M2", "P"), &second);
  EXPECT_EQ(Method(container, "M", "P", fOther), &first);
  EXPECT_EQ(Method(container, "M", "P", fImpl), nullptr);

  fHost.Unregister("Interface");
  EXPECT_EQ(Method(container, "M2", "P"), nullptr);
  Release(container);
}

TEST_F(ContainerTest, CloneKeepsTheOriginalAlive) {
  KAPContainer* original = New();
  fHost.Containers<"RegisterInstance">(original, fOther, fNameB, &DeleteNamed);
  KAPContainer* clone = nullptr;
  ASSERT_EQ(fHost.Containers<"CloneContainer">(&clone, original), nullptr);
  EXPECT_NE(clone, original);
  EXPECT_EQ(Instance(clone, fImpl), fNameA);
  fHost.Containers<"RegisterInstance">(clone, fInterface, fNameC, &DeleteNamed);
  EXPECT_EQ(Instance(original, fInterface), nullptr);

  Release(original);
  EXPECT_EQ(gDeleted, "");
  EXPECT_EQ(Instance(clone, fOther), fNameB);
  Release(clone);
  EXPECT_EQ(gDeleted, "cba");
}

TEST_F(ContainerTest, LongChainsOfClonesAreReleased) {
  KAPContainer* last = New();
  for (int i = 0; i < 200000; ++i) {
    KAPContainer* clone = nullptr;
    ASSERT_EQ(fHost.Containers<"CloneContainer">(&clone, last), nullptr);
    Release(last);
    last = clone;
  }
  EXPECT_EQ(gDeleted, "");
  Release(last);
  EXPECT_EQ(gDeleted, "a");
}

// Null names. declarations_test.cpp tests null containers.
TEST_F(ContainerTest, NullNamesAreErrors) {
  KAPContainer* container = New();
  void* out = this;
  for (KAPError* error :
       {fHost.Containers<"NGetInstance">(&out, container, nullptr),
        fHost.Containers<"GetMethod">(&out, container, nullptr, fImpl, 1),
        fHost.Containers<"GetParentMethod">(&out, container, fImpl, fImpl, nullptr),
        fHost.Containers<"RegisterInterface">(container, nullptr, fImpl)}) {
    EXPECT_EQ(fHost.TakeMessage(error), "invalid argument");
  }
  EXPECT_EQ(out, nullptr);
  Release(container);
}

}  // namespace
