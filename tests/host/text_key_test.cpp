// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "atoms/TextKey.h"

using KAPHost::TextKey;

namespace {

const struct {
  const char* fName;
  std::string fBefore;
  std::string fAfter;
} kTexts[] = {{"short", "", ""},
              {"middle", "key ", ""},
              {"long, different at the end", std::string(40, 'x'), ""},
              {"long, different at the start", "", std::string(40, 'x')},
              {"long, different in the middle", std::string(40, 'x'), std::string(40, 'x')}};

// Texts that differ in a few digits fill shards and buckets evenly, whatever the seed: otherwise
// atoms would be found, but slowly.
TEST(TextKeyTest, HashesSpread) {
  constexpr unsigned kTextCount = 1 << 17;
  TextKey::DrawSeed();
  for (const auto& [name, before, after] : kTexts) {
    SCOPED_TRACE(name);
    std::vector<unsigned> shards(256);
    std::vector<unsigned> buckets(kTextCount / 8);
    std::vector<unsigned> tags(256);
    for (unsigned i = 0; i < kTextCount; ++i) {
      const std::string text = before + std::to_string(i) + after;
      const TextKey key(text.c_str());
      ++shards[key.fHash >> 24];
      ++buckets[key.fHash % buckets.size()];
      ++tags[key.fTag % tags.size()];
    }
    EXPECT_LT(*std::max_element(shards.begin(), shards.end()), 700u);  // 512 on average
    EXPECT_LT(*std::max_element(tags.begin(), tags.end()), 700u);
    EXPECT_LT(*std::max_element(buckets.begin(), buckets.end()), 35u);  // 8 on average
  }
}

std::string Hashes() {
  TextKey::DrawSeed();
  std::string hashes;
  for (const auto& [name, before, after] : kTexts) {
    hashes += std::to_string(TextKey((before + "1" + after).c_str()).fHash) + ' ';
  }
  return hashes;
}

// No document can be made of keys that collide in every process.
TEST(TextKeyTest, EachProcessHashesDifferently) {
  constexpr const char* kVariable = "KAP_TEST_HASHES";
  setenv(kVariable, Hashes().c_str(), 0);          // the first process
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // executes the program again
  EXPECT_EXIT(_exit(Hashes() == std::getenv(kVariable)), testing::ExitedWithCode(0), "");
  unsetenv(kVariable);
}

}  // namespace
