// SPDX-License-Identifier: MIT
#include <map>
#include <random>

#include "World.h"

namespace {

using namespace KAP_T_MT;

TEST_F(PosTest, DictIterators) {
  const Object dict = Read("<>");
  const Object iterator = Own(Call<POSDictIteratorInterface, "NewPOSDictIterator">(dict.get()));
  const auto begin = [&] { Call<POSDictIteratorInterface, "Begin">(iterator.get()); };
  const auto next = [&] { Call<POSDictIteratorInterface, "Next">(iterator.get()); };
  const auto isDone = [&] { return Call<POSDictIteratorInterface, "IsDone">(iterator.get()); };
  const auto key = [&] { return Call<POSDictIteratorInterface, "CurKey">(iterator.get()); };
  EXPECT_TRUE(isDone());
  Put(dict, "b", Number(2));
  Put(dict, "a", Number(1));
  begin();
  EXPECT_STREQ(key(), "a");
  for (int i = 0; i < 5; ++i) next();
  EXPECT_TRUE(isDone());
  EXPECT_EQ(key(), nullptr);
  EXPECT_NE(TakeReport(), "");
  begin();
  next();
  EXPECT_STREQ(key(), "b");
}

TEST_F(PosTest, DictCloneSharesScalarsOnly) {
  const Object dict = Read("< a [1 2] n 5 >");
  const Object clone = Own(Call<POSObjectInterface, "Clone">(dict.get()));
  EXPECT_EQ(Get(clone, "n"), Get(dict, "n"));
  Call<POSArrayInterface, "Remove">(Get(clone, "a").get(), 0ul);
  Put(clone, "b", Number(1));
  EXPECT_EQ(Show(dict), "<a [1 2] n 5>");
  EXPECT_EQ(Show(clone), "<a [2] b 1 n 5>");
}

TEST_F(PosTest, RandomChangesAgreeWithAMap) {
  constexpr unsigned kSeed = 20240502;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937 random(kSeed);
  // Few characters and common beginnings, so that keys meet again and differ early, around the end
  // of the prefix that each entry holds (32 bytes), soon after it and late.
  const auto randomKey = [&] {
    static constexpr std::size_t kBeginnings[] = {0, 29, 30, 46, 200};
    std::string key(kBeginnings[random() % 5], 'p');
    for (auto n = random() % 6; n > 0; --n) key += "ab\x01\xff"[random() % 4];
    return key;
  };
  const Object dict = Read("<>");
  std::map<std::string, int> model;
  for (int i = 0; i < 20000; ++i) {
    const std::string key = randomKey();
    // Grows and shrinks by turns, down to nothing.
    if (random() % 100 < (i / 2000 % 2 == 0 ? 80u : 5u)) {
      Put(dict, key.c_str(), Number(i));
      model[key] = i;
    } else {
      const std::string gone = model.empty() ? key
                               : model.lower_bound(key) != model.end()
                                   ? model.lower_bound(key)->first
                                   : model.begin()->first;
      Remove(dict, gone.c_str());
      model.erase(gone);
    }
    const auto found = model.find(key);
    ASSERT_EQ(Show(Get(dict, key.c_str())),
              found == model.end() ? "~" : std::to_string(found->second));
    if (i % 50 != 0) continue;
    std::string all;
    for (const auto& [k, value] : model) {
      all += (all.empty() ? "" : " ") + (k.empty() ? "()" : k) + " " + std::to_string(value);
    }
    ASSERT_EQ(Show(dict), "<" + all + ">");
    const Object more = Own(Call<POSObjectInterface, "Clone">(dict.get()));
    const std::string another = randomKey();
    if (!model.contains(another)) Put(more, another.c_str(), Number(-1));
    ASSERT_TRUE(IsEqual(dict, more));  // equals what holds more, but not the other way round
    ASSERT_EQ(IsEqual(more, dict), model.contains(another));
  }
}

}  // namespace
