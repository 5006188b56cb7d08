#include <map>
#include <random>

#include "World.h"

namespace {

using namespace KAP_T_MT;

class DictTest : public PosTest {
 protected:
  std::vector<std::string> Keys() const {
    std::vector<std::string> keys;
    const Object iterator = NewIterator();
    for (; !Call<POSDictIteratorInterface, "IsDone">(iterator.get());
         Call<POSDictIteratorInterface, "Next">(iterator.get())) {
      keys.emplace_back(Call<POSDictIteratorInterface, "CurKey">(iterator.get()));
    }
    return keys;
  }
  Object NewIterator() const {
    return Own(Call<POSDictIteratorInterface, "NewPOSDictIterator">(fDict.get()));
  }

  Object fDict = Own(Call<POSDictInterface, "NewPOSDict">());
};

TEST_F(DictTest, ReplacedValueKeepsTheKey) {
  Put(fDict, "k", Number(1));
  const BalancedScope balanced(*this);
  Put(fDict, "k", Number(2));
  EXPECT_EQ(Show(fDict), "<k 2>");
  Remove(fDict, "absent");
}

TEST_F(DictTest, Iterators) {
  const Object early = NewIterator();
  const auto isDone = [](const World& world, const Object& iterator) {
    return world.Call<POSDictIteratorInterface, "IsDone">(iterator.get());
  };
  EXPECT_TRUE(isDone(*this, early));
  Put(fDict, "b", Number(2));
  Put(fDict, "a", Number(1));
  Call<POSDictIteratorInterface, "Begin">(early.get());
  EXPECT_STREQ((Call<POSDictIteratorInterface, "CurKey">(early.get())), "a");

  const Object iterator = NewIterator();
  for (int i = 0; i < 5; ++i) Call<POSDictIteratorInterface, "Next">(iterator.get());
  EXPECT_TRUE(isDone(*this, iterator));
  EXPECT_EQ((Call<POSDictIteratorInterface, "CurKey">(iterator.get())), nullptr);
  EXPECT_NE(TakeReport(), "");
  Call<POSDictIteratorInterface, "Begin">(iterator.get());
  EXPECT_STREQ((Call<POSDictIteratorInterface, "CurKey">(iterator.get())), "a");
  Call<POSDictIteratorInterface, "Next">(iterator.get());
  EXPECT_STREQ((Call<POSDictIteratorInterface, "CurKey">(iterator.get())), "b");
}

TEST_F(DictTest, CloneSharesScalarsOnly) {
  const Object dict = Read("< a [1 2] n 5 >");
  const Object clone = Own(Call<POSObjectInterface, "Clone">(dict.get()));
  EXPECT_EQ(Get(clone, "n"), Get(dict, "n"));
  Call<POSArrayInterface, "Remove">(Get(clone, "a").get(), 0ul);
  Put(clone, "b", Number(1));
  EXPECT_EQ(Show(dict), "<a [1 2] n 5>");
  EXPECT_EQ(Show(clone), "<a [2] b 1 n 5>");
}

TEST_F(DictTest, RandomChangesAgreeWithAMap) {
  constexpr unsigned kSeed = 20240502;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937 random(kSeed);
  // Few characters and common beginnings, so that keys meet again and differ early, around 16 bytes
  // and late.
  const auto randomKey = [&] {
    static constexpr std::size_t kBeginnings[] = {0, 13, 14, 200};
    std::string key(kBeginnings[random() % 4], 'p');
    for (auto n = random() % 6; n > 0; --n) key += "ab\x01\xff"[random() % 4];
    return key;
  };
  std::map<std::string, int> model;
  for (int i = 0; i < 20000; ++i) {
    const std::string key = randomKey();
    // Grows and shrinks by turns, down to nothing.
    if (random() % 100 < (i / 2000 % 2 == 0 ? 80u : 5u)) {
      Put(fDict, key.c_str(), Number(i));
      model[key] = i;
    } else {
      const std::string gone = model.empty() ? key
                               : model.lower_bound(key) != model.end()
                                   ? model.lower_bound(key)->first
                                   : model.begin()->first;
      Remove(fDict, gone.c_str());
      model.erase(gone);
    }
    const auto found = model.find(key);
    ASSERT_EQ(Show(Get(fDict, key.c_str())),
              found == model.end() ? "~" : std::to_string(found->second));
    if (i % 50 != 0) continue;
    std::vector<std::string> keys;
    for (const auto& entry : model) keys.push_back(entry.first);
    ASSERT_EQ(Keys(), keys);
  }
}

}  // namespace
