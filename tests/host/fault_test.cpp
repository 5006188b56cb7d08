#include <functional>

#include "TestHost.h"

namespace {

using KAP_T_MT::KAPFault;

class FaultTest : public HostTest {
 protected:
  ~FaultTest() override { fHost.Strings<"DeleteStringAtom">(fName); }

  // One for each procedure that can fail: makes the call, undoes it on success, and returns whether it
  // succeeded. A failed call must return what its contract says.
  bool TryAtom() {
    KAPStringAtom* atom = fHost.Atom("injected");
    fHost.Strings<"DeleteStringAtom">(atom);
    return atom != nullptr;
  }
  bool TryError() {
    KAPError* error = fHost.Errors<"NewError">("m", "c", 0L, nullptr, nullptr);
    fHost.Errors<"Release">(error);
    return error != nullptr;
  }
  bool TryAlloc() {
    void* block = fHost.Memory<"Alloc">(16ul);
    fHost.Memory<"Free">(block);
    return block != nullptr;
  }
  bool Succeeded(KAPError* error) {
    EXPECT_TRUE(error == nullptr || error == fHost.Errors<"GetCoreError">(1));
    return error == nullptr;
  }
  bool TryNew(bool full) {
    KAPContainer* container = nullptr;
    const bool ok = Succeeded(
        full ? fHost.Containers<"NewFullContainer">(&container, nullptr, fName, fName, nullptr)
             : fHost.Containers<"NewContainer">(&container));
    EXPECT_EQ(container != nullptr, ok);
    fHost.Containers<"Release">(container);
    return ok;
  }
  bool TryReference() {
    const bool ok = fHost.Containers<"AddRef">(fContainer);
    if (ok) fHost.Containers<"Release">(fContainer);
    return ok;
  }
  bool TryInstance() {
    void* out = this;
    const bool ok = Succeeded(fHost.Containers<"NGetInstance">(&out, fContainer, fName));
    EXPECT_EQ(out != nullptr, ok);
    return ok;
  }
  bool TryMethod() {
    void* out = this;
    const bool ok = Succeeded(fHost.Containers<"GetMethod">(&out, fContainer, fName, fName, 1));
    EXPECT_EQ(out, nullptr);
    return ok;
  }

  void SetUp() override {
    fHost.Containers<"NewFullContainer">(&fContainer, this, fName, fName, nullptr);
  }
  void TearDown() override {
    fHost.StopFaults();
    fHost.Containers<"Release">(fContainer);
  }

  KAPStringAtom* fName = fHost.Atom("Name");
  KAPContainer* fContainer = nullptr;
};

TEST_F(FaultTest, TheNthCallOfAKindFails) {
  const struct {
    KAPFault kind;
    std::function<bool()> call;
  } rows[] = {{KAPFault::kAtom, [this] { return TryAtom(); }},
              {KAPFault::kError, [this] { return TryError(); }},
              {KAPFault::kBlock, [this] { return TryAlloc(); }},
              {KAPFault::kContainer, [this] { return TryNew(true); }},
              {KAPFault::kContainer, [this] { return TryNew(false); }},
              {KAPFault::kReference, [this] { return TryReference(); }},
              {KAPFault::kInstance, [this] { return TryInstance(); }},
              {KAPFault::kMethod, [this] { return TryMethod(); }}};
  for (const auto& row : rows) {
    SCOPED_TRACE(static_cast<int>(row.kind));
    for (const KAPFault kind : {row.kind, KAPFault::kAny}) {
      fHost.FailCall(kind, 2);
      EXPECT_TRUE(row.call());
      EXPECT_FALSE(fHost.Fired());
      EXPECT_FALSE(row.call());
      EXPECT_TRUE(fHost.Fired());
      EXPECT_TRUE(row.call());
      EXPECT_EQ(fHost.CallCount(row.kind), 3u);
      EXPECT_EQ(fHost.CallCount(KAPFault::kAny), 3u);

      fHost.FailFrom(kind, 2);
      EXPECT_TRUE(row.call());
      EXPECT_FALSE(row.call());
      EXPECT_FALSE(row.call());
      fHost.StopFaults();
      EXPECT_TRUE(fHost.Fired());
      EXPECT_TRUE(row.call());
    }
  }
}

TEST_F(FaultTest, OtherKindsDoNotFail) {
  fHost.FailFrom(KAPFault::kAtom, 1);
  EXPECT_FALSE(TryAtom());
  EXPECT_TRUE(TryAlloc() && TryError() && TryNew(true) && TryReference() && TryInstance());
  fHost.FailCall(KAPFault::kBlock, 1);  // the rule for atoms stays
  EXPECT_FALSE(TryAlloc());
  EXPECT_FALSE(TryAtom());
}

}  // namespace
