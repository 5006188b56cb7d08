#pragma once

#include "posimpl/streamer/TypeAStreamer.h"

namespace NPOSStreamerImpl::NTypeAImpl {

// "POSStreamerTypeA_Version1.0"
class Version10 final : public TypeAStreamer {
 public:
  explicit Version10(int level = 0) noexcept : TypeAStreamer(level) {}

  const char* GetVersion() const noexcept override;
  const StreamParams& GetReadingParams(char open) const override;
  const StreamParams& GetWritingParams(int type) const override;

 private:
  static const StreamParams fNumberStreamParams;
  static const StreamParams fStringStreamParams;
  static const StreamParams fUnicodeStringStreamParams;
  static const StreamParams fBinDataStreamParams;
  static const StreamParams fRawPtrStreamParams;
  static const StreamParams fArrayStreamParams;
  static const StreamParams fDictStreamParams;
};

}  // namespace NPOSStreamerImpl::NTypeAImpl
