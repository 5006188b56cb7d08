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
    if (gCloning == Cloning::kRefused) return nullptr;
    return gCloning == Cloning::kShared ? object : New(*CountOf(object)).release();
  }
  static bool IsEqual(POSObject* object, POSObject* other) {
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

  enum class Cloning { kCopied, kShared, kRefused };

  static inline ForeignTest* gTest = nullptr;
  static inline int gLive = 0;
  static inline Cloning gCloning = Cloning::kCopied;

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

  gCloning = Cloning::kRefused;
  EXPECT_EQ(CloneOf(dict), nullptr);
  EXPECT_TRUE(AnyContains(TakeReports(), "CPOSObject::Clone failed"));
  gCloning = Cloning::kCopied;
}

}  // namespace
