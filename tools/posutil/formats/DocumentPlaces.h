// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/SyntaxError.h"
#include "base/TextPart.h"
#include "formats/Positions.h"

namespace PosUtil {

// Lines and columns of the values of a document. Scans the text at the first question, so a
// document without messages costs nothing.
class DocumentPlaces {
 public:
  // The text must outlive this.
  DocumentPlaces(const Reader& reader, const DocumentText& text)
      : fReader(reader), fText(text), fCounters{text.fBefore} {}

  TextPlace PlaceOf(const ValuePath& path, Positions::Part part);
  // The error about a value of the document; `name` is the name of the file.
  SyntaxError ErrorAt(const std::string& name, const ValuePath& path, const std::string& message);

 private:
  std::size_t Find(const ValuePath& path, Positions::Part part);

  const Reader& fReader;
  const DocumentText fText;
  std::optional<Positions> fPositions;
  // Before every kInterval-th byte of the document, up to the furthest place asked for; requests
  // come in any order.
  static constexpr std::size_t kInterval = 4096;
  std::vector<LineCounter> fCounters;
};

}  // namespace PosUtil
