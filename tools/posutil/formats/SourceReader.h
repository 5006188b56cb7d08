#pragma once

#include "files/Source.h"
#include "formats/Format.h"

namespace PosUtil {

// Reads a format with one document to a file, which it holds in memory as a whole.
class SourceReader : public Reader {
 public:
  using Reader::Reader;

  std::unique_ptr<Documents> Open(const std::string& fileName, Extent extent,
                                  Session& session) const override;

 protected:
  // Reads the document. The caller has started the progress of reading; the function may forget
  // the part of `source` that it has read. Throws Failure.
  virtual KAP_T_MT::CPOSObject Read(Source& source, Progress& progress) const = 0;
  ~SourceReader() = default;

 private:
  class OnlyDocument;
};

}  // namespace PosUtil
