#include "posimpl/streamer/POSStreamerTypeA.h"

#include "pos/POSException.h"
#include "pos/POSInterfaces.h"

namespace NPOSStreamerImpl::NTypeAImpl {

using KAP_T_MT::POSException;

constinit const StreamParams Version10::fNumberStreamParams(KAP_T_MT::kPOSNumber, '#', ' ',
                                                            R"(\\  )");
constinit const StreamParams Version10::fStringStreamParams(KAP_T_MT::kPOSString, '"', '"',
                                                            "\\\\\"\"\nn\rr\tt");
constinit const StreamParams Version10::fUnicodeStringStreamParams(KAP_T_MT::kPOSUnicodeString, '`',
                                                                   '`', R"(\\``)");
constinit const StreamParams Version10::fBinDataStreamParams(KAP_T_MT::kPOSBinData, '{', '}',
                                                             R"(\\}})");
constinit const StreamParams Version10::fRawPtrStreamParams(KAP_T_MT::kPOSRawPointer, '$', ' ',
                                                            R"(\\  )");
constinit const StreamParams Version10::fArrayStreamParams(KAP_T_MT::kPOSArray, '[', ']',
                                                           R"(\\]])");
constinit const StreamParams Version10::fDictStreamParams(KAP_T_MT::kPOSDict, '<', '>', R"(\\>>)");

const char* Version10::GetVersion() const noexcept { return "POSStreamerTypeA_Version1.0"; }

const StreamParams& Version10::GetReadingParams(char open) const {
  switch (open) {
    case '"':
      return fStringStreamParams;
    case '#':
      return fNumberStreamParams;
    case '$':
      return fRawPtrStreamParams;
    case '<':
      return fDictStreamParams;
    case '[':
      return fArrayStreamParams;
    case '`':
      return fUnicodeStringStreamParams;
    case '{':
      return fBinDataStreamParams;
    default:
      throw POSException("Cannot determine streaming params");
  }
}

const StreamParams& Version10::GetWritingParams(KAP_T_MT::POSType type) const {
  switch (type) {
    case KAP_T_MT::kPOSNumber:
      return fNumberStreamParams;
    case KAP_T_MT::kPOSString:
      return fStringStreamParams;
    case KAP_T_MT::kPOSUnicodeString:
      return fUnicodeStringStreamParams;
    case KAP_T_MT::kPOSBinData:
      return fBinDataStreamParams;
    case KAP_T_MT::kPOSRawPointer:
      return fRawPtrStreamParams;
    case KAP_T_MT::kPOSArray:
      return fArrayStreamParams;
    case KAP_T_MT::kPOSDict:
      return fDictStreamParams;
  }
  throw POSException(kCannotBeWritten);
}

}  // namespace NPOSStreamerImpl::NTypeAImpl
