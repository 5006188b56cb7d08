// SPDX-License-Identifier: MIT

// Writing documents to a stream and reading them, including the release of the objects.

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <vector>

#include "BenchDocument.h"
#include "JsonPeers.h"
#include "POSStreamer.h"
#include "kap/KAPStream.h"

namespace Bench {

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;
using KAP_T_MT::CKAPPositionableStream;
using KAP_T_MT::CPOSObject;
using KAP_T_MT::CPOSStreamer;

constexpr double kRealsFloorTarget = 1.2;  // ratio to the digits alone

// Ratios to nlohmann::json; 0 is none.
struct Targets {
  double fWrite;
  double fRead;
};
Targets TargetsOf(Content content) {
  switch (content) {
    case Content::kIntegers:
      return {0.9, 0.6};
    case Content::kReals:
      return {0, 0.8};
    case Content::kRecords:
      return {0.7, 0.9};
    default:
      return {1, 1};
  }
}

constexpr std::size_t kBlock = 512;  // the size of the library's writes

// The document as TypeA.
std::string StreamText(const Document& document) {
  CKAPPositionableStream stream;
  CPOSStreamer::New().Serialize(stream, CPOSObject(Parsed(document).Handle()));
  std::string text(static_cast<std::size_t>(stream.Mark()), '\0');
  stream.Rewind();
  text.resize(stream.Read(reinterpret_cast<unsigned char*>(text.data()), text.size()));
  return text;
}

void SetDone(State& state, std::int64_t values, std::size_t bytes) {
  SetItems(state, values);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

// ---- Writing ----

void OurWrite(State& state, Content content) {
  const Document& document = GetDocument(content, state.range(0));
  const CPOSObject object(Parsed(document).Handle());
  const CPOSStreamer streamer = CPOSStreamer::New();
  CKAPPositionableStream stream;
  streamer.Serialize(stream, object);
  for (auto _ : state) {
    stream.Rewind();
    streamer.Serialize(stream, object);
  }
  SetDone(state, document.fCount, static_cast<std::size_t>(stream.Mark()));
}

void JsonWrite(State& state, Content content) {
  const Document& document = GetDocument(content, state.range(0));
  const nlohmann::json value = nlohmann::json::parse(document.fJson);
  for (auto _ : state) DoNotOptimize(value.dump());
  SetDone(state, document.fCount, document.fJson.size());
  if (const double target = TargetsOf(content).fWrite; target != 0) SetTarget(state, target);
}

// Writes the same bytes in the same blocks to the same kind of stream.
void CopyFloor(State& state, Content content) {
  const Document& document = GetDocument(content, state.range(0));
  const std::string text = StreamText(document);
  CKAPPositionableStream stream;
  for (auto _ : state) {
    stream.Rewind();
    for (std::size_t at = 0; at < text.size(); at += kBlock) {
      stream.Write(reinterpret_cast<const unsigned char*>(text.data()) + at,
                   std::min(kBlock, text.size() - at));
    }
  }
  SetDone(state, document.fCount, text.size());
}

// Only the digits of the numbers.
void ToCharsFloor(State& state, Content content) {
  const Document& document = GetDocument(content, state.range(0));
  const auto numbers = nlohmann::json::parse(document.fJson).get<std::vector<double>>();
  for (auto _ : state) {
    for (const double number : numbers) {
      char digits[64];
      DoNotOptimize(std::to_chars(std::begin(digits), std::end(digits), number,
                                  std::chars_format::general, 32)
                        .ptr);
      benchmark::ClobberMemory();
    }
  }
  SetItems(state, document.fCount);
  SetTarget(state, kRealsFloorTarget);
}

// ---- Reading ----

void OurRead(State& state, Content content) {
  const Document& document = GetDocument(content, state.range(0));
  const std::string text = StreamText(document);
  const CPOSStreamer streamer = CPOSStreamer::New();
  CKAPPositionableStream stream;
  stream.Write(reinterpret_cast<const unsigned char*>(text.data()), text.size());
  for (auto _ : state) {
    stream.Rewind();
    DoNotOptimize(streamer.Deserialize(stream).Handle());
  }
  SetDone(state, document.fCount, text.size());
}

void JsonRead(State& state, Content content) {
  const Document& document = GetDocument(content, state.range(0));
  ParseWithPeer(state, document, JsonPeers().front());
  SetDone(state, document.fCount, document.fJson.size());
  SetTarget(state, TargetsOf(content).fRead);
}

// Creates and releases a container with a block for each value.
void ObjectsFloor(State& state, Content content) {
  const Document& document = GetDocument(content, state.range(0));
  std::vector<KAPContainer*> objects(static_cast<std::size_t>(document.fCount));
  const HostCalls& host = Host();
  for (auto _ : state) {
    for (KAPContainer*& object : objects) {
      host.fNewContainer(&object, host.fAlloc(16), host.fInstanceName.Handle(),
                         host.fInterfaceName.Handle(), host.fFree);
    }
    for (KAPContainer* object : objects) host.fRelease(object);
  }
  SetItems(state, document.fCount);
}

}  // namespace

void RegisterBenchmarks() {
  const struct {
    std::string fName;
    Content fContent;
  } contents[] = {{"integers", Content::kIntegers},
                  {"reals", Content::kReals},
                  {"strings", Content::kStrings},
                  {"records", Content::kRecords}};
  for (const auto& [name, content] : contents) {
    const auto add = [&name = name, content = content](const std::string& what, const char* series,
                                                       void (*measure)(State&, Content)) {
      auto* added = benchmark::RegisterBenchmark((what + "_" + name + "/" + series).c_str(),
                                                 measure, content);
      for (const std::int64_t count : {1'000, 100'000, 1'000'000}) added->Arg(count);
    };
    add("write", "ours", &OurWrite);
    add("write", "nlohmann", &JsonWrite);
    add("write", "copy", &CopyFloor);
    if (content == Content::kReals) add("write", "to_chars", &ToCharsFloor);
    add("read", "ours", &OurRead);
    add("read", "nlohmann", &JsonRead);
    add("read", "floor", &ObjectsFloor);
  }
}

}  // namespace Bench
