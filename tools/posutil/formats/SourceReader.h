// SPDX-License-Identifier: MIT
#pragma once

#include "files/Source.h"
#include "formats/Format.h"

namespace PosUtil {

// Reads a format with one document to a file, which it holds in memory as a whole.
class SourceReader : public Reader {
 public:
  using Reader::Reader;

  std::unique_ptr<Documents> Open(const std::string& fileName, Extent extent, Text text,
                                  Session& session) const override;

 protected:
  // Reads the document. Throws Failure.
  virtual KAP_T_MT::CPOSObject Read(const Source& source) const = 0;
  ~SourceReader() = default;

 private:
  class OnlyDocument;
};

}  // namespace PosUtil
