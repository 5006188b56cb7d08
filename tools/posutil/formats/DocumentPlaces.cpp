// SPDX-License-Identifier: MIT
#include "formats/DocumentPlaces.h"

#include <algorithm>

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
  const std::size_t begin = std::min(fText.fBegin, bytes.size());  // a dropped text has none
  const std::string_view text = bytes.substr(begin);
  const std::size_t offset = Find(path, part) - begin;
  while (fCounters.size() <= offset / kInterval) {
    LineCounter next = fCounters.back();
    next.Add(text.substr((fCounters.size() - 1) * kInterval, kInterval));
    fCounters.push_back(next);
  }
  LineCounter counter = fCounters[offset / kInterval];
  counter.Add(text.substr(offset / kInterval * kInterval, offset % kInterval));
  return {counter.fLines + 1, counter.fColumns + 1};
}

}  // namespace PosUtil
