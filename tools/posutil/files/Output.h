#pragma once

#include <cstring>
#include <memory>
#include <string_view>

#include "terminal/Progress.h"

namespace PosUtil {

// A file descriptor written through a buffer, with few calls.
// Errors: Failure when something could not be written; with an empty text when nobody reads on (a
//   closed pipe). What is put and never flushed is lost, deliberately: a failed command must not
//   look complete.
class Output {
 public:
  explicit Output(int descriptor) : fDescriptor(descriptor) {}

  int Descriptor() const { return fDescriptor; }
  // How many bytes have been put.
  std::size_t Position() const { return fFlushed + fUsed; }

  // From now on what is written advances it.
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
  // Flushes and closes: some file systems tell only then that the text did not get through.
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
