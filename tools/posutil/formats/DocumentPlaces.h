#pragma once

#include <optional>

#include "base/TextPart.h"
#include "formats/Positions.h"

namespace PosUtil {

// Lines and columns of the values of a document. Scans the text at the first question, so a
// document without messages costs nothing.
class DocumentPlaces {
 public:
  // The text must outlive this.
  DocumentPlaces(const Reader& reader, const DocumentText& text) : fReader(reader), fText(text) {}

  TextPlace PlaceOf(const ValuePath& path, Positions::Part part);

 private:
  const Reader& fReader;
  const DocumentText fText;
  std::optional<Positions> fPositions;
  // The last answer: most questions are about a later place.
  LineCounter fCounter;
  std::size_t fCounted = 0;
};

}  // namespace PosUtil
