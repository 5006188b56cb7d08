#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "posimpl/base/redblack_tree.h"

namespace {

using NPOSImpl::redblack_node;
using NPOSImpl::redblack_tree;

// A key of numbers, so that the model can be compared with, that is also looked up by its digits.
struct Entry : redblack_node {
  Entry(long k, long v) : key(k), value(v) { ++gLive; }
  ~Entry() {
    --gLive;
    if (onDelete) onDelete(*this);
  }

  const long& GetKey() const noexcept { return key; }
  static int Compare(long k, const Entry& entry) noexcept {
    return k == entry.key ? 0 : k < entry.key ? -1 : 1;
  }
  static int Compare(std::string_view digits, const Entry& entry) noexcept {
    return Compare(std::stol(std::string(digits)), entry);
  }

  inline static long gLive = 0;

  const long key;
  long value;
  void (*onDelete)(const Entry&) = nullptr;
};

using Tree = redblack_tree<Entry>;
using Model = std::map<long, long>;

std::unique_ptr<Entry> NewEntry(long key, long value = 0) {
  return std::make_unique<Entry>(key, value);
}

bool IsRed(const redblack_node* node) {
  return node && node->fColour == redblack_node::Colour::kRed;
}

// The number of black nodes on every way down; -1 when a rule is broken somewhere.
int BlackHeight(const redblack_node* node, const redblack_node* parent) {
  if (!node) return 0;
  if (node->fParent != parent || (IsRed(node) && IsRed(parent))) return -1;
  const int left = BlackHeight(node->fChild[0], node);
  const int right = BlackHeight(node->fChild[1], node);
  return left < 0 || left != right ? -1 : left + !IsRed(node);
}

bool IsBalanced(const Tree& tree) {
  const redblack_node* root = tree.First();
  if (!root) return true;
  while (root->fParent) root = root->fParent;
  return !IsRed(root) && BlackHeight(root, nullptr) > 0;
}

Model Contents(const Tree& tree) {
  Model contents;
  long previous = -1;
  for (const Entry* entry = tree.First(); entry; entry = Tree::Next(entry)) {
    EXPECT_LT(previous, entry->key) << "out of order";
    previous = entry->key;
    contents[entry->key] = entry->value;
  }
  return contents;
}

class TreeTest : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(Entry::gLive, 0); }
};

// One random change or look-up, in the tree and in the model.
void Step(std::mt19937& random, long keys, Tree& tree, Model& model) {
  const long key = static_cast<long>(random() % static_cast<unsigned long>(keys));
  const long value = static_cast<long>(random());
  const auto known = model.find(key);
  const bool isKnown = known != model.end();
  switch (random() % 5) {
    case 0: {
      const auto old = tree.Insert(NewEntry(key, value));
      ASSERT_EQ(old ? old->value : -1, isKnown ? known->second : -1);
      model[key] = value;
      break;
    }
    case 1: {
      const Tree::Position position = tree.FindPosition(key);
      ASSERT_EQ(position.found != nullptr, isKnown);
      if (!isKnown) tree.InsertAt(position, NewEntry(key, value));
      model.try_emplace(key, value);
      break;
    }
    case 2:
    case 3: {
      const auto removed = tree.Remove(key);
      ASSERT_EQ(removed ? removed->value : -1, isKnown ? known->second : -1);
      model.erase(key);
      break;
    }
    default: {
      const Entry* found = std::as_const(tree).Find(std::to_string(key));
      ASSERT_EQ(found ? found->value : -1, isKnown ? known->second : -1);
    }
  }
}

TEST_F(TreeTest, AgreesWithAModel) {
  const struct {
    long keys;
    int steps;
    int checkEvery;
  } rows[] = {{3, 3000, 1}, {12, 10000, 1}, {100, 20000, 1}, {5000, 100000, 5000}};
  for (const auto& row : rows) {
    for (unsigned seed = 1; seed <= 3; ++seed) {
      SCOPED_TRACE(testing::Message() << row.keys << " keys, seed " << seed);
      std::mt19937 random(seed);
      Tree tree;
      Model model;
      for (int step = 1; step <= row.steps; ++step) {
        ASSERT_NO_FATAL_FAILURE(Step(random, row.keys, tree, model)) << "step " << step;
        if (step % row.checkEvery != 0) continue;
        ASSERT_TRUE(IsBalanced(tree)) << "step " << step;
        ASSERT_EQ(Contents(tree), model) << "step " << step;
      }
      EXPECT_EQ(tree.empty(), model.empty());
      EXPECT_EQ(Entry::gLive, static_cast<long>(model.size()));
    }
  }
}

// Every order of insertion up to seven keys, and every key removed from what comes of it; of eight
// keys a part, as many shapes come up again and again.
TEST_F(TreeTest, RemovesEveryNodeOfEveryShape) {
  for (std::size_t count = 1; count <= 8; ++count) {
    std::vector<long> order(count);
    std::iota(order.begin(), order.end(), 0);
    int number = 0;
    do {
      if (count == 8 && number++ % 7 != 0) continue;
      for (long removed = 0; removed < static_cast<long>(count); ++removed) {
        Tree tree;
        Model rest;
        for (const long key : order) {
          tree.Insert(NewEntry(key));
          if (key != removed) rest[key] = 0;
        }
        ASSERT_TRUE(IsBalanced(tree));
        ASSERT_NE(tree.Remove(removed), nullptr);
        ASSERT_TRUE(IsBalanced(tree)) << testing::PrintToString(order) << " without " << removed;
        ASSERT_EQ(Contents(tree), rest);
      }
    } while (std::next_permutation(order.begin(), order.end()));
  }
}

TEST_F(TreeTest, InsertReplacesInPlace) {
  Tree tree;
  std::array<Entry*, 20> entries;
  for (long key = 0; key < 20; ++key) {
    auto entry = NewEntry(key, 1);
    entries[static_cast<std::size_t>(key)] = entry.get();
    ASSERT_EQ(tree.Insert(std::move(entry)), nullptr);
  }
  for (std::size_t i = 0; i < entries.size(); ++i) {
    SCOPED_TRACE(i);
    Entry* before = entries[i];
    const redblack_node* parent = before->fParent;
    auto entry = NewEntry(before->key, 2);
    Entry* now = entry.get();
    const auto old = tree.Insert(std::move(entry));
    ASSERT_EQ(old.get(), before) << "the old entry is handed out, not deleted";
    entries[i] = now;
    EXPECT_EQ(tree.Find(now->key), now);
    EXPECT_EQ(now->fParent, parent);
    EXPECT_EQ(now->fColour, old->fColour);
    EXPECT_TRUE(std::equal(now->fChild, now->fChild + 2, old->fChild));
    EXPECT_EQ(Tree::Next(now), i + 1 < entries.size() ? entries[i + 1] : nullptr);
    if (i > 0) {
      EXPECT_EQ(Tree::Next(entries[i - 1]), now);
    }
    EXPECT_TRUE(IsBalanced(tree));
  }
}

TEST_F(TreeTest, FillsInOrder) {
  Tree tree;
  Model model;
  Entry* last = nullptr;
  for (long key = 0; key < 300; ++key) {
    last = tree.InsertLast(last, NewEntry(key, key));
    model[key] = key;
    ASSERT_TRUE(IsBalanced(tree)) << key;
  }
  EXPECT_EQ(Contents(tree), model);
}

TEST_F(TreeTest, MovesAndSwaps) {
  Tree first;
  first.Insert(NewEntry(1));
  Tree one(std::move(first));
  EXPECT_EQ(Contents(one), (Model{{1, 0}}));
  Tree two;
  two.Insert(NewEntry(2));
  two.Insert(NewEntry(3));
  swap(one, two);
  EXPECT_EQ(Contents(two), (Model{{1, 0}}));
  two = std::move(one);
  EXPECT_EQ(Contents(two), (Model{{2, 0}, {3, 0}}));
  EXPECT_EQ(Entry::gLive, 2) << "assignment deletes what was there";

  Tree other;
  other.Insert(two.Remove(2L));
  EXPECT_EQ(Contents(other), (Model{{2, 0}})) << "an entry may go from tree to tree";
}

// What an entry releases may lead anywhere, to other trees and to this one.
TEST_F(TreeTest, EntriesMayCallBackWhenDeleted) {
  static Tree* gTree;
  static Tree* gOther;
  static std::vector<long> gDeleted;
  Tree tree;
  Tree other;
  gTree = &tree;
  gOther = &other;
  gDeleted.clear();
  for (long key = 0; key < 50; ++key) {
    other.Insert(NewEntry(key));
    auto entry = NewEntry(key);
    entry->onDelete = [](const Entry& deleted) {
      gDeleted.push_back(deleted.key);
      EXPECT_TRUE(gTree->empty());
      EXPECT_EQ(gTree->Find(deleted.key), nullptr);
      EXPECT_NE(gOther->Remove(deleted.key), nullptr);
      gOther->Insert(NewEntry(deleted.key + 1000));
    };
    tree.Insert(std::move(entry));
  }
  tree.Clear();
  EXPECT_EQ(gDeleted.size(), 50u);
  EXPECT_TRUE(std::is_sorted(gDeleted.begin(), gDeleted.end()));
  EXPECT_EQ(other.First()->key, 1000);
  EXPECT_TRUE(IsBalanced(other));
  tree.Insert(NewEntry(7));
  EXPECT_EQ(Contents(tree), (Model{{7, 0}})) << "a cleared tree is as new";
}

TEST_F(TreeTest, ClearsAMillionEntries) {
  constexpr long kCount = 1'000'000;
  const struct {
    const char* why;
    long step;  // coprime to kCount: every key comes up once
  } rows[] = {{"ascending", 1}, {"descending", kCount - 1}, {"scattered", 618'033}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    Tree tree;
    for (long i = 0, key = 0; i < kCount; ++i, key = (key + row.step) % kCount) {
      tree.Insert(NewEntry(key));
    }
    EXPECT_EQ(Entry::gLive, kCount);
    EXPECT_TRUE(IsBalanced(tree));
    tree.Clear();
    EXPECT_EQ(Entry::gLive, 0);
  }
}

}  // namespace
