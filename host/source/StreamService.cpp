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
  if (IsRefused(Call::kStream)) return MemoryError();
  return ReturnError([&] {
    std::unique_ptr<Stream> stream = std::make_unique<MemoryStream>(std::make_shared<ByteStore>());
    return ContainStream(out, stream);
  });
}

KAPError* NewBufferStream(KAPContainer** out, const unsigned char* data,
                          std::size_t size) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  if (IsRefused(Call::kStream)) return MemoryError();
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
  if (IsRefused(Call::kStream)) return MemoryError();
  if (path == nullptr || mode == nullptr) return InvalidArgument();
  std::shared_ptr<OpenFile> file;
  if (KAPError* error = OpenFile::Open(file, path, mode)) return error;
  std::unique_ptr<Stream> stream(new (std::nothrow) FileStream(std::move(file)));
  return stream != nullptr ? ContainStream(out, stream) : MemoryError();
}

KAPError* NewClientStream(KAPContainer** out, StreamLength length, void* client,
                          const ClientStreamProcs& procs) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  if (IsRefused(Call::kStream)) return MemoryError();
  if (client == nullptr || !procs.IsComplete(length)) return InvalidArgument();
  auto* const stream = new (std::nothrow) ClientStream(length, client, procs);
  std::unique_ptr<Stream> owner(stream);
  if (owner == nullptr) return MemoryError();
  KAPError* const error = ContainStream(out, owner);
  if (error != nullptr) stream->Disown();
  return error;
}

KAPError* NewClientSimpleStream(KAPContainer** out, void* client, KAPClientReadProc read,
                                KAPClientWriteProc write,
                                KAPClientDeleteProc deleteClient) noexcept {
  return NewClientStream(out, StreamLength::kSimple, client, {read, write, deleteClient});
}

KAPError* NewClientRewindableStream(KAPContainer** out, void* client, KAPClientReadProc read,
                                    KAPClientWriteProc write, KAPClientDeleteProc deleteClient,
                                    KAPClientCreateStreamProc createRewindable,
                                    KAPClientRewindProc rewind) noexcept {
  return NewClientStream(out, StreamLength::kRewindable, client,
                         {read, write, deleteClient, createRewindable, rewind});
}

KAPError* NewClientPositionableStream(KAPContainer** out, void* client, KAPClientReadProc read,
                                      KAPClientWriteProc write, KAPClientDeleteProc deleteClient,
                                      KAPClientCreateStreamProc createRewindable,
                                      KAPClientRewindProc rewind,
                                      KAPClientCreateStreamProc createPositionable,
                                      KAPClientMarkProc mark, KAPClientSeekProc seek) noexcept {
  return NewClientStream(
      out, StreamLength::kPositionable, client,
      {read, write, deleteClient, createRewindable, rewind, createPositionable, mark, seek});
}

// ---- The methods ----

// Runs operation(stream), unless the call is refused.
template <class Operation>
KAPError* Perform(Call kind, KAPContainer* handle, StreamLength needed,
                  Operation operation) noexcept {
  Stream* const stream = StreamOf(handle);
  if (stream == nullptr || stream->Length() < needed) return InvalidContainer();
  return IsRefused(kind) ? MemoryError() : operation(*stream);
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
  KAPError* const error = Perform(Call::kRead, handle, StreamLength::kSimple, [&](Stream& stream) {
    if (buffer == nullptr && count != 0) return InvalidArgument();
    return stream.Read(*outCount, buffer, std::min(count, ReadLimit()));
  });
  return Logged(error, "Read", handle, static_cast<long>(count), 0, static_cast<long>(*outCount));
}

KAPError* Write(KAPContainer* handle, const unsigned char* buffer, std::size_t count) noexcept {
  KAPError* const error = Perform(Call::kWrite, handle, StreamLength::kSimple, [&](Stream& stream) {
    if (buffer == nullptr && count != 0) return InvalidArgument();
    return stream.Write(buffer, count);
  });
  return Logged(error, "Write", handle, static_cast<long>(count));
}

KAPError* Rewind(KAPContainer* handle) noexcept {
  KAPError* const error = Perform(Call::kSeek, handle, StreamLength::kRewindable,
                                  [](Stream& stream) { return stream.Rewind(); });
  return Logged(error, "Rewind", handle);
}

KAPError* Mark(long* outPosition, KAPContainer* handle) noexcept {
  if (outPosition == nullptr) return InvalidArgument();
  *outPosition = 0;
  KAPError* const error = Perform(Call::kMark, handle, StreamLength::kPositionable,
                                  [&](Stream& stream) { return stream.Mark(*outPosition); });
  return Logged(error, "Mark", handle, 0, 0, *outPosition);
}

KAPError* Seek(KAPContainer* handle, long offset, int origin) noexcept {
  KAPError* const error = Perform(Call::kSeek, handle, StreamLength::kPositionable,
                                  [&](Stream& stream) { return stream.Seek(offset, origin); });
  return Logged(error, "Seek", handle, offset, origin);
}

KAPError* CreateIndependent(KAPContainer** out, KAPContainer* handle, StreamLength length,
                            const char* method) noexcept {
  if (out == nullptr) return InvalidArgument();
  *out = nullptr;
  KAPError* const error = Perform(Call::kIndependentStream, handle, length, [&](Stream& stream) {
    std::unique_ptr<Stream> independent;
    KAPError* const failure = stream.CreateIndependent(independent, length);
    return failure != nullptr ? failure : ContainStream(out, independent);
  });
  return Logged(error, method, handle);
}

KAPError* CreateIndependentlyRewindable(KAPContainer** out, KAPContainer* handle) noexcept {
  return CreateIndependent(out, handle, StreamLength::kRewindable,
                           "CreateIndependentlyRewindableStream");
}

KAPError* CreateIndependentlyPositionable(KAPContainer** out, KAPContainer* handle) noexcept {
  return CreateIndependent(out, handle, StreamLength::kPositionable,
                           "CreateIndependentlyPositionableStream");
}

void OfferMethods(Binder& binder, StreamLength length) {
  const char* const name = StreamInterfaceName(length);
  OfferUnder<KAPSimpleStreamInterface>(name, binder, &Read, &Write);
  if (length == StreamLength::kSimple) return;
  OfferUnder<KAPRewindableStreamInterface>(name, binder, &CreateIndependentlyRewindable, &Rewind);
  if (length == StreamLength::kRewindable) return;
  OfferUnder<KAPPositionableStreamInterface>(name, binder, &CreateIndependentlyPositionable, &Mark,
                                             &Seek);
}

void OfferStreams(Binder& binder) {
  Offer<KAPStreamFactoryInterface>(binder, &NewMemoryStream, &NewBufferStream, &NewFileStream,
                                   &NewClientSimpleStream, &NewClientRewindableStream,
                                   &NewClientPositionableStream);
  OfferMethods(binder, StreamLength::kSimple);
  OfferMethods(binder, StreamLength::kRewindable);
  OfferMethods(binder, StreamLength::kPositionable);
}

}  // namespace

// The streams themselves are in the books as containers.
const Service kStreamService = {&OfferStreams, &OpenFile::Count};

}  // namespace KAPHost
