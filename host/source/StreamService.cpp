#include <algorithm>
#include <utility>

#include "BufferStream.h"
#include "ClientStream.h"
#include "Errors.h"
#include "FileStream.h"
#include "Gate.h"
#include "HostState.h"
#include "MemoryStream.h"
#include "Services.h"
#include "StreamContainers.h"

// The procedures of KAPStreamFactoryInterface, and the methods of the streams that it makes.

namespace KAPHost {

namespace {

using namespace KAP_T_MT;

// ---- The factory ----

KAPError* NewMemoryStream(KAPContainer** out) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  if (Fails(KAPFault::kStream)) return MemoryError();
  return ReturnError([&] {
    std::unique_ptr<Stream> stream = std::make_unique<MemoryStream>(std::make_shared<ByteStore>());
    return ContainStream(out, stream);
  });
}

KAPError* NewBufferStream(KAPContainer** out, const unsigned char* data,
                          std::size_t size) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  if (Fails(KAPFault::kStream)) return MemoryError();
  if (data == nullptr && size != 0) return InvalidArgument();
  return ReturnError([&] {
    auto bytes = std::make_shared<ByteStore>();
    if (!bytes->Write(0, data, size)) return MemoryError();
    std::unique_ptr<Stream> stream = std::make_unique<BufferStream>(std::move(bytes));
    return ContainStream(out, stream);
  });
}

KAPError* NewFileStream(KAPContainer** out, const char* path, const char* mode) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  if (Fails(KAPFault::kStream)) return MemoryError();
  if (path == nullptr || mode == nullptr) return InvalidArgument();
  std::shared_ptr<OpenFile> file;
  if (KAPError* error = OpenFile::Open(file, path, mode)) return error;
  std::unique_ptr<Stream> stream(new (std::nothrow) FileStream(std::move(file)));
  return stream != nullptr ? ContainStream(out, stream) : MemoryError();
}

KAPError* NewClientStream(KAPContainer** out, StreamCapability capability, void* client,
                          const ClientStreamProcs& procs) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  if (Fails(KAPFault::kStream)) return MemoryError();
  if (client == nullptr || !procs.IsComplete(capability)) return InvalidArgument();
  auto* const stream = new (std::nothrow) ClientStream(capability, client, procs);
  std::unique_ptr<Stream> owner(stream);
  if (owner == nullptr) return MemoryError();
  KAPError* const error = ContainStream(out, owner);
  if (error != nullptr) stream->Disown();
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

// ---- The methods ----

// Runs operation(stream), unless the call is refused.
template <class Operation>
KAPError* Perform(KAPFault kind, KAPContainer* handle, StreamCapability needed,
                  Operation operation) noexcept {
  Stream* const stream = StreamOf(handle);
  if (stream == nullptr || stream->Capability() < needed) return InvalidContainer();
  return Fails(kind) ? MemoryError() : operation(*stream);
}

[[gnu::cold]] void Log(const char* method, KAPContainer* handle, long amount, int origin,
                       long result, bool failed) noexcept {
  HostState* const state = HostState::Current();
  const Stream* const stream = StreamOf(handle);
  if (state == nullptr) return;
  ReportError(ReturnError([&]() -> KAPError* {
    const char* const kind = stream != nullptr ? stream->Kind() : "";
    state->fStreamLog.Add({method, kind, handle, amount, origin, result, failed});
    return nullptr;
  }));
}

// Gives the error back.
KAPError* Logged(KAPError* error, const char* method, KAPContainer* handle, long amount = 0,
                 int origin = 0, long result = 0) noexcept {
  if (IsLogging()) Log(method, handle, amount, origin, result, error != nullptr);
  return error;
}

KAPError* Read(std::size_t* outCount, KAPContainer* handle, unsigned char* buffer,
               std::size_t count) noexcept {
  if (outCount == nullptr) return InvalidArgument();
  *outCount = 0;
  KAPError* const error =
      Perform(KAPFault::kRead, handle, StreamCapability::kSimple, [&](Stream& stream) {
        if (buffer == nullptr && count != 0) return InvalidArgument();
        return stream.Read(*outCount, buffer, std::min(count, ReadLimit()));
      });
  return Logged(error, "Read", handle, static_cast<long>(count), 0, static_cast<long>(*outCount));
}

KAPError* Write(KAPContainer* handle, const unsigned char* buffer, std::size_t count) noexcept {
  KAPError* const error =
      Perform(KAPFault::kWrite, handle, StreamCapability::kSimple, [&](Stream& stream) {
        if (buffer == nullptr && count != 0) return InvalidArgument();
        return stream.Write(buffer, count);
      });
  return Logged(error, "Write", handle, static_cast<long>(count));
}

KAPError* Rewind(KAPContainer* handle) noexcept {
  KAPError* const error = Perform(KAPFault::kSeek, handle, StreamCapability::kRewindable,
                                  [](Stream& stream) { return stream.Rewind(); });
  return Logged(error, "Rewind", handle);
}

KAPError* Mark(long* outPosition, KAPContainer* handle) noexcept {
  if (outPosition == nullptr) return InvalidArgument();
  *outPosition = 0;
  KAPError* const error = Perform(KAPFault::kMark, handle, StreamCapability::kPositionable,
                                  [&](Stream& stream) { return stream.Mark(*outPosition); });
  return Logged(error, "Mark", handle, 0, 0, *outPosition);
}

KAPError* Seek(KAPContainer* handle, long offset, int origin) noexcept {
  KAPError* const error = Perform(KAPFault::kSeek, handle, StreamCapability::kPositionable,
                                  [&](Stream& stream) { return stream.Seek(offset, origin); });
  return Logged(error, "Seek", handle, offset, origin);
}

KAPError* CreateIndependent(KAPContainer** out, KAPContainer* handle, StreamCapability capability,
                            const char* method) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  KAPError* const error =
      Perform(KAPFault::kIndependentStream, handle, capability, [&](Stream& stream) {
        std::unique_ptr<Stream> independent;
        KAPError* const failure = stream.CreateIndependent(independent, capability);
        return failure != nullptr ? failure : ContainStream(out, independent);
      });
  return Logged(error, method, handle);
}

KAPError* CreateIndependentlyRewindable(KAPContainer** out, KAPContainer* handle) noexcept {
  return CreateIndependent(out, handle, StreamCapability::kRewindable,
                           "CreateIndependentlyRewindableStream");
}

KAPError* CreateIndependentlyPositionable(KAPContainer** out, KAPContainer* handle) noexcept {
  return CreateIndependent(out, handle, StreamCapability::kPositionable,
                           "CreateIndependentlyPositionableStream");
}

void RegisterMethods(Binder& binder, StreamCapability capability) {
  const char* const name = StreamInterfaceName(capability);
  RegisterProcsUnder<KAPSimpleStreamInterface>(name, binder, &Read, &Write);
  if (capability == StreamCapability::kSimple) return;
  RegisterProcsUnder<KAPRewindableStreamInterface>(name, binder, &CreateIndependentlyRewindable,
                                                   &Rewind);
  if (capability == StreamCapability::kRewindable) return;
  RegisterProcsUnder<KAPPositionableStreamInterface>(name, binder, &CreateIndependentlyPositionable,
                                                     &Mark, &Seek);
}

void RegisterStreams(Binder& binder) {
  RegisterProcs<KAPStreamFactoryInterface>(
      binder, &NewMemoryStream, &NewBufferStream, &NewFileStream, &NewClientSimpleStream,
      &NewClientRewindableStream, &NewClientPositionableStream);
  RegisterMethods(binder, StreamCapability::kSimple);
  RegisterMethods(binder, StreamCapability::kRewindable);
  RegisterMethods(binder, StreamCapability::kPositionable);
}

}  // namespace

// The streams themselves are in the books as containers.
const Service kStreamService = {&RegisterStreams, &OpenFile::Count};

}  // namespace KAPHost
