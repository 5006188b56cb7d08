// SPDX-License-Identifier: MIT
#pragma once

// The text format of documents, with its version 1.0:
//
//   document  := "POSStreamerTypeA_Version1.0" " " value
//   value     := "#" number " "  |  '"' text '"'  |  "`" 4 hexadecimal digits for each unit "`"
//              | "{" type-name length bytes in hexadecimal "}"  |  "$" pointer " "
//              | "[" value* "]"  |  "<" (key value)* ">"
//
// A backslash and three octal digits stand for a byte that cannot be printed. A backslash and a
// letter stand for a backslash, the closing character and, in strings, line feed, carriage return
// and tab: the constants of Version10 list them, StreamParams decides about each character. White
// space may precede any value.

#include "posimpl/streamer/TypeAStreamer.h"

namespace NPOSStreamerImpl::NTypeAImpl {

// "POSStreamerTypeA_Version1.0"
class Version10 final : public TypeAStreamer {
 public:
  explicit Version10(int level = 0) noexcept : TypeAStreamer(level) {}

  const char* GetVersion() const noexcept override;
  const StreamParams& GetReadingParams(char open) const override;
  const StreamParams& GetWritingParams(KAP_T_MT::POSType type) const override;

 private:
  // Null when there are none.
  static constexpr const StreamParams* FindParams(char open) noexcept;
  static constexpr const StreamParams* FindParams(KAP_T_MT::POSType type) noexcept;

  static const StreamParams fNumberStreamParams;
  static const StreamParams fStringStreamParams;
  static const StreamParams fUnicodeStringStreamParams;
  static const StreamParams fBinDataStreamParams;
  static const StreamParams fRawPtrStreamParams;
  static const StreamParams fArrayStreamParams;
  static const StreamParams fDictStreamParams;
};

}  // namespace NPOSStreamerImpl::NTypeAImpl
