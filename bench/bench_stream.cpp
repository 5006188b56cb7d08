// Writing documents to a stream and reading them, including the release of the objects.

#include <glib.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <vector>

#include "BenchDocument.h"
#include "POSStreamer.h"
#include "kap/KAPStream.h"

namespace Bench {

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;
using KAP_T_MT::CKAPPositionableStream;
using KAP_T_MT::CPOSObject;
using KAP_T_MT::CPOSStreamer;

// The targets for writing and reading a value, as ratios to nlohmann::json, and for the floor of
// reals.
constexpr double kWriteTarget = 1;
constexpr double kReadTarget = 0.9;
constexpr double kRealsFloorTarget = 1.2;

constexpr std::size_t kBlock = 512;  // the size of the library's writes

struct GVariantDeleter {
  void operator()(GVariant* value) const { g_variant_unref(value); }
};
using GVariantOwner = std::unique_ptr<GVariant, GVariantDeleter>;

void AppendGVariantText(const nlohmann::json& value, std::string& text) {
  if (value.is_array()) {
    text += '[';
    for (const auto& element : value)
      AppendGVariantText(element, text += text.back() == '[' ? "" : ", ");
    text += ']';
  } else if (value.is_object()) {
    text += '{';
    for (const auto& [key, member] : value.items()) {
      text += (text.back() == '{' ? "'" : ", '") + key + "': <";
      AppendGVariantText(member, text);
      text += '>';
    }
    text += '}';
  } else if (value.is_string()) {
    text += '\'' + value.get_ref<const std::string&>() + '\'';
  } else {
    text += value.dump();
  }
}

GVariantOwner ParseGVariant(const std::string& text) {
  return GVariantOwner(
      g_variant_parse(nullptr, text.data(), text.data() + text.size(), nullptr, nullptr));
}

std::string GVariantText(const Document& document) {
  std::string text;
  AppendGVariantText(nlohmann::json::parse(document.fJson), text);
  return text;
}

// The document as TypeA.
std::string StreamText(const Document& document) {
  CKAPPositionableStream stream;
  CPOSStreamer().Serialize(stream, CPOSObject(Parsed(document).Handle()));
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
  const Document document = NewDocument(content, state.range(0));
  const CPOSObject object(Parsed(document).Handle());
  const CPOSStreamer streamer;
  CKAPPositionableStream stream;
  streamer.Serialize(stream, object);
  for (auto _ : state) {
    stream.Rewind();
    streamer.Serialize(stream, object);
  }
  SetDone(state, document.fCount, static_cast<std::size_t>(stream.Mark()));
}

void JsonWrite(State& state, Content content) {
  const Document document = NewDocument(content, state.range(0));
  const nlohmann::json value = nlohmann::json::parse(document.fJson);
  for (auto _ : state) DoNotOptimize(value.dump());
  SetDone(state, document.fCount, document.fJson.size());
  if (content != Content::kReals) SetTarget(state, kWriteTarget);
}

void GVariantWrite(State& state, Content content) {
  const Document document = NewDocument(content, state.range(0));
  const std::string text = GVariantText(document);
  const GVariantOwner value = ParseGVariant(text);
  for (auto _ : state) {
    const std::unique_ptr<gchar, decltype(&g_free)> printed(g_variant_print(value.get(), FALSE),
                                                            &g_free);
    DoNotOptimize(printed.get());
  }
  SetDone(state, document.fCount, text.size());
}

// Writes the same bytes in the same blocks to the same kind of stream.
void CopyFloor(State& state, Content content) {
  const Document document = NewDocument(content, state.range(0));
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
  const Document document = NewDocument(content, state.range(0));
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
  const Document document = NewDocument(content, state.range(0));
  const std::string text = StreamText(document);
  const CPOSStreamer streamer;
  CKAPPositionableStream stream;
  stream.Write(reinterpret_cast<const unsigned char*>(text.data()), text.size());
  for (auto _ : state) {
    stream.Rewind();
    DoNotOptimize(streamer.Deserialize(stream).Handle());
  }
  SetDone(state, document.fCount, text.size());
}

void JsonRead(State& state, Content content) {
  const Document document = NewDocument(content, state.range(0));
  ParseJson(state, document);
  SetDone(state, document.fCount, document.fJson.size());
  SetTarget(state, kReadTarget);
}

void GVariantRead(State& state, Content content) {
  const Document document = NewDocument(content, state.range(0));
  const std::string text = GVariantText(document);
  for (auto _ : state) DoNotOptimize(ParseGVariant(text).get());
  SetDone(state, document.fCount, text.size());
}

// Creates and releases a container with a block for each value.
void ObjectsFloor(State& state, Content content) {
  const Document document = NewDocument(content, state.range(0));
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
    add("write", "gvariant", &GVariantWrite);
    add("write", "copy", &CopyFloor);
    if (content == Content::kReals) add("write", "to_chars", &ToCharsFloor);
    add("read", "ours", &OurRead);
    add("read", "nlohmann", &JsonRead);
    add("read", "gvariant", &GVariantRead);
    add("read", "floor", &ObjectsFloor);
  }
}

}  // namespace Bench
