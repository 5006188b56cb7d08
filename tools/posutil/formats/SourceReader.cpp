// SPDX-License-Identifier: MIT
#include "formats/SourceReader.h"

#include <optional>
#include <utility>

namespace PosUtil {

class SourceReader::OnlyDocument final : public Documents {
 public:
  OnlyDocument(const SourceReader& reader, const std::string& fileName, Extent extent, Text text,
               Progress& progress)
      : fReader(reader), fFileName(fileName), fExtent(extent), fText(text), fProgress(progress) {}

  KAP_T_MT::CPOSObject Next() override {
    if (std::exchange(fIsRead, true)) return {};
    fSource.emplace(Source::Read(fFileName));
    const bool isBlank = fSource->Bytes().find_first_not_of(" \t\r\n") == std::string_view::npos;
    if (fExtent == Extent::kAll && isBlank) return {};
    fProgress.Begin("reading", fSource->Bytes().size());
    KAP_T_MT::CPOSObject object = fReader.Read(*fSource);
    if (fText == Text::kDropped) fSource.reset();  // before the caller uses the object
    return object;
  }

  DocumentText LastText() const override {
    return {{{}, fSource ? fSource->Bytes() : std::string_view()}, 0};
  }

 private:
  const SourceReader& fReader;
  const std::string fFileName;
  const Extent fExtent;
  const Text fText;
  Progress& fProgress;
  std::optional<Source> fSource;
  bool fIsRead = false;
};

std::unique_ptr<Documents> SourceReader::Open(const std::string& fileName, Extent extent, Text text,
                                              Session& session) const {
  return std::make_unique<OnlyDocument>(*this, fileName, extent, text, session.TheProgress());
}

}  // namespace PosUtil
