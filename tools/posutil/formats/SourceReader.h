#pragma once

#include "files/Source.h"
#include "formats/Format.h"

namespace PosUtil {

// A format whose documents are read as a whole: one to a file.
class SourceReader : public Reader {
 public:
  using Reader::Reader;

  std::unique_ptr<Documents> Open(const std::string& fileName, Extent extent,
                                  Session& session) const override;

 protected:
  // Makes the object of the only document, whose reading has begun as a piece of work. What has
  // been read may be forgotten. Throws SyntaxError, or another Failure.
  virtual KAP_T_MT::CPOSObject Read(Source& source, Progress& progress) const = 0;
  ~SourceReader() = default;

 private:
  class OnlyDocument;
};

// Room for what will be made of a text that long.
void ReserveHeapFor(std::size_t textSize);

}  // namespace PosUtil
