// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
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

}  // namespace
