// SPDX-License-Identifier: MIT

// Parsing text notation, including the release of the objects; parsing a single number.

#include <charconv>
#include <cstdlib>

#include "BenchDocument.h"
#include "JsonPeers.h"
#include "posimpl/notation/TextToken.h"

namespace Bench {

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;

// ---- Documents of n values ----

void OurParse(State& state, Content content) {
  const Document& document = GetDocument(content, state.range(0));
  Parsed(document);
  for (auto _ : state) {
    const char* end = nullptr;
    const Reference object(Statics::Call<"CreateFromText">(document.fText.c_str(), &end),
                           KAPAdopt());
    DoNotOptimize(object.Handle());
  }
  SetItems(state, document.fCount);
}

// A target of 0 is none.
void PeerParse(State& state, Content content, const JsonPeer& peer, double target) {
  ParseWithPeer(state, GetDocument(content, state.range(0)), peer);
  if (target != 0) SetTarget(state, target);
}

// ---- Numbers: an iteration parses a thousand ----

template <class Read>
void ReadNumbers(State& state, Content content, Read read) {
  const Document& document = GetDocument(content, 1001);
  for (auto _ : state) {
    const char* cursor = document.fText.c_str();
    while (*cursor++ != ']') DoNotOptimize(read(cursor));
  }
  SetItems(state, document.fCount - 1);
}

void OurNumbers(State& state, Content content) {
  ReadNumbers(state, content, &NPOSObjectImpl::ReadNumberToken);
}
void FromCharsNumbers(State& state, Content content) {
  ReadNumbers(state, content, [](const char*& cursor) {
    double value = 0;
    cursor = std::from_chars(cursor, cursor + NPOSObjectImpl::kMaxNumberLength, value).ptr;
    return value;
  });
}
void StrtodNumbers(State& state, Content content) {
  ReadNumbers(state, content, [](const char*& cursor) {
    char* end = nullptr;
    const double value = std::strtod(cursor, &end);
    cursor = end;
    return value;
  });
}

}  // namespace

void RegisterBenchmarks() {
  using benchmark::RegisterBenchmark;
  constexpr std::int64_t kMillion = 1'000'000;
  const struct {
    std::string fName;
    Content fContent;
    double fTarget;
    double fTargetForMillion;
    double fBoostTarget;
  } contents[] = {{"integers", Content::kIntegers, 0.42, 0.42, 1.5},
                  {"reals", Content::kReals, 0.35, 0.35, 1.5},
                  {"strings", Content::kStrings, 1.1, 1.6, 0},
                  {"words", Content::kWords, 0.60, 0.60, 0},
                  {"records", Content::kRecords, 0.65, 0.65, 0}};
  for (const auto& content : contents) {
    const std::string title = "parse_" + content.fName + "/";
    for (const std::int64_t count :
         {std::int64_t{1'000}, std::int64_t{10'000}, std::int64_t{100'000}, kMillion}) {
      RegisterBenchmark((title + "ours").c_str(), &OurParse, content.fContent)->Arg(count);
      for (const JsonPeer& peer : JsonPeers()) {
        const std::string name = peer.fName;
        const double target = name == "boost_json" ? content.fBoostTarget
                              : name != "nlohmann" ? 0
                              : count == kMillion  ? content.fTargetForMillion
                                                   : content.fTarget;
        RegisterBenchmark((title + name).c_str(), &PeerParse, content.fContent, peer, target)
            ->Arg(count);
      }
    }
  }
  for (const auto& content : {contents[0], contents[1]}) {
    const std::string title = "token_" + content.fName + "/";
    RegisterBenchmark((title + "ours").c_str(), &OurNumbers, content.fContent);
    RegisterBenchmark((title + "from_chars").c_str(), &FromCharsNumbers, content.fContent);
    RegisterBenchmark((title + "strtod").c_str(), &StrtodNumbers, content.fContent);
  }
}

}  // namespace Bench
