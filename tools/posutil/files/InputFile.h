// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "files/Descriptor.h"

namespace PosUtil {

// A file, or standard input, to read from start to end. Errors: Failure.
class InputFile {
 public:
  // "-" means standard input.
  explicit InputFile(const std::string& fileName);
  // A text in place of a file; `name` is its name in messages.
  InputFile(std::string name, std::string_view text);
  InputFile(InputFile&&) = default;

  // The name in messages.
  const std::string& Name() const { return fName; }

  // The size of a regular file, 0 for anything else.
  std::size_t Size() const { return fSize; }

  // Returns whether a read now would wait for bytes.
  bool MayWait() const;
  // Reads up to `size` bytes, at least 3, and returns how many; 0 at the end. Skips a byte order
  // mark at the start.
  std::size_t Read(char* to, std::size_t size);

  // Returns at least `size` bytes from the start of the input if it has as many. The next InputFile
  // of this name reads them again, also those of a pipe.
  static std::string Peek(const std::string& fileName, std::size_t size);

 private:
  std::size_t ReadNext(char* to, std::size_t size);
  std::size_t ReadFile(char* to, std::size_t size) const;

  std::string fName;
  Descriptor fFile;
  bool fIsRegular = false;
  std::size_t fSize = 0;
  std::string fPeeked;  // comes before what the file has left
  bool fHasStarted = false;
};

// The name of the file in messages.
std::string InputName(const std::string& fileName);

}  // namespace PosUtil
