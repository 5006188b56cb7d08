// SPDX-License-Identifier: MIT
#include <functional>
#include <optional>
#include <random>

#include "World.h"

namespace {

using namespace KAP_T_MT;

class ArrayTest : public PosTest {
 protected:
  void SetAt(unsigned long index, const Object& object) {
    Call<POSArrayInterface, "SetAt">(fArray.get(), index, object.get());
  }
  void RemoveAt(unsigned long index) { Call<POSArrayInterface, "Remove">(fArray.get(), index); }

  Object fArray = Own(Call<POSArrayInterface, "NewPOSArray">());
};

TEST_F(ArrayTest, IndicesThatDoNotFit) {
  SetAt(0, Number(1));
  for (unsigned long index :
       {1ul << 31, (1ul << 32) - 2, (1ul << 32) - 1, 1ul << 32, 1ul << 63, ~0ul}) {
    SCOPED_TRACE(index);
    SetAt(index, Number(2));
    EXPECT_EQ(TakeReport(), "Math overflow exception");
    EXPECT_EQ((Call<POSArrayInterface, "GetAt">(fArray.get(), index)), nullptr);
    RemoveAt(index);
  }
  FailBlocksAbove(1000);
  SetAt(1000, Number(2));
  StopFaults();
  EXPECT_EQ(TakeReport(), "std::bad_alloc");
  EXPECT_EQ(Show(fArray), "[1]");
}

TEST_F(ArrayTest, RandomChangesAgreeWithAVector) {
  constexpr unsigned kSeed = 20240501;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937 random(kSeed);
  std::vector<std::optional<int>> model;  // empty: a slot that was skipped
  for (int i = 0; i < 3000; ++i) {
    const std::size_t index = random() % (model.size() + 5);
    if (random() % 2 == 0) {
      RemoveAt(index);
      if (index < model.size()) model.erase(model.begin() + static_cast<std::ptrdiff_t>(index));
    } else {
      SetAt(index, Number(i));
      model.resize(std::max(model.size(), index + 1));
      model[index] = i;
    }
    std::string all;
    for (const auto& value : model) {
      all += (all.empty() ? "" : " ") + (value ? std::to_string(*value) : "~");
    }
    ASSERT_EQ(Show(fArray), "[" + all + "]");
  }
  SetAt(model.size() + 2, Number(1));
  EXPECT_EQ(Show(Own(Call<POSObjectInterface, "Clone">(fArray.get()))), Show(fArray));
}

TEST_F(ArrayTest, SkippedSlotsEqualOnlyEachOther) {
  SetAt(1, Number(1));
  const Object full = Read("[1 1]");
  EXPECT_TRUE(IsEqual(fArray, Own(Call<POSObjectInterface, "Clone">(fArray.get()))));
  EXPECT_FALSE(IsEqual(fArray, full));
  EXPECT_FALSE(IsEqual(full, fArray));
}

// ---- A release procedure that calls back ----

struct CallBack {
  const World& fWorld;
  Object fTarget;
  std::string fSeen;
};

// Looks at the container that gave up the pointer, and changes it so that its storage moves.
void LookAndChange(void* pointer) {
  auto& [world, target, seen] = *static_cast<CallBack*>(pointer);
  seen = world.Show(target);
  for (unsigned long i = 2; i < 20; ++i) {
    const Object number = world.Number(1);
    if (world.Call<POSArrayInterface, "IsPOSArray">(target.get())) {
      world.Call<POSArrayInterface, "SetAt">(target.get(), i, number.get());
    } else {
      world.Put(target, ("z" + std::to_string(i)).c_str(), number);
    }
  }
}

// What the callback sees is the finished change.
TEST_F(PosTest, ChangesSwapFirstAndReleaseLast) {
  const Object seven = Number(7);
  const auto setAt = [this](POSArray* array, POSObject* value) {
    Call<POSArrayInterface, "SetAt">(array, 0ul, value);
  };
  const auto put = [this](POSDict* dict, POSObject* value) {
    Call<POSDictInterface, "Put">(dict, Key("k").get(), value);
  };
  const auto removeAt = [this](POSArray* array, POSObject*) {
    Call<POSArrayInterface, "Remove">(array, 0ul);
  };
  const auto remove = [this](POSDict* dict, POSObject*) {
    Call<POSDictInterface, "Remove">(dict, Key("k").get());
  };
  const struct {
    const char* text;
    std::function<void(KAPContainer*, POSObject*)> begin;  // puts the pointer into its place
    std::function<void(KAPContainer*, POSObject*)> change;
    const char* seen;
  } rows[] = {{"[a b]", setAt, setAt, R"([7 "b"])"},
              {"[a b]", setAt, removeAt, R"(["b"])"},
              {"<k a l b>", put, put, R"(<k 7 l "b">)"},
              {"<k a l b>", put, remove, R"(<l "b">)"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.seen);
    CallBack callBack = {*this, Read(row.text), ""};
    row.begin(callBack.fTarget.get(), RawPointer(&callBack, &LookAndChange).get());
    row.change(callBack.fTarget.get(), seven.get());
    EXPECT_EQ(callBack.fSeen, row.seen);
    EXPECT_NE(Show(callBack.fTarget), row.seen);
  }
}

}  // namespace
