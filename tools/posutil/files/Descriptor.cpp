#include "files/Descriptor.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/Failure.h"
#include "base/Printable.h"

namespace PosUtil {

Descriptor::~Descriptor() {
  if (fDescriptor >= 0) ::close(fDescriptor);
}

void ThrowFileError(const std::string& fileName) {
  const int error = errno;
  throw Failure(Printable(fileName) + ": " + std::strerror(error));
}

}  // namespace PosUtil
