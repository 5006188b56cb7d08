// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>

namespace KAPHost {

// A traced call as its writer sees it.
struct TracedCall {
  const void* fKey =
      nullptr;  // the same at begin and end, different from all other calls under way
  const char* fInterface = "";
  const char* fMethod = "";
  const char* fCaller = "";
  const char* fCallee = "";
  unsigned fThread = 0;
  unsigned fDepth = 0;
  std::chrono::nanoseconds fStart{};
  std::chrono::nanoseconds fDuration{};
  std::string fArguments;
  std::string fResult;  // "" for none
  std::string fPlaced;  // what the result place holds, "" for none
  std::string fError;   // of a call that returned one, or what it threw
};

// Writes traced calls to a file. Each line goes out at once, so that a crash loses nothing before
// it. Thread-safe.
class TraceWriter {
 public:
  // By the ending of the name. "-" is standard error. Throws std::runtime_error.
  static std::unique_ptr<TraceWriter> Open(const std::string& path);

  TraceWriter(const TraceWriter&) = delete;
  TraceWriter& operator=(const TraceWriter&) = delete;
  virtual ~TraceWriter();

  virtual void Begin(const TracedCall& call) = 0;
  virtual void End(const TracedCall& call) = 0;
  // Something that the reader of the trace should know.
  virtual void Note(const std::string& text) = 0;
  // Nothing follows.
  virtual void Finish() = 0;

 protected:
  TraceWriter(int file, const std::string& path) : fFile(file), fPath(path) {}

  void Write(const std::string& text) noexcept;

  std::mutex fMutex;

 private:
  const int fFile;
  const std::string fPath;
  bool fIsLost = false;
};

}  // namespace KAPHost
