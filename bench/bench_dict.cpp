// SPDX-License-Identifier: MIT

// Look-ups in a dictionary, and insertions.

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <unordered_set>
#include <vector>

#include "BenchHost.h"
#include "posimpl/base/SortableStringAtom.h"
#include "posimpl/base/redblack_tree.h"

namespace Bench {

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;
using Json = nlohmann::json;
using NPOSObjectImpl::SortableStringAtom;
using NPOSObjectImpl::SortableText;

enum class Keys { kShort, kLong };

// n different keys in random order: 8 characters, or 20 characters with a common prefix of 16.
std::vector<std::string> NewKeys(Keys kind, std::int64_t count) {
  const std::string prefix = kind == Keys::kShort ? "" : "measurement_set_";
  const std::size_t length = kind == Keys::kShort ? 8 : 20;
  std::mt19937 random;
  std::vector<std::string> keys;
  std::unordered_set<std::string> known;
  while (static_cast<std::int64_t>(keys.size()) < count) {
    std::string key = prefix;
    while (key.size() < length) key += "0123456789abcdefghijklmnopqrstuvwxyz"[random() % 36];
    if (known.insert(key).second) keys.push_back(std::move(key));
  }
  return keys;
}

std::vector<CKAPStringAtom> NewAtoms(Keys kind, std::int64_t count) {
  std::vector<CKAPStringAtom> atoms;
  for (const std::string& key : NewKeys(kind, count)) atoms.emplace_back(key.c_str());
  return atoms;
}

Reference NewNumber(double value) { return Made(Numbers::Call<"NewPOSNumber">(value)); }

// ---- Get: an iteration looks up each key once, in random order ----

// Calls look(key) for keys in the order of their creation.
template <class Key, class Look>
void LookUp(State& state, const std::vector<Key>& keys, Look look) {
  std::vector<std::uint32_t> order(keys.size());
  for (std::uint32_t i = 0; i < order.size(); ++i) order[i] = i;
  std::shuffle(order.begin(), order.end(), std::mt19937());
  for (auto _ : state) {
    for (const std::uint32_t index : order) look(keys[index]);
  }
  SetItems(state, static_cast<std::int64_t>(keys.size()));
}

// Every value is a separate object.
Reference NewDict(const std::vector<CKAPStringAtom>& keys) {
  Reference dict = Made(Dicts::Call<"NewPOSDict">());
  for (const CKAPStringAtom& key : keys) {
    Dicts::Call<"Put">(dict.Handle(), key.Handle(), NewNumber(1.5).Handle());
  }
  return dict;
}

void OurGet(State& state, Keys kind) {
  const std::vector<CKAPStringAtom> keys = NewAtoms(kind, state.range(0));
  const Reference dict = NewDict(keys);
  LookUp(state, keys, [&](const CKAPStringAtom& key) {
    const Reference value(Dicts::Call<"Get">(dict.Handle(), key.Handle()), KAPAdopt());
    DoNotOptimize(value.Handle());
  });
}

void ClassGet(State& state, Keys kind) {
  const std::vector<CKAPStringAtom> keys = NewAtoms(kind, state.range(0));
  const KAP_T_MT::CPOSDict dict(KAP_T_MT::CPOSObject(NewDict(keys).Detach(), KAPAdopt()), false);
  LookUp(state, keys, [&](const CKAPStringAtom& key) {
    const KAP_T_MT::CPOSObject value = dict.Get(key, true);
    DoNotOptimize(value.Handle());
  });
}

template <class Value, class Make>
std::map<std::string, Value> NewMap(const std::vector<std::string>& keys, Make make) {
  std::map<std::string, Value> map;
  for (const std::string& key : keys) map.emplace(key, make());
  return map;
}

double GetTarget(std::int64_t keys) { return keys == 1'000 ? 0.4 : keys < 1'000 ? 1 : 0.8; }

// Returns a counted reference, like ours.
void SharedGet(State& state, Keys kind) {
  using Value = std::shared_ptr<double>;
  const std::vector<std::string> keys = NewKeys(kind, state.range(0));
  const auto map = NewMap<Value>(keys, [] { return std::make_shared<double>(1.5); });
  LookUp(state, keys, [&](const std::string& key) {
    const Value value = map.find(key)->second;
    DoNotOptimize(value.get());
  });
  SetTarget(state, GetTarget(state.range(0)));
}

void PlainGet(State& state, Keys kind) {
  const std::vector<std::string> keys = NewKeys(kind, state.range(0));
  const auto map = NewMap<double>(keys, [] { return 1.5; });
  LookUp(state, keys, [&](const std::string& key) { DoNotOptimize(map.find(key)->second); });
}

// Only the reference counting, without a search.
void FloorGet(State& state, Keys) {
  std::vector<Reference> values;
  for (std::int64_t i = 0; i < state.range(0); ++i) values.push_back(NewNumber(1.5));
  const HostCalls& host = Host();
  LookUp(state, values, [&](const Reference& value) {
    DoNotOptimize(host.fAddRef(value.Handle()));
    host.fRelease(value.Handle());
  });
}

// ---- Put: n new keys into a new dictionary, including its release; and n existing keys ----

void OurInsert(State& state, Keys kind) {
  const std::vector<CKAPStringAtom> keys = NewAtoms(kind, state.range(0));
  const Reference value = NewNumber(1.5);
  for (auto _ : state) {
    const Reference dict(Dicts::Call<"NewPOSDict">(), KAPAdopt());
    for (const CKAPStringAtom& key : keys) {
      Dicts::Call<"Put">(dict.Handle(), key.Handle(), value.Handle());
    }
  }
  SetItems(state, state.range(0));
}

void JsonInsert(State& state, Keys kind) {
  const std::vector<std::string> keys = NewKeys(kind, state.range(0));
  const Json value = 1.5;
  for (auto _ : state) {
    Json object = Json::object();
    for (const std::string& key : keys) object[key] = value;
    DoNotOptimize(&object);
    benchmark::ClobberMemory();
  }
  SetItems(state, state.range(0));
  SetTarget(state, 1);
}

void OurReplace(State& state, Keys kind) {
  const std::vector<CKAPStringAtom> keys = NewAtoms(kind, state.range(0));
  const Reference dict = NewDict(keys);
  const Reference value = NewNumber(2.5);
  LookUp(state, keys, [&](const CKAPStringAtom& key) {
    Dicts::Call<"Put">(dict.Handle(), key.Handle(), value.Handle());
  });
}

void JsonReplace(State& state, Keys kind) {
  const std::vector<std::string> keys = NewKeys(kind, state.range(0));
  Json object = Json::object();
  for (const std::string& key : keys) object[key] = 1.5;
  const Json value = 2.5;
  LookUp(state, keys, [&](const std::string& key) { object[key] = value; });
  DoNotOptimize(&object);
  SetTarget(state, 1);
}

// ---- Only the tree: keys with cached prefixes, and keys compared by strcmp ----

struct PrefixEntry : NPOSImpl::redblack_node {
  explicit PrefixEntry(const CKAPStringAtom& key) : fKey(key, SortableText(key.Text()).Prefix()) {}
  const SortableStringAtom& GetKey() const noexcept { return fKey; }
  template <class Key>
  static int Compare(const Key& key, const PrefixEntry& entry) noexcept {
    return SortableStringAtom::Compare(key, entry.fKey);
  }
  SortableStringAtom fKey;
};

struct TextEntry : NPOSImpl::redblack_node {
  explicit TextEntry(const CKAPStringAtom& key) : fKey(key) {}
  const char* GetKey() const noexcept { return fKey.Text(); }
  static int Compare(const char* key, const TextEntry& entry) noexcept {
    return std::strcmp(key, entry.fKey.Text());
  }
  CKAPStringAtom fKey;
};

template <class Entry, class MakeKey>
void FindInTree(State& state, Keys kind, MakeKey makeKey) {
  const std::vector<CKAPStringAtom> keys = NewAtoms(kind, state.range(0));
  NPOSImpl::redblack_tree<Entry> tree;
  for (const CKAPStringAtom& key : keys) tree.Insert(std::make_unique<Entry>(key));
  LookUp(state, keys,
         [&](const CKAPStringAtom& key) { DoNotOptimize(tree.Find(makeKey(key.Text()))); });
}

void OurTree(State& state, Keys kind) {
  FindInTree<PrefixEntry>(state, kind, [](const char* text) { return SortableText(text); });
}
void TextTree(State& state, Keys kind) {
  FindInTree<TextEntry>(state, kind, [](const char* text) { return text; });
}

}  // namespace

void RegisterBenchmarks() {
  const struct {
    std::string fName;
    Keys fKeys;
  } kinds[] = {{"short", Keys::kShort}, {"long", Keys::kLong}};
  const struct {
    std::string fCase;
    std::string fSeries;
    void (*fMeasure)(State&, Keys);
  } rows[] = {{"get", "ours", &OurGet},
              {"get", "map_shared_ptr", &SharedGet},
              {"get", "map_double", &PlainGet},
              {"get", "floor", &FloorGet},
              {"get_by_class", "ours", &ClassGet},
              {"get_by_class", "map_shared_ptr", &SharedGet},
              {"insert", "ours", &OurInsert},
              {"insert", "nlohmann", &JsonInsert},
              {"replace", "ours", &OurReplace},
              {"replace", "nlohmann", &JsonReplace},
              {"tree", "ours", &OurTree},
              {"tree", "strcmp", &TextTree}};
  for (const auto& [name, keys] : kinds) {
    for (const auto& row : rows) {
      const std::string title = row.fCase + "_" + name + "/" + row.fSeries;
      benchmark::RegisterBenchmark(title.c_str(), row.fMeasure, keys)
          ->Arg(10)
          ->Arg(1'000)
          ->Arg(100'000);
    }
  }
}

}  // namespace Bench
