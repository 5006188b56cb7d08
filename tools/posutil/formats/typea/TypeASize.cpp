#include "formats/typea/TypeASize.h"

#include <cstdint>

#include "base/Failure.h"
#include "base/Printable.h"

namespace PosUtil {

void CheckTypeASize(std::size_t size, const std::string& name) {
  if (size > INT32_MAX) throw Failure(Printable(name) + ": TypeA documents end below 2 GiB");
}

}  // namespace PosUtil
