// SPDX-License-Identifier: MIT
#include "kap/KAPStream.h"

#include <utility>

#include "kap/KAPError.h"
#include "kap/KAPStreamFactory.h"

namespace KAP_T_MT {

constinit CKAPSimpleStreamTerminate CKAPSimpleStream::fSimpleTerm;
constinit CKAPRewindableStreamTerminate CKAPRewindableStream::fRewindableTerm;
constinit CKAPPositionableStreamTerminate CKAPPositionableStream::fPositionableTerm;

CKAPSimpleStream::CKAPSimpleStream(TKAPClientObject<KAPClientSimpleStream> client)
    : CKAPSimpleStream(CKAPStreamFactory::NewClientSimpleStream(std::move(client))) {}

std::size_t CKAPSimpleStream::Read(unsigned char* buffer, std::size_t size) {
  std::size_t count = 0;
  KAPCheck(fSimpleTerm.Method<"Read">(Handle())(&count, Handle(), buffer, size));
  if (count > size) CKAPError::ThrowError("a stream returned more than was asked for", "KAP", 0);
  return count;
}

void CKAPSimpleStream::Write(const unsigned char* buffer, std::size_t size) {
  KAPCheck(fSimpleTerm.Method<"Write">(Handle())(Handle(), buffer, size));
}

CKAPRewindableStream::CKAPRewindableStream(TKAPClientObject<KAPClientRewindableStream> client)
    : CKAPRewindableStream(CKAPStreamFactory::NewClientRewindableStream(std::move(client))) {}

CKAPRewindableStream CKAPRewindableStream::CreateIndependentlyRewindableStream() {
  KAPRewindableStream* stream = nullptr;
  KAPCheck(
      fRewindableTerm.Method<"CreateIndependentlyRewindableStream">(Handle())(&stream, Handle()));
  return CKAPRewindableStream(stream, KAPAdopt());
}

void CKAPRewindableStream::Rewind() {
  KAPCheck(fRewindableTerm.Method<"Rewind">(Handle())(Handle()));
}

CKAPPositionableStream::CKAPPositionableStream()
    : CKAPPositionableStream(CKAPStreamFactory::NewPositionableMemoryStream()) {}

CKAPPositionableStream::CKAPPositionableStream(const char* path, const char* mode)
    : CKAPPositionableStream(CKAPStreamFactory::NewPositionableFileStream(path, mode)) {}

CKAPPositionableStream::CKAPPositionableStream(TKAPClientObject<KAPClientPositionableStream> client)
    : CKAPPositionableStream(CKAPStreamFactory::NewClientPositionableStream(std::move(client))) {}

CKAPPositionableStream CKAPPositionableStream::New() {
  return CKAPPositionableStream(CKAPStreamFactory::NewPositionableMemoryStream());
}

CKAPPositionableStream CKAPPositionableStream::New(const unsigned char* data, std::size_t size) {
  return CKAPPositionableStream(CKAPStreamFactory::NewPositionableBufferStream(data, size));
}

CKAPPositionableStream CKAPPositionableStream::CreateIndependentlyPositionableStream() {
  KAPPositionableStream* stream = nullptr;
  KAPCheck(fPositionableTerm.Method<"CreateIndependentlyPositionableStream">(Handle())(&stream,
                                                                                       Handle()));
  return CKAPPositionableStream(stream, KAPAdopt());
}

long CKAPPositionableStream::Mark() {
  long position = 0;
  KAPCheck(fPositionableTerm.Method<"Mark">(Handle())(&position, Handle()));
  return position;
}

void CKAPPositionableStream::Seek(long offset, int origin) {
  KAPCheck(fPositionableTerm.Method<"Seek">(Handle())(Handle(), offset, origin));
}

}  // namespace KAP_T_MT
