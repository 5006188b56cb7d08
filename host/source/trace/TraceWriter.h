// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "trace/OutputFile.h"

namespace KAPHost {

// A traced call as its writer sees it.
struct TracedCall {
  // The same at begin and end, different from all other calls under way.
  const void* fKey = nullptr;
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

// Writes traced calls to a file. What is written goes out at once: no crash loses it. Thread-safe.
class TraceWriter {
 public:
  using OnLost = std::function<void(const std::string& message)>;

  // By the ending of the name; see OutputFile for the name. Throws std::runtime_error.
  static std::unique_ptr<TraceWriter> Open(const std::string& path, OnLost onLost);

  TraceWriter(const TraceWriter&) = delete;
  TraceWriter& operator=(const TraceWriter&) = delete;
  virtual ~TraceWriter() = default;

  virtual void Begin(const TracedCall& call) = 0;
  virtual void End(const TracedCall& call) = 0;
  // Something that the reader of the trace should know.
  virtual void Note(const std::string& text, std::chrono::nanoseconds time) = 0;
  // Nothing follows from this host.
  virtual void Finish() = 0;

 protected:
  TraceWriter(const std::string& path, OnLost onLost) : fFile(path, std::move(onLost)) {}

  std::mutex fMutex;
  OutputFile fFile;  // used under the mutex
};

// `1234.567` for a number of thousandths; the comma of a locale would end the value.
std::string Thousandths(std::chrono::nanoseconds time);

std::unique_ptr<TraceWriter> NewTextTrace(const std::string& path, TraceWriter::OnLost onLost);
std::unique_ptr<TraceWriter> NewJsonTrace(const std::string& path, TraceWriter::OnLost onLost);

}  // namespace KAPHost
