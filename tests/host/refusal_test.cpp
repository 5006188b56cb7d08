#include <functional>

#include "TestHost.h"

namespace {

using KAPHost::Call;

class RefusalTest : public HostTest {
 protected:
  ~RefusalTest() override { fHost.Strings<"DeleteStringAtom">(fName); }

  // Each refusable procedure: makes the call, undoes it if it succeeded, and says whether it did. A
  // refused call must give what its contract says.
  bool TryAtom() {
    KAPStringAtom* atom = fHost.Atom("refusable");
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
    fHost.StopRefusing();
    fHost.Containers<"Release">(fContainer);
  }

  KAPStringAtom* fName = fHost.Atom("Name");
  KAPContainer* fContainer = nullptr;
};

TEST_F(RefusalTest, TheNthCallOfAKindIsRefused) {
  const struct {
    Call kind;
    std::function<bool()> call;
  } rows[] = {{Call::kAtom, [this] { return TryAtom(); }},
              {Call::kError, [this] { return TryError(); }},
              {Call::kBlock, [this] { return TryAlloc(); }},
              {Call::kContainer, [this] { return TryNew(true); }},
              {Call::kContainer, [this] { return TryNew(false); }},
              {Call::kReference, [this] { return TryReference(); }},
              {Call::kInstance, [this] { return TryInstance(); }},
              {Call::kMethod, [this] { return TryMethod(); }}};
  for (const auto& row : rows) {
    SCOPED_TRACE(static_cast<int>(row.kind));
    for (const Call kind : {row.kind, Call::kAny}) {
      fHost.Refuse(kind, 2);
      EXPECT_TRUE(row.call());
      EXPECT_FALSE(fHost.Fired());
      EXPECT_FALSE(row.call());
      EXPECT_TRUE(fHost.Fired());
      EXPECT_TRUE(row.call());
      EXPECT_EQ(fHost.CallCount(row.kind), 3u);
      EXPECT_EQ(fHost.CallCount(Call::kAny), 3u);

      fHost.RefuseFrom(kind, 2);
      EXPECT_TRUE(row.call());
      EXPECT_FALSE(row.call());
      EXPECT_FALSE(row.call());
      fHost.StopRefusing();
      EXPECT_TRUE(fHost.Fired());
      EXPECT_TRUE(row.call());
    }
  }
}

TEST_F(RefusalTest, OtherKindsAreNotTouched) {
  fHost.RefuseFrom(Call::kAtom, 1);
  EXPECT_FALSE(TryAtom());
  EXPECT_TRUE(TryAlloc() && TryError() && TryNew(true) && TryReference() && TryInstance());
  fHost.Refuse(Call::kBlock, 1);  // the rule for atoms stays
  EXPECT_FALSE(TryAlloc());
  EXPECT_FALSE(TryAtom());
}

}  // namespace
