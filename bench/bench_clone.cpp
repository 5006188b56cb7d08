// Cloning a document of n values, including its release, and comparing two equal documents.

#include "BenchDocument.h"

namespace Bench {

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;
using Json = nlohmann::json;

void OurClone(State& state) {
  const Document document = NewDocument(Content::kRecords, state.range(0));
  const Reference original = Parsed(document);
  for (auto _ : state) {
    const Reference clone(Objects::Call<"Clone">(original.Handle()), KAPAdopt());
    DoNotOptimize(clone.Handle());
  }
  SetItems(state, document.fCount);
}

void JsonClone(State& state) {
  const Document document = NewDocument(Content::kRecords, state.range(0));
  const Json original = Json::parse(document.fJson);
  for (auto _ : state) {
    const Json copy = original;
    DoNotOptimize(&copy);
    benchmark::ClobberMemory();
  }
  SetItems(state, document.fCount);
  SetTarget(state, 1);
}

// Two documents without common values.
void OurIsEqual(State& state) {
  const Document document = NewDocument(Content::kRecords, state.range(0));
  const Reference one = Parsed(document);
  const Reference other = Parsed(document);
  bool equal = true;
  for (auto _ : state) equal &= Objects::Call<"IsEqual">(one.Handle(), other.Handle());
  if (!equal) state.SkipWithError("not equal");
  SetItems(state, document.fCount);
}

void JsonIsEqual(State& state) {
  const Document document = NewDocument(Content::kRecords, state.range(0));
  const Json one = Json::parse(document.fJson);
  const Json other = Json::parse(document.fJson);
  bool equal = true;
  for (auto _ : state) equal &= one == other;
  if (!equal) state.SkipWithError("not equal");
  SetItems(state, document.fCount);
  SetTarget(state, 1);
}

}  // namespace

void RegisterBenchmarks() {
  using benchmark::RegisterBenchmark;
  for (const std::int64_t count : {1'000, 100'000}) {
    RegisterBenchmark("clone/ours", &OurClone)->Arg(count);
    RegisterBenchmark("clone/nlohmann", &JsonClone)->Arg(count);
    RegisterBenchmark("equal/ours", &OurIsEqual)->Arg(count);
    RegisterBenchmark("equal/nlohmann", &JsonIsEqual)->Arg(count);
  }
}

}  // namespace Bench
