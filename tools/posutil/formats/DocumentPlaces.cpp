#include "formats/DocumentPlaces.h"

namespace PosUtil {

TextPlace DocumentPlaces::PlaceOf(const ValuePath& path, Positions::Part part) {
  const std::string_view bytes = fText.fPart.fBytes;
  if (!fPositions) fPositions.emplace(fReader, bytes, fText.fBegin);
  const std::size_t offset = fPositions->Find(path, part);
  if (offset < fCounted || fCounted == 0) {
    fCounter = fText.fPart.fBefore;
    fCounted = 0;
  }
  fCounter.Add(bytes.substr(fCounted, offset - fCounted));
  fCounted = offset;
  return {fCounter.fLines + 1, fCounter.fColumns + 1};
}

}  // namespace PosUtil
