// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>
#include <memory>

#include "probe/Checks.h"
#include "probe/StreamCalls.h"

// Streams that forward to an object of the component.

namespace KAPProbe {

namespace {

using Factory = KAPStreamFactoryInterface;

// The data of client streams, and what they have been asked to do.
struct Shared {
  std::string fBytes = "0123456789";
  std::size_t fMostRead = 3;
  KAPError* fError = nullptr;  // what the next call returns
  bool fReadsTooMuch = false;
  int fDeleted = 0;
  int fLive = 0;
  long fSeekOffset = 0;
  int fSeekOrigin = -1;
  int fRewindable = 0, fPositionable = 0;  // independent streams made
};

struct Client {
  explicit Client(Shared& shared) : fShared(shared) { ++fShared.fLive; }
  ~Client() {
    --fShared.fLive;
    ++fShared.fDeleted;
  }

  Shared& fShared;
  std::size_t fPosition = 0;
};

Client& Of(void* client) { return *static_cast<Client*>(client); }
KAPError* TakeError(void* client) { return std::exchange(Of(client).fShared.fError, nullptr); }

// A result place is set even when the client returns an error: the host clears it.
KAPError* Read(std::size_t* outCount, void* data, unsigned char* buffer, std::size_t count) {
  Client& client = Of(data);
  const std::size_t left = client.fShared.fBytes.size() - client.fPosition;
  *outCount = std::min({count, left, client.fShared.fMostRead});
  if (KAPError* const error = TakeError(data)) return error;
  std::memcpy(buffer, client.fShared.fBytes.data() + client.fPosition, *outCount);
  client.fPosition += *outCount;
  if (client.fShared.fReadsTooMuch) *outCount = count + 1;
  return nullptr;
}

KAPError* WriteAll(void* data, const unsigned char* bytes, std::size_t count) {
  Client& client = Of(data);
  if (KAPError* const error = TakeError(data)) return error;
  client.fShared.fBytes.replace(client.fPosition, count, reinterpret_cast<const char*>(bytes),
                                count);
  client.fPosition += count;
  return nullptr;
}

// An error of it is the host's: it reports and releases it.
KAPError* Delete(void* data) {
  KAPError* const error = TakeError(data);
  delete static_cast<Client*>(data);
  return error;
}

template <int Shared::*kCount>
KAPError* Create(void** outClient, void* data) {
  *outClient = nullptr;
  if (KAPError* const error = TakeError(data)) return error;
  ++(Of(data).fShared.*kCount);
  *outClient = new Client(Of(data).fShared);
  return nullptr;
}

KAPError* ToStart(void* data) {
  Of(data).fPosition = 0;
  return TakeError(data);
}

KAPError* TellPosition(long* outPosition, void* data) {
  *outPosition = static_cast<long>(Of(data).fPosition);
  return TakeError(data);
}

KAPError* ToPosition(void* data, long offset, int origin) {
  Of(data).fShared.fSeekOffset = offset;
  Of(data).fShared.fSeekOrigin = origin;
  return TakeError(data);
}

// The procedures that make client streams of the three kinds, as calls of one form. On success the
// host owns the client.
using Make = KAPError* (*)(KAPContainer** out, void* client);

KAPError* NewSimple(KAPContainer** out, void* client) {
  return Call<Factory, "NewClientSimpleStream">(out, client, &Read, &WriteAll, &Delete);
}
KAPError* NewRewindable(KAPContainer** out, void* client) {
  return Call<Factory, "NewClientRewindableStream">(out, client, &Read, &WriteAll, &Delete,
                                                    &Create<&Shared::fRewindable>, &ToStart);
}
KAPError* NewPositionable(KAPContainer** out, void* client) {
  return Call<Factory, "NewClientPositionableStream">(
      out, client, &Read, &WriteAll, &Delete, &Create<&Shared::fRewindable>, &ToStart,
      &Create<&Shared::fPositionable>, &TellPosition, &ToPosition);
}

template <TKAPName Method, Make make>
Container New(Shared& shared) {
  auto client = std::make_unique<Client>(shared);
  Container stream;
  KAPError* const error = make(stream.Place(), client.get());
  if (error) Need<Factory, Method>(false, Returns(error));
  Need<Factory, Method>(stream, "returns neither a stream nor an error");
  client.release();
  return stream;
}
constexpr auto Simple = &New<"NewClientSimpleStream", &NewSimple>;
constexpr auto Rewindable = &New<"NewClientRewindableStream", &NewRewindable>;
constexpr auto Positionable = &New<"NewClientPositionableStream", &NewPositionable>;

// What every client stream does.
void CheckForwarding(Container (*make)(Shared&)) {
  Shared shared;
  Container stream = make(shared);
  ExpectText(ReadAll(stream, 4), "0123", "what is read");
  Write(stream, "abc");
  ExpectText(shared.fBytes, "0123abc789", "what the client has after a write");
  Expect(shared.fDeleted == 0, "the client is deleted while the stream lives");
  stream.Reset();
  Expect(shared.fDeleted == 1,
         "the last release deletes the client " + std::to_string(shared.fDeleted) + " times");
}

void CheckErrorKeepsClient(Make make) {
  Shared shared;
  auto* const client = new Client(shared);
  MustFail(make(nullptr, client), "making a stream without a result place");
  Expect(shared.fLive == 1, "a call that returns an error deletes the client");
  delete client;
}

// The error that a client returns is the caller's, and the call has no other result.
template <class Interface, TKAPName Method, class... Args>
void CheckError(Shared& shared, KAPContainer* stream, const Args&... args) {
  shared.fError = Call<KAPErrorInterface, "NewError">("no room", "Probe", 7l, nullptr, nullptr);
  const Error error(CallStream<Interface, Method>(stream, args...));
  Expect(error, std::string(Method.fText) + " returns no error although the client does");
  Expect(!shared.fError, std::string(Method.fText) + " does not reach the client");
}

void CheckErrors() {
  Shared shared;
  const Container stream = Positionable(shared);
  std::size_t count = 77;
  unsigned char byte = 'x';
  CheckError<KAPSimpleStreamInterface, "Read">(shared, stream, &count, stream.Get(), &byte,
                                               std::size_t{1});
  Expect(count == 0, "Read returns an error and a count");
  const unsigned char* const bytes = &byte;
  CheckError<KAPSimpleStreamInterface, "Write">(shared, stream, stream.Get(), bytes,
                                                std::size_t{1});
  CheckError<KAPRewindableStreamInterface, "Rewind">(shared, stream, stream.Get());
  CheckError<KAPPositionableStreamInterface, "Seek">(shared, stream, stream.Get(), 0l, 0);
  long position = 77;
  CheckError<KAPPositionableStreamInterface, "Mark">(shared, stream, &position, stream.Get());
  Expect(position == 0, "Mark returns an error and a position");
  KAPContainer* view = stream;
  CheckError<KAPRewindableStreamInterface, "CreateIndependentlyRewindableStream">(
      shared, stream, &view, stream.Get());
  Expect(!view, "CreateIndependentlyRewindableStream returns an error and a stream");
  view = stream;
  CheckError<KAPPositionableStreamInterface, "CreateIndependentlyPositionableStream">(
      shared, stream, &view, stream.Get());
  Expect(!view, "CreateIndependentlyPositionableStream returns an error and a stream");
}

// `count` counts the clients that are made for such views.
void CheckViews(Container (*make)(Shared&), Container (*makeView)(KAPContainer*),
                int Shared::*count) {
  Shared shared;
  {
    Container stream = make(shared);
    ReadAll(stream, 5);
    const Container view = makeView(stream);
    Expect(shared.*count == 1 && shared.fLive == 2,
           "the client is not asked for a new client of this kind");
    ExpectText(ReadAll(view, 2), "01", "what the new stream reads");
    ExpectText(ReadAll(stream, 2), "56", "what the first stream reads");
    stream.Reset();
    ExpectText(ReadAll(view, 2), "23", "what is read after the first stream has gone");
  }
  Expect(shared.fLive == 0 && shared.fDeleted == 2, "each client is not deleted once");
}

void CheckPositions() {
  Shared shared;
  const Container stream = Positionable(shared);
  ReadAll(stream, 5);
  Expect(Mark(stream) == 5, "Mark returns another position than the client");
  Seek(stream, -7, kKAPSeekFromEnd);
  Expect(shared.fSeekOffset == -7 && shared.fSeekOrigin == kKAPSeekFromEnd,
         "Seek reaches the client with other arguments");
}

bool HasMethod(KAPContainer* stream, const char* method, const char* proc) {
  void* found = nullptr;
  Do<KAPContainerInterface, "GetMethod">(&found, stream, MakeAtom(method), MakeAtom(proc), 1);
  return found;
}

void CheckKinds() {
  Shared shared;
  const Container streams[] = {Simple(shared), Rewindable(shared), Positionable(shared)};
  std::string signatures[3];
  for (int i = 0; i < 3; ++i) {
    signatures[i] = TextFrom<KAPContainerInterface, "GetSignature">(streams[i]);
    Expect(HasMethod(streams[i], "Read", "KAPSimpleStreamReadProc") &&
               HasMethod(streams[i], "Rewind", "KAPRewindableStreamRewindProc") == (i >= 1) &&
               HasMethod(streams[i], "Seek", "KAPPositionableStreamSeekProc") == (i >= 2),
           "a stream of kind " + std::to_string(i) + " has the methods of another kind");
  }
  Expect(signatures[0] != signatures[1] && signatures[1] != signatures[2] &&
             signatures[0] != signatures[2],
         "streams with different methods have one signature");
}

constexpr char kTakenOver[] =
    "take over `client` on success: the last release passes it to `deleteClient`.";

constexpr Check kChecks[] = {
    {"client-streams.simple", "KAPStreamFactoryInterface", "NewClientSimpleStream", kTakenOver,
     [] { CheckForwarding(Simple); }},
    {"client-streams.rewindable", "KAPStreamFactoryInterface", "NewClientRewindableStream",
     kTakenOver, [] { CheckForwarding(Rewindable); }},
    {"client-streams.positionable", "KAPStreamFactoryInterface", "NewClientPositionableStream",
     kTakenOver, [] { CheckForwarding(Positionable); }},
    {"client-streams.error-keeps-client", "KAPStreamFactoryInterface", "NewClientSimpleStream",
     "On an error the client stays the caller's.",
     [] {
       for (const Make make : {&NewSimple, &NewRewindable, &NewPositionable}) {
         CheckErrorKeepsClient(make);
       }
     }},
    {"client-streams.short-read", "KAPSimpleStreamInterface", "Read",
     "`*outCount`: how many; 0 at the end of the input.",
     [] {
       Shared shared;
       const Container stream = Simple(shared);
       const std::string piece = ReadSome(stream, 10);
       Expect(piece == std::string("0123456789").substr(0, piece.size()) && !piece.empty(),
              "a short read returns \"" + piece + '"');
       Expect(ReadAll(stream) == std::string("0123456789").substr(piece.size()),
              "short reads lose bytes");
       Expect(ReadSome(stream, 10).empty(), "there is no end");
     }},
    {"client-streams.too-much", "KAPSimpleStreamInterface", "Read", "Reads up to `count` bytes",
     [] {
       Shared shared;
       const Container stream = Simple(shared);
       shared.fReadsTooMuch = true;
       unsigned char buffer[2] = {};
       std::size_t count = 0;
       const Error error(CallStream<KAPSimpleStreamInterface, "Read">(stream, &count, stream,
                                                                      &buffer[0], std::size_t{1}));
       Expect(count <= 1, "a client says that it read more than requested, and so does the host");
     }},
    {"client-streams.errors", "KAPStreamFactoryInterface", "NewClientPositionableStream",
     "A positionable stream that forwards to `client`.", &CheckErrors},
    {"client-streams.delete-fails", "KAPStreamFactoryInterface", "NewClientSimpleStream",
     "The host reports an error that it returns: a release has no result.",
     [] {
       Shared shared;
       int freed = 0;
       Container stream = Simple(shared);
       shared.fError = Call<KAPErrorInterface, "NewError">(
           "not deleted", "Probe", 7l, static_cast<void*>(&freed),
           [](void* count) { ++*static_cast<int*>(count); });
       stream.Reset();
       Expect(freed == 1, "the error of a client's deletion is not released");
     }},
    {"client-streams.rewind", "KAPRewindableStreamInterface", "Rewind",
     "Moves the position to the start.",
     [] {
       Shared shared;
       const Container stream = Rewindable(shared);
       ReadAll(stream, 5);
       Rewind(stream);
       Expect(ReadAll(stream, 2) == "01", "Rewind does not reach the client");
     }},
    {"client-streams.rewindable-views", "KAPRewindableStreamInterface",
     "CreateIndependentlyRewindableStream",
     "A stream over the same data with a position of its own: one reference.",
     [] {
       CheckViews(Rewindable, &RewindableView, &Shared::fRewindable);
       CheckViews(Positionable, &RewindableView, &Shared::fRewindable);
     }},
    {"client-streams.views", "KAPPositionableStreamInterface",
     "CreateIndependentlyPositionableStream",
     "A stream over the same data with a position of its own: one reference.",
     [] { CheckViews(Positionable, &View, &Shared::fPositionable); }},
    {"client-streams.positions", "KAPPositionableStreamInterface", "Seek",
     "Moves the position; `origin` is a KAPSeekOrigin.", &CheckPositions},
    {"client-streams.kinds", "KAPContainerInterface", "GetSignature",
     "All containers of one signature have the same methods", &CheckKinds},
};

}  // namespace

std::span<const Check> ClientStreamChecks() { return kChecks; }

}  // namespace KAPProbe
