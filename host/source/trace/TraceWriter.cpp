// SPDX-License-Identifier: MIT
#include "trace/TraceWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <system_error>

namespace KAPHost {

namespace {

template <class... Args>
std::string Printed(const char* format, Args... args) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), format, args...);
  return text.data();
}

double Microseconds(std::chrono::nanoseconds time) {
  return std::chrono::duration<double, std::micro>(time).count();
}

// A line for each call, one inside the other:
//
//      0.152 ms  1  program > KAPUtils: POSArrayInterface.GetAt(array, 0) {
//      0.154 ms  1    KAPUtils > host: KAPContainerInterface.AddRef(number) = true (0.4 us)
//      0.155 ms  1  } GetAt = number (3.1 us)
//
// A call is written when it begins, and its result follows on the same line unless another call
// was written in between. So the last line of a crash shows the call that crashed.
class TextWriter : public TraceWriter {
 public:
  TextWriter(int file, const std::string& path) : TraceWriter(file, path) {}

  void Begin(const TracedCall& call) override {
    const std::lock_guard lock(fMutex);
    EndLine(call.fThread);
    Write(Start(call, call.fStart) + call.fCaller + " > " + call.fCallee + ": " + call.fInterface +
          '.' + call.fMethod + '(' + call.fArguments + ')');
    fOpen = call.fKey;
    fOpenThread = call.fThread;
  }

  void End(const TracedCall& call) override {
    const std::lock_guard lock(fMutex);
    std::string text;
    if (fOpen != call.fKey) {
      EndLine(0);
      text = Start(call, call.fStart + call.fDuration) + "} " + call.fMethod;
    }
    fOpen = nullptr;
    if (!call.fResult.empty()) text += " = " + call.fResult;
    if (!call.fPlaced.empty()) text += " -> " + call.fPlaced;
    Write(text + Printed(" (%.1f us)\n", Microseconds(call.fDuration)));
  }

  void Note(const std::string& text) override {
    const std::lock_guard lock(fMutex);
    EndLine(0);
    Write("# " + text + '\n');
  }

  void Finish() override {
    const std::lock_guard lock(fMutex);
    EndLine(0);
  }

 private:
  static std::string Start(const TracedCall& call, std::chrono::nanoseconds time) {
    return Printed("%10.3f ms  %u  ", Microseconds(time) / 1000, call.fThread) +
           std::string(2 * std::size_t{call.fDepth}, ' ');
  }

  // A line that another thread interrupts goes on below, as "}".
  void EndLine(unsigned thread) {
    if (fOpen) Write(thread == fOpenThread ? " {\n" : " { ...\n");
    fOpen = nullptr;
  }

  const void* fOpen = nullptr;  // the call whose line has no end yet
  unsigned fOpenThread = 0;
};

std::string Json(const std::string& text) {
  std::string quoted = "\"";
  for (const char letter : text) {
    if (letter == '"' || letter == '\\') {
      quoted.append(1, '\\').append(1, letter);
    } else if (static_cast<unsigned char>(letter) < 0x20) {
      quoted += Printed("\\u%04x", unsigned{static_cast<unsigned char>(letter)});
    } else {
      quoted += letter;
    }
  }
  return quoted + '"';
}

// Trace events, one a line. An array and not an object around it: readers accept one that a crash
// has left without its end. A call is one "complete" event, written when it ends.
class JsonWriter : public TraceWriter {
 public:
  JsonWriter(int file, const std::string& path) : TraceWriter(file, path) { Write("["); }

  void Begin(const TracedCall&) override {}

  void End(const TracedCall& call) override {
    std::string text = "{\"name\": " + Json(std::string(call.fInterface) + '.' + call.fMethod) +
                       ", \"cat\": " + Json(call.fCallee) + ", \"ph\": \"X\"" +
                       Printed(", \"ts\": %.3f, \"dur\": %.3f", Microseconds(call.fStart),
                               Microseconds(call.fDuration)) +
                       Place(call.fThread) + ", \"args\": {\"caller\": " + Json(call.fCaller) +
                       ", \"component\": " + Json(call.fCallee) +
                       ", \"depth\": " + std::to_string(call.fDepth) +
                       ", \"arguments\": " + Json(call.fArguments);
    if (!call.fResult.empty()) text += ", \"result\": " + Json(call.fResult);
    if (!call.fPlaced.empty()) text += ", \"out\": " + Json(call.fPlaced);
    if (!call.fError.empty()) text += ", \"error\": " + Json(call.fError);
    Put(text + "}}");
  }

  void Note(const std::string& text) override {
    Put(R"({"name": "note", "ph": "i", "s": "g", "ts": 0)" + Place(0) + R"(, "args": {"text": )" +
        Json(text) + "}}");
  }

  void Finish() override { Write("\n]\n"); }

 private:
  static std::string Place(unsigned thread) {
    return ", \"pid\": " + std::to_string(::getpid()) + ", \"tid\": " + std::to_string(thread);
  }

  void Put(const std::string& event) {
    const std::lock_guard lock(fMutex);
    Write((fIsFirst ? "\n" : ",\n") + event);
    fIsFirst = false;
  }

  bool fIsFirst = true;
};

}  // namespace

std::unique_ptr<TraceWriter> TraceWriter::Open(const std::string& path) {
  const int file = path == "-"
                       ? ::dup(STDERR_FILENO)
                       : ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) {
    throw std::runtime_error("cannot write \"" + path +
                             "\": " + std::generic_category().message(errno));
  }
  if (path.ends_with(".json")) return std::make_unique<JsonWriter>(file, path);
  return std::make_unique<TextWriter>(file, path);
}

TraceWriter::~TraceWriter() { ::close(fFile); }

// The first failure is reported, and the rest of the trace is dropped.
void TraceWriter::Write(const std::string& text) noexcept {
  std::size_t written = 0;
  while (!fIsLost && written < text.size()) {
    const ssize_t size = ::write(fFile, text.data() + written, text.size() - written);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) {
      fIsLost = true;
      std::cerr << "KAP host: cannot write \"" << fPath
                << "\": " << std::generic_category().message(errno) << "; the trace ends here\n";
    } else {
      written += static_cast<std::size_t>(size);
    }
  }
}

}  // namespace KAPHost
