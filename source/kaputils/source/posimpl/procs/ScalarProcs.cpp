// SPDX-License-Identifier: MIT

// The procedures of the kinds that never change.

#include "kap/KAPBinder.h"
#include "kap/KAPBoundary.h"
#include "posimpl/objects/BinData.h"
#include "posimpl/objects/Number.h"
#include "posimpl/objects/RawPointer.h"
#include "posimpl/objects/String.h"
#include "posimpl/objects/UnicodeString.h"
#include "posimpl/procs/POSDictImpl.h"

namespace NPOSObjectImpl {

using KAP_T_MT::KAPReportingError;

namespace {

// ---- Numbers ----

POSNumber* POSNumberNewPOSNumberProc(double value) noexcept {
  return KAPReportingError([=] { return Number::NewContainer(value); });
}

bool POSNumberIsPOSNumberProc(POSObject* object) noexcept {
  return Number::GetInstanceNoThrow(object) != nullptr;
}

double POSNumberGetProc(POSNumber* number) noexcept {
  return KAPReportingError([=] { return Number::GetInstance(number).Get(); });
}

// ---- Strings ----

POSString* POSStringNewPOSStringProc(const char* text) noexcept {
  return KAPReportingError([=] { return String::NewContainer(text); });
}

bool POSStringIsPOSStringProc(POSObject* object) noexcept {
  return String::GetInstanceNoThrow(object) != nullptr;
}

const char* POSStringGetProc(POSString* string) noexcept {
  return KAPReportingError([=] { return String::GetInstance(string).Get(); });
}

// ---- Unicode strings ----

POSUnicodeString* POSUnicodeStringNewPOSUnicodeStringProc(const unsigned short* text) noexcept {
  return KAPReportingError([=] { return UnicodeString::NewContainer(text); });
}

bool POSUnicodeStringIsPOSUnicodeStringProc(POSObject* object) noexcept {
  return UnicodeString::GetInstanceNoThrow(object) != nullptr;
}

const unsigned short* POSUnicodeStringGetProc(POSUnicodeString* string) noexcept {
  return KAPReportingError([=] { return UnicodeString::GetInstance(string).Get(); });
}

// ---- Binary data ----

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

// ---- Raw pointers ----

POSRawPointer* POSRawPointerNewPOSRawPointerProc(void* pointer,
                                                 KAP_T_MT::POSReleaseProc release) noexcept {
  return KAPReportingError([=] { return RawPointer::NewContainer(pointer, release); });
}

bool POSRawPointerIsPOSRawPointerProc(POSObject* object) noexcept {
  return RawPointer::GetInstanceNoThrow(object) != nullptr;
}

void* POSRawPointerGetRawPointerProc(POSRawPointer* pointer) noexcept {
  return KAPReportingError([=] { return RawPointer::GetInstance(pointer).GetRawPointer(); });
}

KAP_T_MT::POSReleaseProc POSRawPointerGetReleaseProcProc(POSRawPointer* pointer) noexcept {
  return KAPReportingError([=] { return RawPointer::GetInstance(pointer).GetReleaseProc(); });
}

}  // namespace

template <>
bool RegisterProcs<KAP_T_MT::POSNumberInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSNumberInterface>(
      &POSNumberNewPOSNumberProc, &POSNumberIsPOSNumberProc, &POSNumberGetProc);
}

template <>
bool RegisterProcs<KAP_T_MT::POSStringInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSStringInterface>(
      &POSStringNewPOSStringProc, &POSStringIsPOSStringProc, &POSStringGetProc);
}

template <>
bool RegisterProcs<KAP_T_MT::POSUnicodeStringInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSUnicodeStringInterface>(
      &POSUnicodeStringNewPOSUnicodeStringProc, &POSUnicodeStringIsPOSUnicodeStringProc,
      &POSUnicodeStringGetProc);
}

template <>
bool RegisterProcs<KAP_T_MT::POSBinDataInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSBinDataInterface>(
      &POSBinDataNewPOSBinDataProc, &POSBinDataIsPOSBinDataProc, &POSBinDataGetTypeNameProc,
      &POSBinDataGetBinDataProc, &POSBinDataGetSizeProc);
}

template <>
bool RegisterProcs<KAP_T_MT::POSRawPointerInterface>() {
  return KAP_T_MT::KAPRegisterInterface<KAP_T_MT::POSRawPointerInterface>(
      &POSRawPointerNewPOSRawPointerProc, &POSRawPointerIsPOSRawPointerProc,
      &POSRawPointerGetRawPointerProc, &POSRawPointerGetReleaseProcProc);
}

}  // namespace NPOSObjectImpl
