// SPDX-License-Identifier: MIT
#include <functional>

#include "World.h"

// Property objects of another component: here, a count that this test implements.

namespace {

using namespace KAP_T_MT;

class ForeignTest : public PosTest {
 protected:
  static constexpr const char* kName = "TestCount";
  static constexpr int kType = 99;

  ForeignTest() {
    gTest = this;
    const auto entries = POSObjectInterface::Registration(&Clone, &IsEqual, &GetType);
    for (const auto& entry : entries) {
      Register(kName, entry.fMethodName, entry.fProcName, entry.fProc);
    }
  }
  ~ForeignTest() override {
    fAtom.reset();
    EXPECT_EQ(gLive, 0);
  }

  static Object New(int count) {
    ++gLive;
    return gTest->Foreign(kName, new int(count), [](void* instance) {
      delete static_cast<int*>(instance);
      --gLive;
    });
  }
  static int* CountOf(POSObject* object) {
    return static_cast<int*>(gTest->Containers<"GetInstance">(object, gTest->fAtom.get()));
  }

  static POSObject* Clone(POSObject* object) {
    if (gChange) gChange();
    if (gCloning == Cloning::kFails) return nullptr;
    return gCloning == Cloning::kShared ? object : New(*CountOf(object)).release();
  }
  static bool IsEqual(POSObject* object, POSObject* other) {
    if (gChange) gChange();
    const int* count = CountOf(other);
    return count && *count == *CountOf(object);
  }
  static int GetType(POSObject*) { return kType; }

  Object ArrayWith(const Object& element) const {
    Object array = Read("[1]");
    Call<POSArrayInterface, "Append">(array.get(), element.get());
    return array;
  }
  Object CloneOf(const Object& object) const {
    return Own(Call<POSObjectInterface, "Clone">(object.get()));
  }

  enum class Cloning { kCopied, kShared, kFails };

  static inline ForeignTest* gTest = nullptr;
  static inline int gLive = 0;
  static inline Cloning gCloning = Cloning::kCopied;
  static inline std::function<void()> gChange;  // runs in "Clone" and "IsEqual"

  OwnedAtom fAtom = Key(kName);
};

TEST_F(ForeignTest, AreHeldComparedAndFound) {
  const Object three = New(3);
  const Object array = ArrayWith(three);
  EXPECT_TRUE(World::IsEqual(array, ArrayWith(New(3))));
  EXPECT_FALSE(World::IsEqual(array, ArrayWith(New(4))));
  EXPECT_FALSE(World::IsEqual(array, Read("[1 3]")));
  EXPECT_FALSE(World::IsEqual(Read("[1 3]"), array));

  const Object dict = Read("<>");
  Put(dict, "f", three);
  Put(dict, "a", array);
  EXPECT_EQ(DeepGet(dict, "f"), three);
  EXPECT_EQ(DeepGet(dict, "a[1]"), three);
  EXPECT_EQ(DeepGet(dict, "f.x"), nullptr);
  EXPECT_EQ(DeepGet(dict, "a[1][0]"), nullptr);
}

TEST_F(ForeignTest, AreClonedByTheirOwnProcedure) {
  const Object dict = Read("<>");
  Put(dict, "a", ArrayWith(New(3)));
  const BalancedScope balanced(*this);

  const Object copied = CloneOf(dict);
  EXPECT_NE(DeepGet(copied, "a[1]"), DeepGet(dict, "a[1]"));
  EXPECT_EQ(*CountOf(DeepGet(copied, "a[1]").get()), 3);

  gCloning = Cloning::kShared;  // the very handle, without a reference
  const Object shared = CloneOf(dict);
  EXPECT_EQ(DeepGet(shared, "a[1]"), DeepGet(dict, "a[1]"));

  gCloning = Cloning::kFails;
  EXPECT_EQ(CloneOf(dict), nullptr);
  EXPECT_TRUE(AnyContains(TakeReports(), "CPOSObject::Clone failed"));
  gCloning = Cloning::kCopied;
}

// Against the contract of the calls: each walk continues with the current contents.
TEST_F(ForeignTest, ThatChangeWhatHoldsThem) {
  const auto fill = [this](const Object& held, int times) {
    for (int i = 0; i < times; ++i) {
      this->Call<POSArrayInterface, "Append">(held.get(), Number(i).get());
    }
  };
  const auto empty = [this](const Object& held) { this->Empty(held); };
  const struct {
    const char* why;
    bool inDict;
    std::function<void(const Object& held)> change;
  } rows[] = {
      {"an array that grows", false, [&](const Object& held) { fill(held, 100); }},
      {"an array that is emptied", false, empty},
      {"a dictionary that is emptied", true, empty},
      {"a dictionary that loses the next entry too", true,
       [this](const Object& held) {
         for (const char* key : {"a", "b"}) this->Remove(held, key);
       }},
  };
  ArrayWith(New(3));  // fills the method table that stays
  for (const auto& row : rows) {
    for (const bool isClone : {true, false}) {
      SCOPED_TRACE(std::string(row.why) + (isClone ? ", cloned" : ", compared"));
      const BalancedScope balanced(*this);
      const auto make = [&] {
        Object held = row.inDict ? Read("< b 2 c 3 >") : ArrayWith(New(3));
        if (row.inDict) Put(held, "a", New(3));
        return held;
      };
      const Object held = make();
      const Object other = make();
      int calls = 0;
      gChange = [&] {
        if (calls++ != 0) return;
        row.change(held);
        row.change(other);
      };
      if (isClone) {
        EXPECT_NE(CloneOf(held), nullptr);
      } else {
        EXPECT_TRUE(World::IsEqual(held, other));
      }
      EXPECT_EQ(calls, 1);
      gChange = nullptr;
    }
  }
}

}  // namespace
