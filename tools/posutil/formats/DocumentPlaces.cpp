// SPDX-License-Identifier: MIT
#include "formats/DocumentPlaces.h"

namespace PosUtil {

std::size_t DocumentPlaces::Find(const ValuePath& path, Positions::Part part) {
  if (!fPositions) fPositions.emplace(fReader, fText.fPart.fBytes, fText.fBegin);
  return fPositions->Find(path, part);
}

SyntaxError DocumentPlaces::ErrorAt(const std::string& name, const ValuePath& path,
                                    const std::string& message) {
  return {name, fText.fPart, Find(path, Positions::kValue), message};
}

TextPlace DocumentPlaces::PlaceOf(const ValuePath& path, Positions::Part part) {
  const std::string_view bytes = fText.fPart.fBytes;
  const std::size_t offset = Find(path, part);
  if (offset < fCounted || fCounted == 0) {
    fCounter = fText.fPart.fBefore;
    fCounted = 0;
  }
  fCounter.Add(bytes.substr(fCounted, offset - fCounted));
  fCounted = offset;
  return {fCounter.fLines + 1, fCounter.fColumns + 1};
}

}  // namespace PosUtil
