#pragma once

#include <cstddef>
#include <string>

namespace PosUtil {

// A file that is read from its beginning to its end, or standard input. Throws Failure.
class InputFile {
 public:
  // "-" is standard input.
  explicit InputFile(const std::string& fileName);
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  // As messages call it.
  const std::string& Name() const { return fName; }

  // What a regular file holds, 0 for anything else.
  std::size_t Size() const { return fSize; }

  // What is there, up to `size` bytes; 0 at the end.
  std::size_t Read(char* to, std::size_t size) const;

 private:
  bool fIsStandard;
  std::string fName;
  int fDescriptor = -1;
  std::size_t fSize = 0;
};

// How messages call the file.
std::string InputName(const std::string& fileName);

}  // namespace PosUtil
