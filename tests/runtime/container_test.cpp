// SPDX-License-Identifier: MIT
#include "RuntimeTest.h"

// Containers, and host memory.

namespace {

using namespace KAP_T_MT;
using KAP_T_MT::KAPFault;

class ContainerTest : public BoundTest {
 protected:
  int References() const { return *fHost.Containers<"DebugGetRefCountAddr">(fContainer); }

  int fDeleted = 0;
  KAPContainer* fContainer =
      MakeContainer("Impl", &fDeleted, [](void* count) { ++*static_cast<int*>(count); });
  CKAPContainerHolder fHolder{fContainer, true};
};

TEST_F(ContainerTest, WrappersHoldOneReferenceEach) {
  KAPContainerBaseGeneric wrapper(fContainer);
  const KAPContainerBaseGeneric copy(wrapper), unchecked(fContainer, 1);
  EXPECT_EQ(References(), 4);
  const KAPContainerBaseGeneric moved(std::move(wrapper));
  EXPECT_EQ(References(), 4);
  wrapper = copy;
  wrapper = KAPContainerBaseGeneric(wrapper.Detach(), KAPAdopt());
  EXPECT_EQ(References(), 5);
  wrapper = KAPContainerBaseGeneric();
  EXPECT_TRUE(KAPContainerBaseGeneric(wrapper).IsNull());
  {
    const CKAPContainerHolder added(fContainer, false), none(nullptr, false);
    EXPECT_EQ(References(), 5);
    EXPECT_EQ(none.Handle(), nullptr);
  }
  EXPECT_EQ(References(), 4);
}

// What a maker returns is adopted, by whichever owner takes it; a plain handle gets a reference.
TEST_F(ContainerTest, WaysToTakeAHandle) {
  const BalancedScope balanced(fHost);
  const auto make = [] {
    return CKAPContainer::NewFullContainer(nullptr, CKAPStringAtom("Made"),
                                           CKAPStringAtom(EchoInterface::kName), nullptr);
  };
  const KAPContainerBaseGeneric base(make());
  const CKAPContainerHolder holder(make()), adopted(make(), KAPAdopt()), older(make(), true),
      inAnyCase(make(), false);
  const CKAPContainerHolder added(base.Handle()), none(static_cast<KAPContainer*>(nullptr));
  EXPECT_EQ(*fHost.Containers<"DebugGetRefCountAddr">(base.Handle()), 2);
  EXPECT_EQ(*fHost.Containers<"DebugGetRefCountAddr">(inAnyCase.Handle()), 1);
  EXPECT_EQ(*fHost.Containers<"DebugGetRefCountAddr">(holder.Handle()), 1);
  EXPECT_NE(CKAPContainerHolder::New().Handle(), nullptr);
  auto named = make();
  EXPECT_FALSE(named == nullptr);
  const CKAPContainerHolder moved(std::move(named));
}

// A reference that the host fails is neither kept nor released.
TEST_F(ContainerTest, ReferencesFail) {
  const KAPContainerBaseGeneric source(fContainer);
  KAPContainerBaseGeneric target(MakeContainer("Other"), KAPAdopt());
  KAPContainer* const before = target.Handle();
  const BalancedScope balanced(fHost);
  fHost.FailFrom(KAPFault::kReference, 1);
  EXPECT_EQ(Thrown([&] { KAPContainerBaseGeneric wrapper(fContainer); }), kInvalidContainer);
  EXPECT_EQ(Thrown([&] { KAPContainerBaseGeneric wrapper(source); }), kInvalidContainer);
  EXPECT_EQ(Thrown([&] { target = source; }), kInvalidContainer);
  EXPECT_EQ(target.Handle(), before);
  EXPECT_EQ(Thrown([&] { CKAPContainerHolder holder(fContainer, false); }), kInvalidContainer);
  EXPECT_EQ(Thrown([&] { KAPContainerBaseGeneric wrapper(nullptr); }), kInvalidContainer);
}

TEST_F(ContainerTest, ContainersFail) {
  fHost.FailFrom(KAPFault::kContainer, 1);
  EXPECT_EQ(Thrown([] { CKAPContainerHolder(); }), kOutOfMemory);
  EXPECT_EQ(Thrown([] { MakeContainer("Impl"); }), kOutOfMemory);
}

// A host that breaks its contract: no error, and no container.
TEST_F(ContainerTest, NeitherContainerNorError) {
  ReplaceProc<KAPContainerInterface, "NewFullContainer">(
      fHost, [](auto...) { return static_cast<KAPError*>(nullptr); });
  MoveCounter(fHost);
  EXPECT_EQ(Thrown([] { MakeContainer("Impl"); }), kInvalidContainer);
}

TEST_F(ContainerTest, CachedHolderDestroysContainersWithoutReferences) {
  { const CKAPCachedContainerHolder cached(fContainer), none(nullptr); }
  EXPECT_EQ(References(), 1);
  {
    const CKAPCachedContainerHolder cached(fContainer);
    EXPECT_EQ(cached.Handle(), fContainer);
    fHost.Containers<"DecrementWithoutDelete">(fHolder.Detach());
    EXPECT_EQ(fDeleted, 0);
  }
  EXPECT_EQ(fDeleted, 1);
}

TEST_F(ContainerTest, Instances) {
  const CKAPStringAtom primary("Impl"), second("Second"), absent("Absent");
  int other = 0;
  fHost.Containers<"RegisterInstance">(fContainer, second.Handle(), &other, nullptr);
  const struct {
    const CKAPStringAtom& name;
    void* instance;
  } rows[] = {{primary, &fDeleted}, {second, &other}, {absent, nullptr}};
  for (const auto& row : rows) {
    EXPECT_EQ(CKAPContainer::BCGetInstance(fContainer, row.name), row.instance);
    EXPECT_EQ(CKAPContainer::GetInstance(fContainer, row.name), row.instance);
  }
  EXPECT_EQ(Thrown([&] { CKAPContainer::GetInstance(nullptr, primary); }), kInvalidContainer);
  EXPECT_EQ(CKAPContainer::GetSignature(nullptr), nullptr);
  HostTap::Clear();
  CKAPContainer::GetInstance(fContainer, primary);
  EXPECT_EQ(HostTap::TakeCalls(), Log());  // read from the record
  fHost.FailCall(KAPFault::kInstance, 1);
  EXPECT_EQ(Thrown([&] { CKAPContainer::BCGetInstance(fContainer, primary); }), kOutOfMemory);
}

class MemoryTest : public BoundTest {};

TEST_F(MemoryTest, SizesThatDoNotFit) {
  constexpr std::size_t kMax = ~std::size_t{0};
  const struct {
    std::size_t count, size, header;
    bool fits;
  } rows[] = {{kMax, 1, 0, true},      {kMax, 1, 1, false},         {kMax / 8, 8, 7, true},
              {kMax / 8, 8, 8, false}, {kMax / 8 + 1, 8, 0, false}, {0, kMax, kMax, true}};
  for (const auto& row : rows) {
    EXPECT_EQ(Thrown([&] { KAPCheckedSize(row.count, row.size, row.header); }),
              row.fits ? "" : kOverflow)
        << row.count << " * " << row.size << " + " << row.header;
  }
  EXPECT_EQ(KAPCheckedSize(3, 8, 5), 29u);
  EXPECT_EQ(Thrown([] { (void)KAPNewBlock<long>(kMax / 8 + 1); }), kOverflow);
  HostTap::Clear();
  EXPECT_EQ(KAPNewBlock<long>(0), nullptr);
  EXPECT_EQ(HostTap::TakeCalls(), Log());
  fHost.FailBlocksAbove(64);
  EXPECT_NE(KAPNewBlock<long>(8), nullptr);
  EXPECT_EQ(Thrown([] { (void)KAPNewBlock<long>(9); }), kBadAlloc);
}

}  // namespace
