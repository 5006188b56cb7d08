// SPDX-License-Identifier: MIT
#include "streams/StreamMethods.h"

#include <algorithm>
#include <memory>

#include "base/Current.h"
#include "binder/Registration.h"
#include "errors/Errors.h"
#include "faults/Gate.h"
#include "kap/KAPStreamInterfaces.h"
#include "streams/StreamContainers.h"
#include "streams/StreamLog.h"

namespace KAPHost {

namespace {

using namespace KAP_T_MT;

// Runs operation(stream), or returns an error when the handle is not such a stream.
template <class Operation>
KAPError* Perform(KAPContainer* handle, StreamCapability needed, Operation operation) noexcept {
  Stream* const stream = StreamOf(handle);
  if (!stream || stream->Capability() < needed) return InvalidContainer();
  return operation(*stream);
}

KAPError* Read(std::size_t* outCount, KAPContainer* handle, unsigned char* buffer,
               std::size_t count) noexcept {
  return Perform(handle, StreamCapability::kSimple, [&](Stream& stream) {
    if (!buffer && count != 0) return InvalidArgument();
    return stream.Read(*outCount, buffer, std::min(count, ReadLimit()));
  });
}

KAPError* Write(KAPContainer* handle, const unsigned char* buffer, std::size_t count) noexcept {
  return Perform(handle, StreamCapability::kSimple, [&](Stream& stream) {
    if (!buffer && count != 0) return InvalidArgument();
    return stream.Write(buffer, count);
  });
}

KAPError* CreateIndependent(KAPContainer** out, KAPContainer* handle,
                            StreamCapability capability) noexcept {
  return Perform(handle, capability, [&](Stream& stream) {
    std::unique_ptr<Stream> independent;
    KAPError* const error = stream.CreateIndependent(independent, capability);
    return error ? error : ContainStream(out, independent);
  });
}

KAPError* CreateIndependentlyRewindable(KAPContainer** out, KAPContainer* handle) noexcept {
  return CreateIndependent(out, handle, StreamCapability::kRewindable);
}

KAPError* Rewind(KAPContainer* handle) noexcept {
  return Perform(handle, StreamCapability::kRewindable,
                 [](Stream& stream) { return stream.Rewind(); });
}

KAPError* CreateIndependentlyPositionable(KAPContainer** out, KAPContainer* handle) noexcept {
  return CreateIndependent(out, handle, StreamCapability::kPositionable);
}

KAPError* Mark(long* outPosition, KAPContainer* handle) noexcept {
  return Perform(handle, StreamCapability::kPositionable,
                 [&](Stream& stream) { return stream.Mark(*outPosition); });
}

KAPError* Seek(KAPContainer* handle, long offset, int origin) noexcept {
  return Perform(handle, StreamCapability::kPositionable,
                 [&](Stream& stream) { return stream.Seek(offset, origin); });
}

// ---- Logging: what a call of each signature shows ----

void Describe(StreamCall& call, const std::size_t* outCount, KAPContainer* stream, unsigned char*,
              std::size_t count) {
  call.fStream = stream;
  call.fAmount = static_cast<long>(count);
  call.fResult = outCount ? static_cast<long>(*outCount) : 0;
}
void Describe(StreamCall& call, KAPContainer* stream, const unsigned char*, std::size_t count) {
  call.fStream = stream;
  call.fAmount = static_cast<long>(count);
}
void Describe(StreamCall& call, const long* outPosition, KAPContainer* stream) {
  call.fStream = stream;
  call.fResult = outPosition ? *outPosition : 0;
}
void Describe(StreamCall& call, KAPContainer* stream, long offset, int origin) {
  call.fStream = stream;
  call.fAmount = offset;
  call.fOrigin = origin;
}
void Describe(StreamCall& call, KAPContainer* const*, KAPContainer* stream) {
  call.fStream = stream;
}
void Describe(StreamCall& call, KAPContainer* stream) { call.fStream = stream; }

// Throws std::bad_alloc.
template <class... Args>
[[gnu::cold]] void Log(const char* method, bool failed, Args... args) {
  StreamLog* const log = Current<StreamLog>();
  if (!log) return;
  StreamCall call;
  Describe(call, args...);
  const Stream* const stream = StreamOf(call.fStream);
  call.fMethod = method;
  call.fKind = stream ? stream->Kind() : "";
  call.fFailed = failed;
  log->Add(call);
}

// A guarded method that logs its calls, those that fault injection fails included.
template <auto kProc>
struct LoggedProc;

template <class... Args, KAPError* (*kProc)(Args...) noexcept>
struct LoggedProc<kProc> {
  template <class Interface, std::size_t kSlot>
  static KAPError* Call(Args... args) noexcept {
    KAPError* const error = kProc(args...);
    if (IsLogging()) {
      ReportError(ReturnError([&]() -> KAPError* {
        Log(Interface::kEntries[kSlot].fMethodName, error, args...);
        return nullptr;
      }));
    }
    return error;
  }
};

template <class Interface, auto... kProcs>
void RegisterMethods(Binder& binder, StreamCapability capability) {
  ForEachGuarded<Interface, kProcs...>([&]<std::size_t kSlot, class Guarded>() {
    constexpr auto entry = Interface::kEntries[kSlot];
    binder.Register(
        StreamInterfaceName(capability), entry.fMethodName, entry.fProcName,
        reinterpret_cast<void*>(&LoggedProc<Guarded::kGuarded>::template Call<Interface, kSlot>));
  });
}

}  // namespace

void RegisterStreamMethods(Binder& binder) {
  for (const auto capability : {StreamCapability::kSimple, StreamCapability::kRewindable,
                                StreamCapability::kPositionable}) {
    RegisterMethods<KAPSimpleStreamInterface, &Read, &Write>(binder, capability);
    if (capability < StreamCapability::kRewindable) continue;
    RegisterMethods<KAPRewindableStreamInterface, &CreateIndependentlyRewindable, &Rewind>(
        binder, capability);
    if (capability < StreamCapability::kPositionable) continue;
    RegisterMethods<KAPPositionableStreamInterface, &CreateIndependentlyPositionable, &Mark, &Seek>(
        binder, capability);
  }
}

}  // namespace KAPHost
