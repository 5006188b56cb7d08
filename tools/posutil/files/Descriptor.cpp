// SPDX-License-Identifier: MIT
#include "files/Descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/Failure.h"
#include "base/Printable.h"

namespace PosUtil {

Descriptor::~Descriptor() {
  if (fDescriptor >= 0) ::close(fDescriptor);
}

bool IsOpenForWriting(int descriptor) {
  const int flags = ::fcntl(descriptor, F_GETFL);
  return flags >= 0 && !(flags & O_PATH) && (flags & O_ACCMODE) != O_RDONLY;
}

void ThrowFileError(const std::string& fileName) {
  const int error = errno;
  throw Failure(Printable(fileName) + ": " + std::strerror(error));
}

}  // namespace PosUtil
