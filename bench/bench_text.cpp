// Parsing text notation, including the release of the objects; parsing a single number.

#include <charconv>
#include <cstdlib>

#include "BenchDocument.h"
#include "posimpl/notation/TextToken.h"

namespace Bench {

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;

constexpr double kTarget = 0.9;

// ---- Documents of n values ----

void OurParse(State& state, Content content) {
  const Document document = NewDocument(content, state.range(0));
  Parsed(document);
  for (auto _ : state) {
    const char* end = nullptr;
    const Reference object(Statics::Call<"CreateFromText">(document.fText.c_str(), &end),
                           KAPAdopt());
    DoNotOptimize(object.Handle());
  }
  SetItems(state, document.fCount);
}

void JsonParse(State& state, Content content) {
  ParseJson(state, NewDocument(content, state.range(0)));
  SetTarget(state, kTarget);
}

// ---- Numbers: an iteration parses a thousand ----

template <class Read>
void ReadNumbers(State& state, Content content, Read read) {
  const Document document = NewDocument(content, 1001);
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
  const struct {
    std::string fName;
    Content fContent;
  } contents[] = {{"integers", Content::kIntegers},
                  {"reals", Content::kReals},
                  {"strings", Content::kStrings},
                  {"words", Content::kWords},
                  {"records", Content::kRecords}};
  for (const auto& [name, content] : contents) {
    for (const std::int64_t count : {1'000, 100'000, 1'000'000}) {
      RegisterBenchmark(("parse_" + name + "/ours").c_str(), &OurParse, content)->Arg(count);
      RegisterBenchmark(("parse_" + name + "/nlohmann").c_str(), &JsonParse, content)->Arg(count);
    }
  }
  for (const auto& [name, content] : {contents[0], contents[1]}) {
    RegisterBenchmark(("token_" + name + "/ours").c_str(), &OurNumbers, content);
    RegisterBenchmark(("token_" + name + "/from_chars").c_str(), &FromCharsNumbers, content);
    RegisterBenchmark(("token_" + name + "/strtod").c_str(), &StrtodNumbers, content);
  }
}

}  // namespace Bench
