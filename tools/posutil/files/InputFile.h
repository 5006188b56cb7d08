// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace PosUtil {

// A file, or standard input, to read from start to end. Errors: Failure.
class InputFile {
 public:
  // "-" means standard input.
  explicit InputFile(const std::string& fileName);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  // The name in messages.
  const std::string& Name() const { return fName; }

  // The size of a regular file, 0 for anything else.
  std::size_t Size() const { return fSize; }

  // Returns whether a read now would wait for bytes.
  bool MayWait() const;
  // Reads up to `size` bytes and returns how many; 0 at the end.
  std::size_t Read(char* to, std::size_t size) const;

 private:
  bool fIsStandard;
  std::string fName;
  int fDescriptor = -1;
  std::size_t fSize = 0;
};

// The name of the file in messages.
std::string InputName(const std::string& fileName);

}  // namespace PosUtil
