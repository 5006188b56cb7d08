// The procedures of "POSBinDataInterface".

#include "BinData.h"
#include "POSDictImpl.h"
#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"

namespace NPOSObjectImpl {

using KAP_T_MT::KAPReportingError;

namespace {

POSBinData* POSBinDataNewPOSBinDataProc(const char* typeName, const unsigned char* data,
                                        unsigned long size) noexcept {
  return KAPReportingError([=] { return BinData::NewContainer(typeName, data, size); });
}

bool POSBinDataIsPOSBinDataProc(POSObject* object) noexcept {
  return BinData::GetInstanceNoThrow(object) != nullptr;
}

const char* POSBinDataGetTypeNameProc(POSBinData* data) noexcept {
  return KAPReportingError([=] { return BinData::GetInstance(data).GetTypeName(); });
}

const unsigned char* POSBinDataGetBinDataProc(POSBinData* data) noexcept {
  return KAPReportingError([=] { return BinData::GetInstance(data).GetBinData(); });
}

unsigned long POSBinDataGetSizeProc(POSBinData* data) noexcept {
  return KAPReportingError([=] { return BinData::GetInstance(data).GetSize(); });
}

}  // namespace

bool RegisterBinDataProcs() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSBinDataInterface>(
      &POSBinDataNewPOSBinDataProc, &POSBinDataIsPOSBinDataProc, &POSBinDataGetTypeNameProc,
      &POSBinDataGetBinDataProc, &POSBinDataGetSizeProc);
}

}  // namespace NPOSObjectImpl
