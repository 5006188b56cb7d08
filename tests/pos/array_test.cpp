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
  void Append(const Object& object) {
    Call<POSArrayInterface, "Append">(fArray.get(), object.get());
  }
  void RemoveAt(unsigned long index) { Call<POSArrayInterface, "Remove">(fArray.get(), index); }
  Object GetAt(unsigned long index) const {
    return Own(Call<POSArrayInterface, "GetAt">(fArray.get(), index));
  }

  Object fArray = Own(Call<POSArrayInterface, "NewPOSArray">());
};

// Storage grows to 4, 8, 16 and never shrinks: one block for each growth.
TEST_F(ArrayTest, Growth) {
  const Object one = Number(1);
  const auto blocks = [&](auto change) {
    CountCalls();
    change();
    const unsigned long count = CallCount(KAPHost::Call::kBlock);
    StopRefusing();
    return count;
  };
  for (unsigned int count = 1; count <= 17; ++count) {
    const bool grows = count == 1 || count == 5 || count == 9 || count == 17;
    EXPECT_EQ(blocks([&] { Append(one); }), grows ? 1u : 0u) << count;
  }
  for (int i = 0; i < 17; ++i) RemoveAt(0);
  EXPECT_EQ(blocks([&] { SetAt(31, one); }), 0u);
}

TEST_F(ArrayTest, IndicesThatDoNotFit) {
  Append(Number(1));
  for (unsigned long index :
       {1ul << 31, (1ul << 32) - 2, (1ul << 32) - 1, 1ul << 32, 1ul << 63, ~0ul}) {
    SCOPED_TRACE(index);
    SetAt(index, Number(2));
    EXPECT_EQ(TakeReport(), "Math overflow exception");
    EXPECT_EQ(GetAt(index), nullptr);
    RemoveAt(index);
  }
  RefuseBlocksAbove(1000);
  SetAt(1000, Number(2));
  StopRefusing();
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
    ASSERT_EQ((Call<POSArrayInterface, "Count">(fArray.get())), model.size());
    for (std::size_t at = 0; at < model.size(); ++at) {
      ASSERT_EQ(Show(GetAt(at)), model[at] ? std::to_string(*model[at]) : "~") << at;
    }
  }
  SetAt(model.size() + 2, Number(1));
  EXPECT_EQ(Show(Own(Call<POSObjectInterface, "Clone">(fArray.get()))), Show(fArray));
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
  for (int i = 0; i < 20; ++i) {
    const Object number = world.Number(i);
    if (world.Call<POSArrayInterface, "IsPOSArray">(target.get())) {
      world.Call<POSArrayInterface, "Append">(target.get(), number.get());
    } else {
      world.Put(target, ("z" + std::to_string(i)).c_str(), number);
    }
  }
}

// What the callback sees is the finished change.
TEST_F(PosTest, ChangesSwapFirstAndReleaseLast) {
  using Change = void (*)(const World& world, const Object& target, const Object& value);
  const Change setAt = [](const World& world, const Object& target, const Object& value) {
    world.Call<POSArrayInterface, "SetAt">(target.get(), 0ul, value.get());
  };
  const Change removeAt = [](const World& world, const Object& target, const Object&) {
    world.Call<POSArrayInterface, "Remove">(target.get(), 0ul);
  };
  const Change put = [](const World& world, const Object& target, const Object& value) {
    world.Put(target, "k", value);
  };
  const Change remove = [](const World& world, const Object& target, const Object&) {
    world.Remove(target, "k");
  };
  const struct {
    const char* why;
    const char* text;
    Change begin;  // puts the pointer into its place
    Change change;
    const char* seen;
  } rows[] = {{"SetAt", "[a b]", setAt, setAt, R"([7 "b"])"},
              {"Remove from an array", "[a b]", setAt, removeAt, R"(["b"])"},
              {"Put", "<k a l b>", put, put, R"(<k 7 l "b">)"},
              {"Remove from a dictionary", "<k a l b>", put, remove, R"(<l "b">)"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    CallBack callBack = {*this, Read(row.text), ""};
    row.begin(*this, callBack.fTarget, RawPointer(&callBack, &LookAndChange));
    row.change(*this, callBack.fTarget, Number(7));
    EXPECT_EQ(callBack.fSeen, row.seen);
    EXPECT_NE(Show(callBack.fTarget).find("19"), std::string::npos);
  }
}

}  // namespace
