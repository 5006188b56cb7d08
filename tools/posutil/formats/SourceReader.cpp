#include "formats/SourceReader.h"

#include <utility>

namespace PosUtil {

class SourceReader::OnlyDocument final : public Documents {
 public:
  OnlyDocument(const SourceReader& reader, const std::string& fileName, Progress& progress)
      : fReader(reader), fFileName(fileName), fProgress(progress) {}

  KAP_T_MT::CPOSObject Next() override {
    if (std::exchange(fIsRead, true)) return {};
    const Source source = Source::Read(fFileName);  // freed before the caller uses the object
    fProgress.Begin("reading", source.Bytes().size());
    return fReader.Read(source);
  }

 private:
  const SourceReader& fReader;
  const std::string fFileName;
  Progress& fProgress;
  bool fIsRead = false;
};

std::unique_ptr<Documents> SourceReader::Open(const std::string& fileName, Extent,
                                              Session& session) const {
  return std::make_unique<OnlyDocument>(*this, fileName, session.TheProgress());
}

}  // namespace PosUtil
