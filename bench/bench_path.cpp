// SPDX-License-Identifier: MIT

// A value four levels down, by its path. The path is a text or an atom, without preparation.

#include <rapidjson/document.h>
#include <rapidjson/pointer.h>

#include <nlohmann/json.hpp>

#include "BenchHost.h"

namespace Bench {

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;

constexpr const char* kPath = "catalogue.items[2].title";
constexpr const char* kPointer = "/catalogue/items/2/title";

// Dictionaries of n members; the wanted one is in the middle.
nlohmann::json NewDict(const std::string& key, const nlohmann::json& value, std::int64_t count) {
  nlohmann::json dict = {{key, value}};
  for (std::int64_t i = 1; i < count; ++i) {
    dict[(i % 2 == 0 ? "a" : "u") + std::to_string(i)] = i;
  }
  return dict;
}

nlohmann::json NewJson(std::int64_t count) {
  const nlohmann::json item = NewDict("title", 1.5, count);
  return NewDict("catalogue", NewDict("items", {item, item, item, item}, count), count);
}

Reference NewObject(const nlohmann::json& value) {
  if (value.is_number()) return Made(Numbers::Call<"NewPOSNumber">(value.get<double>()));
  if (value.is_array()) {
    Reference array = Made(Arrays::Call<"NewPOSArray">());
    for (const auto& element : value) {
      Arrays::Call<"Append">(array.Handle(), NewObject(element).Handle());
    }
    return array;
  }
  Reference dict = Made(Dicts::Call<"NewPOSDict">());
  for (const auto& [key, member] : value.items()) {
    const CKAPStringAtom atom(key.c_str());
    Dicts::Call<"Put">(dict.Handle(), atom.Handle(), NewObject(member).Handle());
  }
  return dict;
}

void OurPath(State& state) {
  const Reference dict = NewObject(NewJson(state.range(0)));
  const CKAPStringAtom path(kPath);
  Made(Dicts::Call<"DeepGet">(dict.Handle(), path.Handle()));
  for (auto _ : state) {
    const Reference value(Dicts::Call<"DeepGet">(dict.Handle(), path.Handle()), KAPAdopt());
    DoNotOptimize(value.Handle());
  }
  SetItems(state);
}

void NlohmannPath(State& state) {
  const nlohmann::json json = NewJson(state.range(0));
  const std::string path = kPointer;
  for (auto _ : state) {
    DoNotOptimize(json.at(nlohmann::json::json_pointer(path)));
  }
  SetItems(state);
}

rapidjson::Document NewDocument(std::int64_t count) {
  rapidjson::Document document;
  document.Parse(NewJson(count).dump().c_str());
  return document;
}

void RapidPath(State& state) {
  const rapidjson::Document document = NewDocument(state.range(0));
  const std::string path = kPointer;
  for (auto _ : state) {
    DoNotOptimize(rapidjson::Pointer(path.data(), path.size()).Get(document));
  }
  SetItems(state);
  SetTarget(state, 1);
}

// For information: a pointer that is parsed only once.
void RapidPreparedPath(State& state) {
  const rapidjson::Document document = NewDocument(state.range(0));
  const rapidjson::Pointer pointer(kPointer);
  for (auto _ : state) DoNotOptimize(pointer.Get(document));
  SetItems(state);
}

}  // namespace

void RegisterBenchmarks() {
  using benchmark::RegisterBenchmark;
  for (const std::int64_t count : {4, 16, 256}) {
    RegisterBenchmark("deep_path/ours", &OurPath)->Arg(count);
    RegisterBenchmark("deep_path/rapidjson", &RapidPath)->Arg(count);
    RegisterBenchmark("deep_path/rapidjson_prepared", &RapidPreparedPath)->Arg(count);
    RegisterBenchmark("deep_path/nlohmann", &NlohmannPath)->Arg(count);
  }
}

}  // namespace Bench
