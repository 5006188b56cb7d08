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
    Hold(array, element);
    return array;
  }
  // Puts it under "a", or at the end.
  void Hold(const Object& container, const Object& held) const {
    if (Call<POSArrayInterface, "IsPOSArray">(container.get())) {
      Call<POSArrayInterface, "Append">(container.get(), held.get());
    } else {
      Put(container, "a", held);
    }
  }
  // What the path leads to; the dictionary itself for the empty path.
  Object At(const Object& dict, const char* path) const {
    if (*path) return DeepGet(dict, path);
    Containers<"AddRef">(dict.get());
    return Own(dict.get());
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
  const auto around = [&](const char* before, const char* after) {
    Object outer = ArrayWith(New(3));
    for (const char* text : {before, after}) Hold(outer, Read(text));
    return outer;
  };
  EXPECT_TRUE(World::IsEqual(around("< b 1 >", "[2]"), around("< b 1 >", "[2]")));
  EXPECT_FALSE(World::IsEqual(around("< b 1 >", "[2]"), around("< b 1 >", "[3]")));
  EXPECT_FALSE(World::IsEqual(around("< b 1 >", "[2]"), around("< b 2 >", "[2]")));

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

// Against the contract of the calls: each walk continues with the current contents, and what it
// walks lives until it ends.
TEST_F(ForeignTest, ThatChangeWhatHoldsThem) {
  const auto empty = [this](const char* path) {
    return [=, this](const Object& root) { Empty(At(root, path)); };
  };
  const auto grow = [this](const Object& root) {
    const Object array = At(root, "r");
    for (int i = 0; i < 3; ++i) {
      this->Call<POSArrayInterface, "Append">(array.get(), Number(i).get());
    }
  };
  const auto removeAB = [this](const Object& root) {
    for (const char* key : {"a", "b"}) this->Remove(root, key);
  };
  const struct {
    const char* why;
    const char* text;
    const char* holder;  // the path of what holds the object of another component
    std::function<void(const Object& root)> change;
    const char* cloned;  // the clone, with that object as "?"
  } rows[] = {
      {"an array grows", "< r [] >", "r", grow, "<r [? 0 1 2]>"},
      {"an array is emptied", "< r [1 2] >", "r", empty("r"), "<r [1 2 ?]>"},
      {"a dictionary is emptied", "< b 2 c 3 >", "", empty(""), "<a ?>"},
      {"the next entry goes too", "< b 2 c 3 >", "", removeAB, "<a ? c 3>"},
      {"the holder goes", "< a [] b 2 c 3 >", "a", removeAB, "<a [?] c 3>"},
      {"the holder's holder goes", "< a [1 < >] b 2 c 3 >", "a[1]", removeAB, "<a [1 <a ?>] c 3>"},
      {"the array around it", "< a < x [[] 1] y 2 > b 3 >", "a.x[0]", empty("a.x"),
       "<a <x [[?]] y 2> b 3>"},
      {"the dictionary around it", "< a < x [[] 1] y 2 > b 3 >", "a.x[0]", empty("a"),
       "<a <x [[?] 1]> b 3>"},
      {"all around it, and another object", "< a < x [[] 1] y < > > b 3 >", "a.x[0]", empty(""),
       "<a <x [[?] 1] y <>>>"},
  };
  ArrayWith(New(3));  // fills the method table that stays
  for (const auto& row : rows) {
    for (const bool isClone : {true, false}) {
      SCOPED_TRACE(std::string(row.why) + (isClone ? ", cloned" : ", compared"));
      const BalancedScope balanced(*this);
      const auto make = [&] {
        Object root = Read(row.text);
        Hold(At(root, row.holder), New(3));
        return root;
      };
      const Object root = make();
      const Object other = make();
      int calls = 0;
      gChange = [&] {
        if (calls++ != 0) return;
        row.change(root);
        row.change(other);
      };
      if (isClone) {
        EXPECT_EQ(Show(CloneOf(root)), row.cloned);
        EXPECT_EQ(TakeReports().size(), 1u) << "Show reports the object that it does not know";
      } else {
        EXPECT_TRUE(World::IsEqual(root, other));
      }
      EXPECT_EQ(calls, 1);
      gChange = nullptr;
    }
  }
}

}  // namespace
