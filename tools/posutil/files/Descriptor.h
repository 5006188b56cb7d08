// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>

namespace PosUtil {

// Owns a file descriptor.
class Descriptor {
 public:
  Descriptor() = default;
  // Takes ownership; -1 means none.
  explicit Descriptor(int descriptor) : fDescriptor(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : fDescriptor(std::exchange(other.fDescriptor, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fDescriptor, other.fDescriptor);
    return *this;
  }
  ~Descriptor();

  explicit operator bool() const { return fDescriptor >= 0; }
  int Get() const { return fDescriptor; }
  int Detach() { return std::exchange(fDescriptor, -1); }

 private:
  int fDescriptor = -1;
};

// Returns whether a write to the descriptor can succeed; false also for a closed one.
bool IsOpenForWriting(int descriptor);

// Throws a Failure about the file with the text of errno.
[[noreturn]] void ThrowFileError(const std::string& fileName);

}  // namespace PosUtil
