// SPDX-License-Identifier: MIT
#include <memory>
#include <utility>

#include "binder/Registration.h"
#include "errors/Errors.h"
#include "kap/KAPStreamInterfaces.h"
#include "streams/ClientStream.h"
#include "streams/FileStream.h"
#include "streams/MemoryStream.h"
#include "streams/StreamContainers.h"
#include "streams/StreamMethods.h"

// The procedures of KAPStreamFactoryInterface.

namespace KAPHost {

namespace {

using namespace KAP_T_MT;

KAPError* NewMemoryStream(KAPContainer** out) noexcept {
  return ReturnError([&] {
    std::unique_ptr<Stream> stream = std::make_unique<MemoryStream>(std::make_shared<ByteStore>());
    return ContainStream(out, stream);
  });
}

KAPError* NewBufferStream(KAPContainer** out, const unsigned char* data,
                          std::size_t size) noexcept {
  if (!data && size != 0) return InvalidArgument();
  return ReturnError([&] {
    auto bytes = std::make_shared<ByteStore>();
    if (!bytes->Write(0, data, size)) return MemoryError();
    std::unique_ptr<Stream> stream = std::make_unique<BufferStream>(std::move(bytes));
    return ContainStream(out, stream);
  });
}

// Opens the file last: opening may create or empty it, which no failure may follow.
KAPError* NewFileStream(KAPContainer** out, const char* path, const char* mode) noexcept {
  if (!path || !mode) return InvalidArgument();
  return ReturnError([&]() -> KAPError* {
    const auto file = std::make_shared<OpenFile>(path);
    std::unique_ptr<Stream> stream = std::make_unique<FileStream>(file);
    if (KAPError* error = ContainStream(out, stream)) return error;
    KAPError* const error = file->Open(mode);
    if (error) ReleaseContainer(*std::exchange(*out, nullptr));
    return error;
  });
}

KAPError* NewClientStream(KAPContainer** out, StreamCapability capability, void* client,
                          const ClientStreamProcs& procs) noexcept {
  if (!client || !procs.IsComplete(capability)) return InvalidArgument();
  auto* const stream = new (std::nothrow) ClientStream(capability, client, procs);
  std::unique_ptr<Stream> owner(stream);
  if (!owner) return MemoryError();
  KAPError* const error = ContainStream(out, owner);
  if (error) stream->Disown();
  return error;
}

KAPError* NewClientSimpleStream(KAPContainer** out, void* client, KAPClientReadProc read,
                                KAPClientWriteProc write,
                                KAPClientDeleteProc deleteClient) noexcept {
  return NewClientStream(out, StreamCapability::kSimple, client, {read, write, deleteClient});
}

KAPError* NewClientRewindableStream(KAPContainer** out, void* client, KAPClientReadProc read,
                                    KAPClientWriteProc write, KAPClientDeleteProc deleteClient,
                                    KAPClientCreateStreamProc createRewindable,
                                    KAPClientRewindProc rewind) noexcept {
  return NewClientStream(out, StreamCapability::kRewindable, client,
                         {read, write, deleteClient, createRewindable, rewind});
}

KAPError* NewClientPositionableStream(KAPContainer** out, void* client, KAPClientReadProc read,
                                      KAPClientWriteProc write, KAPClientDeleteProc deleteClient,
                                      KAPClientCreateStreamProc createRewindable,
                                      KAPClientRewindProc rewind,
                                      KAPClientCreateStreamProc createPositionable,
                                      KAPClientMarkProc mark, KAPClientSeekProc seek) noexcept {
  return NewClientStream(
      out, StreamCapability::kPositionable, client,
      {read, write, deleteClient, createRewindable, rewind, createPositionable, mark, seek});
}

}  // namespace

template <>
void RegisterService<KAPStreamFactoryInterface>(Binder& binder) {
  RegisterProcs<KAPStreamFactoryInterface, &NewMemoryStream, &NewBufferStream, &NewFileStream,
                &NewClientSimpleStream, &NewClientRewindableStream, &NewClientPositionableStream>(
      binder);
  RegisterStreamMethods(binder);
}

}  // namespace KAPHost
