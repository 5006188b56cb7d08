#include "base/ValueError.h"

#include "base/Printable.h"

namespace PosUtil {

Failure ValueError::At(const std::string& document, const std::string& path) const {
  return Failure(Printable(document) + ": " + (path.empty() ? "the document" : Printable(path)) +
                 ": " + what());
}

}  // namespace PosUtil
