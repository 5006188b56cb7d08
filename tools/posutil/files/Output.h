// SPDX-License-Identifier: MIT
#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "terminal/Progress.h"

namespace PosUtil {

// A buffered writer to a file descriptor.
// Errors: Failure when a write fails, ClosedPipe for a closed pipe. The destructor does not flush,
//   deliberately: the output of a failed command must not look complete.
class Output {
 public:
  explicit Output(int descriptor) : fDescriptor(descriptor) {}

  int Descriptor() const { return fDescriptor; }
  // The number of bytes put so far.
  std::size_t Position() const { return fFlushed + fHeld.size() + fUsed; }

  // Writes advance `progress` from now on.
  void SetProgress(Progress& progress) { fProgress = &progress; }

  void Put(char character) {
    if (fUsed == kCapacity) MakeRoom();
    fBuffer[fUsed++] = character;
  }
  void Put(std::string_view text) {
    if (text.size() > kCapacity - fUsed) return PutLong(text);
    std::memcpy(fBuffer.get() + fUsed, text.data(), text.size());
    fUsed += text.size();
  }
  void PutRepeated(char character, std::size_t count) {
    if (count > kFewBytes || kFewBytes > kCapacity - fUsed) return PutMany(character, count);
    std::memset(fBuffer.get() + fUsed, character, kFewBytes);  // no call, as the size is constant
    fUsed += count;
  }
  // Calls `write(place)`, which writes at most `most` bytes, up to kCapacity, and returns their end.
  template <class Write>
  void PutInPlace(std::size_t most, Write write) {
    if (most > kCapacity - fUsed) MakeRoom();
    fUsed = static_cast<std::size_t>(write(fBuffer.get() + fUsed) - fBuffer.get());
  }

  // For several documents: from now on, only whole ones are written, until a Flush. It costs the
  // memory of the largest.
  void HoldDocuments() { fHolds = true; }
  // A document ends here. What comes after the last one can be dropped.
  void EndDocument();
  void DropIncomplete();

  void Flush();
  // Flushes and closes: some file systems report lost data only on close.
  void Finish();

 private:
  static constexpr std::size_t kCapacity = 64 * 1024;
  static constexpr std::size_t kFewBytes = 32;

  void PutLong(std::string_view text);
  void PutMany(char character, std::size_t count);
  void MakeRoom();
  void Write(const char* data, std::size_t size);

  int fDescriptor;
  Progress* fProgress = nullptr;
  std::size_t fFlushed = 0;
  std::size_t fUsed = 0;
  bool fHolds = false;
  std::size_t fComplete = 0;  // of the bytes in the buffer: those of whole documents
  std::string fHeld;          // the start of a document whose rest is in the buffer
  std::unique_ptr<char[]> fBuffer{new char[kCapacity]};
};

}  // namespace PosUtil
