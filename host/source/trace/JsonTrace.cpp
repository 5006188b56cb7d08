// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <string_view>
#include <utility>

#include "base/Quoted.h"
#include "trace/TraceWriter.h"

namespace KAPHost {

namespace {

// The length of the UTF-8 character that a text begins with; 0 if that is not one.
std::size_t CharacterAt(std::string_view text) {
  const auto byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t size = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4) return 0;
  for (std::size_t i = 1; i < size; ++i) {
    if (byte(i) < 0x80 || byte(i) > 0xbf) return 0;
  }
  const bool isOverlong = (first == 0xe0 && byte(1) < 0xa0) || (first == 0xf0 && byte(1) < 0x90);
  const bool isBeyond = (first == 0xed && byte(1) > 0x9f) || (first == 0xf4 && byte(1) > 0x8f);
  return isOverlong || isBeyond ? 0 : size;
}

// Names and messages may hold any bytes. What is not UTF-8 is shown as in the arguments, "\x80".
std::string Json(std::string_view text) {
  std::string quoted = "\"";
  while (!text.empty()) {
    const std::size_t size = CharacterAt(text);
    const auto letter = static_cast<unsigned char>(text[0]);
    if (size == 0) {
      quoted.append("\\\\x").append(TwoDigits(letter));
    } else if (letter == '"' || letter == '\\') {
      quoted.append(1, '\\').append(1, text[0]);
    } else if (letter < 0x20) {
      quoted.append("\\u00").append(TwoDigits(letter));
    } else {
      quoted.append(text.substr(0, size));
    }
    text.remove_prefix(size == 0 ? 1 : size);
  }
  return quoted + '"';
}

constexpr std::string_view kEnd = "\n]\n";

// Trace events, one a line. An array and not an object around it: readers accept one that a crash
// has left without its end. A call is one "complete" event, written when it ends: pairs of events
// for begin and end would double the file, and the text has what a crash leaves.
class JsonTrace final : public TraceWriter {
 public:
  JsonTrace(const std::string& path, OnLost onLost) : TraceWriter(path, std::move(onLost)) {
    Start();
  }

  void Begin(const TracedCall&) override {}

  void End(const TracedCall& call) override {
    std::string text = "{\"name\": " + Json(std::string(call.fInterface) + '.' + call.fMethod) +
                       ", \"cat\": " + Json(call.fCallee) +
                       ", \"ph\": \"X\", \"ts\": " + Thousandths(call.fStart) +
                       ", \"dur\": " + Thousandths(call.fDuration) + Place(call.fThread) +
                       ", \"args\": {\"caller\": " + Json(call.fCaller) +
                       ", \"component\": " + Json(call.fCallee) +
                       ", \"depth\": " + std::to_string(call.fDepth) +
                       ", \"arguments\": " + Json(call.fArguments);
    if (!call.fResult.empty()) text += ", \"result\": " + Json(call.fResult);
    if (!call.fPlaced.empty()) text += ", \"out\": " + Json(call.fPlaced);
    if (!call.fError.empty()) text += ", \"error\": " + Json(call.fError);
    Put(text + "}}");
  }

  void Note(const std::string& text, std::chrono::nanoseconds time) override {
    Put(R"({"name": "note", "ph": "i", "s": "g", "ts": )" + Thousandths(time) + Place(0) +
        R"(, "args": {"text": )" + Json(text) + "}}");
  }

  void Finish() override {
    const std::lock_guard lock(fMutex);
    if (fFile.IsOwn()) fFile.Write(std::string(kEnd));
  }

 private:
  static std::string Place(unsigned thread) {
    return ", \"pid\": " + std::to_string(::getpid()) + ", \"tid\": " + std::to_string(thread);
  }

  // The array of a former host goes on.
  void Start() {
    constexpr off_t kEmpty = 1 + static_cast<off_t>(kEnd.size());
    const off_t before = fFile.SizeBefore();
    fIsFirst = before <= kEmpty;
    before < kEmpty ? fFile.Write("[") : fFile.RemoveLast(kEnd.size());
  }

  void Put(const std::string& event) {
    const std::lock_guard lock(fMutex);
    if (fFile.IsForked()) Start();
    fFile.Write((fIsFirst ? "\n" : ",\n") + event);
    fIsFirst = false;
  }

  bool fIsFirst = true;
};

}  // namespace

std::unique_ptr<TraceWriter> NewJsonTrace(const std::string& path, TraceWriter::OnLost onLost) {
  return std::make_unique<JsonTrace>(path, std::move(onLost));
}

}  // namespace KAPHost
