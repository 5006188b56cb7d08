// SPDX-License-Identifier: MIT
#include "kap/KAPStreamFactory.h"

#include <utility>

#include "kap/KAPClientProcs.h"
#include "kap/KAPError.h"
#include "source/kap/KAPHandOver.h"

namespace KAP_T_MT {

namespace {

constexpr KAPClientReadProc MyReadProc = &TKAPClientProc<&KAPClientSimpleStream::Read>::Call;
constexpr KAPClientWriteProc MyWriteProc = &TKAPClientProc<&KAPClientSimpleStream::Write>::Call;
constexpr KAPClientDeleteProc MyDeleteStreamProc = &KAPDeleteClientProc;
constexpr KAPClientCreateStreamProc MyCreateIndependentlyRewindableStreamProc =
    &TKAPClientProc<&KAPClientRewindableStream::CreateIndependentlyRewindableStream>::Call;
constexpr KAPClientCreateStreamProc MyCreateRewindableOfPositionableProc =
    &TKAPClientProc<&KAPClientPositionableStream::CreateCheckedRewindableStream>::Call;
constexpr KAPClientRewindProc MyRewindProc =
    &TKAPClientProc<&KAPClientRewindableStream::Rewind>::Call;
constexpr KAPClientCreateStreamProc MyCreateIndependentlyPositionableStreamProc =
    &TKAPClientProc<&KAPClientPositionableStream::CreateIndependentlyPositionableStream>::Call;
constexpr KAPClientMarkProc MyMarkProc = &TKAPClientProc<&KAPClientPositionableStream::Mark>::Call;
constexpr KAPClientSeekProc MySeekProc = &TKAPClientProc<&KAPClientPositionableStream::Seek>::Call;

template <TKAPName Method, class... Args>
TKAPNewHandle<KAPContainer> NewStream(Args... args) {
  if (!GetGlobalKAPStreamFactoryInterfaceProcs()) return TKAPNewHandle<KAPContainer>(nullptr);
  KAPContainer* stream = nullptr;
  KAPCheck(KAPStreamFactoryClient::CallLoaded<Method>(&stream, args...));
  return TKAPNewHandle(stream);
}

template <TKAPName Method, class Client, class... Procs>
TKAPNewHandle<KAPContainer> NewClientStream(TKAPClientObject<Client> client, Procs... procs) {
  return TKAPNewHandle(KAPHandOver<KAPStreamFactoryInterface>(
      std::move(client),
      [=](void* object) -> KAPContainer* { return NewStream<Method>(object, procs...); }));
}

}  // namespace

TKAPNewHandle<KAPPositionableStream> CKAPStreamFactory::NewPositionableMemoryStream() {
  return NewStream<"NewPositionableMemoryStream">();
}

TKAPNewHandle<KAPPositionableStream> CKAPStreamFactory::NewPositionableBufferStream(
    const unsigned char* data, std::size_t size) {
  return NewStream<"NewPositionableBufferStream">(data, size);
}

TKAPNewHandle<KAPPositionableStream> CKAPStreamFactory::NewPositionableFileStream(
    const char* path, const char* mode) {
  return NewStream<"NewPositionableFileStream">(path, mode);
}

TKAPNewHandle<KAPSimpleStream> CKAPStreamFactory::NewClientSimpleStream(
    TKAPClientObject<KAPClientSimpleStream> client) {
  return NewClientStream<"NewClientSimpleStream">(std::move(client), MyReadProc, MyWriteProc,
                                                  MyDeleteStreamProc);
}

TKAPNewHandle<KAPRewindableStream> CKAPStreamFactory::NewClientRewindableStream(
    TKAPClientObject<KAPClientRewindableStream> client) {
  return NewClientStream<"NewClientRewindableStream">(
      std::move(client), MyReadProc, MyWriteProc, MyDeleteStreamProc,
      MyCreateIndependentlyRewindableStreamProc, MyRewindProc);
}

TKAPNewHandle<KAPPositionableStream> CKAPStreamFactory::NewClientPositionableStream(
    TKAPClientObject<KAPClientPositionableStream> client) {
  return NewClientStream<"NewClientPositionableStream">(
      std::move(client), MyReadProc, MyWriteProc, MyDeleteStreamProc,
      MyCreateRewindableOfPositionableProc, MyRewindProc,
      MyCreateIndependentlyPositionableStreamProc, MyMarkProc, MySeekProc);
}

}  // namespace KAP_T_MT
