#pragma once

#include <sys/stat.h>

#include <string>

namespace PosUtil {

// A new file in the folder of another one, to take its place. It is gone at the end unless it did,
// also when a signal ends the program. One at a time.
class TemporaryFile {
 public:
  // `replaced` tells what is at the target, null when there is nothing: its mode is taken over, and
  // its owner and group as far as the system lets. Throws Failure.
  TemporaryFile(const std::string& target, const struct stat* replaced);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  // Open for writing; closed by whoever asked.
  int Descriptor() const { return fDescriptor; }
  // Throws Failure.
  void Replace();

 private:
  explicit TemporaryFile(const std::string& target);
  [[noreturn]] void Fail() const;

  const std::string fTarget;
  std::string fPath;
  int fDescriptor = -1;
};

}  // namespace PosUtil
