// SPDX-License-Identifier: MIT
#include <algorithm>
#include <utility>

#include "trace/TraceWriter.h"

namespace KAPHost {

namespace {

using namespace std::chrono_literals;

std::string Padded(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

// A line for each call, one inside the other:
//
//      0.152 ms  1  program > KAPUtils: POSArrayInterface.GetAt(array, 0) {
//      0.154 ms  1    KAPUtils > host: KAPContainerInterface.AddRef(number) = true (0.4 us)
//      0.155 ms  1  } GetAt = number (3.1 us)
//
// A call is written when it begins, and its result follows on the same line unless another call
// was written in between. So the last line of a crash shows the call that crashed.
class TextTrace final : public TraceWriter {
 public:
  TextTrace(const std::string& path, OnLost onLost) : TraceWriter(path, std::move(onLost)) {}

  void Begin(const TracedCall& call) override {
    const std::lock_guard lock(fMutex);
    EndLine(call.fThread);
    fFile.Write(Start(call, call.fStart) + call.fCaller + " > " + call.fCallee + ": " +
                call.fInterface + '.' + call.fMethod + '(' + call.fArguments + ')');
    fOpen = call.fKey;
    fOpenThread = call.fThread;
  }

  void End(const TracedCall& call) override {
    const std::lock_guard lock(fMutex);
    CheckProcess();
    std::string text;
    if (fOpen != call.fKey) {
      EndLine(0);
      text = Start(call, call.fStart + call.fDuration) + "} " + call.fMethod;
    }
    fOpen = nullptr;
    if (!call.fResult.empty()) text += " = " + call.fResult;
    if (!call.fPlaced.empty()) text += " -> " + call.fPlaced;
    const std::string duration = Thousandths(call.fDuration + 50ns);
    fFile.Write(text + " (" + duration.substr(0, duration.size() - 2) + " us)\n");
  }

  void Note(const std::string& text, std::chrono::nanoseconds) override {
    const std::lock_guard lock(fMutex);
    EndLine(0);
    fFile.Write("# " + text + '\n');
  }

  void Finish() override {
    const std::lock_guard lock(fMutex);
    if (fFile.IsOwn()) EndLine(0);
  }

 private:
  static std::string Start(const TracedCall& call, std::chrono::nanoseconds time) {
    return Padded(Thousandths(time / 1000), 10) + " ms  " + std::to_string(call.fThread) +
           std::string(2 + 2 * std::size_t{call.fDepth}, ' ');
  }

  // The line that is open at a fork is the parent's.
  void CheckProcess() {
    if (fFile.IsForked()) fOpen = nullptr;
  }

  // A line that another thread interrupts goes on below, as "}".
  void EndLine(unsigned thread) {
    CheckProcess();
    if (fOpen) fFile.Write(thread == fOpenThread ? " {\n" : " { ...\n");
    fOpen = nullptr;
  }

  const void* fOpen = nullptr;  // the call whose line has no end yet
  unsigned fOpenThread = 0;
};

}  // namespace

std::unique_ptr<TraceWriter> NewTextTrace(const std::string& path, TraceWriter::OnLost onLost) {
  return std::make_unique<TextTrace>(path, std::move(onLost));
}

}  // namespace KAPHost
