// SPDX-License-Identifier: MIT

// Cloning a document of n values, including its release, and comparing two equal documents.

#include <boost/json.hpp>
#include <nlohmann/json.hpp>

#include "BenchDocument.h"

namespace Bench {

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;

constexpr std::int64_t kLarge = 100'000;

nlohmann::json ParsedByNlohmann(const Document& document) {
  return nlohmann::json::parse(document.fJson);
}
boost::json::value ParsedByBoost(const Document& document) {
  return boost::json::parse(document.fJson);
}

// A target of 0 is none.
struct Targets {
  double fSmall;
  double fLarge;
};
void SetTargetOf(State& state, Targets targets) {
  const double target = state.range(0) < kLarge ? targets.fSmall : targets.fLarge;
  if (target != 0) SetTarget(state, target);
}

void OurClone(State& state) {
  const Document& document = GetDocument(Content::kRecords, state.range(0));
  const Reference original = Parsed(document);
  for (auto _ : state) {
    const Reference clone(Objects::Call<"Clone">(original.Handle()), KAPAdopt());
    DoNotOptimize(clone.Handle());
  }
  SetItems(state, document.fCount);
}

template <auto Parse>
void PeerClone(State& state, Targets targets) {
  const Document& document = GetDocument(Content::kRecords, state.range(0));
  const auto original = Parse(document);
  for (auto _ : state) {
    const auto copy = original;
    DoNotOptimize(&copy);
    benchmark::ClobberMemory();
  }
  SetItems(state, document.fCount);
  SetTargetOf(state, targets);
}

// Two documents without common values.
void OurIsEqual(State& state) {
  const Document& document = GetDocument(Content::kRecords, state.range(0));
  const Reference one = Parsed(document);
  const Reference other = Parsed(document);
  bool equal = true;
  for (auto _ : state) equal &= Objects::Call<"IsEqual">(one.Handle(), other.Handle());
  if (!equal) state.SkipWithError("not equal");
  SetItems(state, document.fCount);
}

template <auto Parse>
void PeerIsEqual(State& state, Targets targets) {
  const Document& document = GetDocument(Content::kRecords, state.range(0));
  const auto one = Parse(document);
  const auto other = Parse(document);
  bool equal = true;
  for (auto _ : state) equal &= one == other;
  if (!equal) state.SkipWithError("not equal");
  SetItems(state, document.fCount);
  SetTargetOf(state, targets);
}

}  // namespace

void RegisterBenchmarks() {
  using benchmark::RegisterBenchmark;
  for (const std::int64_t count : {std::int64_t{1'000}, kLarge}) {
    RegisterBenchmark("clone/ours", &OurClone)->Arg(count);
    RegisterBenchmark("clone/nlohmann", &PeerClone<&ParsedByNlohmann>, Targets{1, 0.6})->Arg(count);
    RegisterBenchmark("clone/boost_json", &PeerClone<&ParsedByBoost>, Targets{0, 0})->Arg(count);
    RegisterBenchmark("equal/ours", &OurIsEqual)->Arg(count);
    RegisterBenchmark("equal/nlohmann", &PeerIsEqual<&ParsedByNlohmann>, Targets{1, 1})->Arg(count);
    RegisterBenchmark("equal/boost_json", &PeerIsEqual<&ParsedByBoost>, Targets{0, 0})->Arg(count);
  }
}

}  // namespace Bench
