// SPDX-License-Identifier: MIT
#pragma once

#include <cstring>
#include <memory>
#include <string_view>

#include "terminal/Progress.h"

namespace PosUtil {

// A buffered writer to a file descriptor.
// Errors: Failure when a write fails, ClosedPipe for a closed pipe. The destructor does not flush,
// deliberately: the output of a failed command
//   must not look complete.
class Output {
 public:
  explicit Output(int descriptor) : fDescriptor(descriptor) {}

  int Descriptor() const { return fDescriptor; }
  // The number of bytes put so far.
  std::size_t Position() const { return fFlushed + fUsed; }

  // Writes advance `progress` from now on.
  void SetProgress(Progress& progress) { fProgress = &progress; }

  void Put(char character) {
    if (fUsed == kCapacity) Flush();
    fBuffer[fUsed++] = character;
  }
  void Put(std::string_view text) {
    if (text.size() > kCapacity - fUsed) return PutLong(text);
    std::memcpy(fBuffer.get() + fUsed, text.data(), text.size());
    fUsed += text.size();
  }
  void PutRepeated(char character, std::size_t count);

  void Flush();
  // Flushes and closes: some file systems report lost data only on close.
  void Finish();

 private:
  static constexpr std::size_t kCapacity = 64 * 1024;

  void PutLong(std::string_view text);
  void Write(const char* data, std::size_t size);

  int fDescriptor;
  Progress* fProgress = nullptr;
  std::size_t fFlushed = 0;
  std::size_t fUsed = 0;
  std::unique_ptr<char[]> fBuffer{new char[kCapacity]};
};

}  // namespace PosUtil
