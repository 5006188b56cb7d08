// SPDX-License-Identifier: MIT
#include "files/InputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "files/Descriptor.h"

namespace PosUtil {

std::string InputName(const std::string& fileName) {
  return fileName == "-" ? "<stdin>" : fileName;
}

InputFile::InputFile(const std::string& fileName)
    : fIsStandard(fileName == "-"), fName(InputName(fileName)) {
  fDescriptor = fIsStandard ? STDIN_FILENO : ::open(fileName.c_str(), O_RDONLY | O_CLOEXEC);
  if (fDescriptor < 0) ThrowFileError(fName);
  struct stat status {};
  if (::fstat(fDescriptor, &status) == 0 && S_ISREG(status.st_mode)) {
    fSize = static_cast<std::size_t>(status.st_size);
  }
}

InputFile::~InputFile() {
  if (!fIsStandard) ::close(fDescriptor);
}

bool InputFile::MayWait() const {
  pollfd waiting = {fDescriptor, POLLIN, 0};
  return ::poll(&waiting, 1, 0) == 0;
}

std::size_t InputFile::Read(char* to, std::size_t size) const {
  for (;;) {
    const ssize_t count = ::read(fDescriptor, to, size);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) ThrowFileError(fName);
  }
}

}  // namespace PosUtil
