// SPDX-License-Identifier: MIT
#include "posimpl/streamer/POSStreamerTypeA.h"

#include <algorithm>
#include <iterator>

#include "pos/POSException.h"
#include "pos/POSInterfaces.h"

namespace NPOSStreamerImpl::NTypeAImpl {

using KAP_T_MT::POSException;

// The last argument has pairs: a character that is escaped, then its letter after a backslash. Most
// are their own letter: a space in a number is written as a backslash and a space.
constexpr StreamParams Version10::fNumberStreamParams(KAP_T_MT::kPOSNumber, '#', ' ', R"(\\  )");
constexpr StreamParams Version10::fStringStreamParams(KAP_T_MT::kPOSString, '"', '"',
                                                      "\\\\\"\"\nn\rr\tt");
constexpr StreamParams Version10::fUnicodeStringStreamParams(KAP_T_MT::kPOSUnicodeString, '`', '`',
                                                             R"(\\``)");
constexpr StreamParams Version10::fBinDataStreamParams(KAP_T_MT::kPOSBinData, '{', '}', R"(\\}})");
constexpr StreamParams Version10::fRawPtrStreamParams(KAP_T_MT::kPOSRawPointer, '$', ' ',
                                                      R"(\\  )");
constexpr StreamParams Version10::fArrayStreamParams(KAP_T_MT::kPOSArray, '[', ']', R"(\\]])");
constexpr StreamParams Version10::fDictStreamParams(KAP_T_MT::kPOSDict, '<', '>', R"(\\>>)");

const char* Version10::GetVersion() const noexcept { return "POSStreamerTypeA_Version1.0"; }

constexpr const StreamParams* Version10::FindParams(char open) noexcept {
  switch (open) {
    case '"':
      return &fStringStreamParams;
    case '#':
      return &fNumberStreamParams;
    case '$':
      return &fRawPtrStreamParams;
    case '<':
      return &fDictStreamParams;
    case '[':
      return &fArrayStreamParams;
    case '`':
      return &fUnicodeStringStreamParams;
    case '{':
      return &fBinDataStreamParams;
    default:
      return nullptr;
  }
}

constexpr const StreamParams* Version10::FindParams(KAP_T_MT::POSType type) noexcept {
  switch (type) {
    case KAP_T_MT::kPOSNumber:
      return &fNumberStreamParams;
    case KAP_T_MT::kPOSString:
      return &fStringStreamParams;
    case KAP_T_MT::kPOSUnicodeString:
      return &fUnicodeStringStreamParams;
    case KAP_T_MT::kPOSBinData:
      return &fBinDataStreamParams;
    case KAP_T_MT::kPOSRawPointer:
      return &fRawPtrStreamParams;
    case KAP_T_MT::kPOSArray:
      return &fArrayStreamParams;
    case KAP_T_MT::kPOSDict:
      return &fDictStreamParams;
  }
  return nullptr;
}

const StreamParams& Version10::GetReadingParams(char open) const {
  static_assert(std::all_of(std::begin(KAP_T_MT::kPOSTypes), std::end(KAP_T_MT::kPOSTypes),
                            [](KAP_T_MT::POSType type) {
                              const StreamParams* params = FindParams(type);
                              return params->kType == type && FindParams(params->kOpen) == params;
                            }),
                "a kind that is written is not found by its opening character");
  const StreamParams* params = FindParams(open);
  if (!params) throw POSException("Cannot determine streaming params");
  return *params;
}

const StreamParams& Version10::GetWritingParams(KAP_T_MT::POSType type) const {
  static_assert(std::all_of(std::begin(KAP_T_MT::kPOSTypes), std::end(KAP_T_MT::kPOSTypes),
                            [](KAP_T_MT::POSType kind) {
                              const char open = FindParams(kind)->kOpen;
                              return kTopLevelParams.HowToWrite(open) == StreamParams::kPlain &&
                                     fArrayStreamParams.HowToWrite(open) == StreamParams::kPlain &&
                                     fDictStreamParams.HowToWrite(open) == StreamParams::kPlain &&
                                     fBinDataStreamParams.HowToWrite(open) == StreamParams::kPlain;
                            }),
                "an opening character is written as it is, but would have to be escaped");
  const StreamParams* params = FindParams(type);
  if (!params) throw POSException(kCannotBeWritten);
  return *params;
}

}  // namespace NPOSStreamerImpl::NTypeAImpl
