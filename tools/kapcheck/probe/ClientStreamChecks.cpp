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

// The data of a client stream, and what its views have been asked to do.
struct Shared {
  std::string fBytes = "0123456789";
  std::size_t fMostRead = 3;
  KAPError* fError = nullptr;  // what the next call returns
  int fDeleted = 0;
  int fLive = 0;
  long fSeekOffset = 0;
  int fSeekOrigin = -1;
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

KAPError* Read(std::size_t* outCount, void* data, unsigned char* buffer, std::size_t count) {
  Client& client = Of(data);
  *outCount = 0;
  if (KAPError* const error = TakeError(data)) return error;
  const std::size_t left = client.fShared.fBytes.size() - client.fPosition;
  *outCount = std::min({count, left, client.fShared.fMostRead});
  std::memcpy(buffer, client.fShared.fBytes.data() + client.fPosition, *outCount);
  client.fPosition += *outCount;
  return nullptr;
}

KAPError* WriteAll(void* data, const unsigned char* bytes, std::size_t count) {
  Client& client = Of(data);
  client.fShared.fBytes.replace(client.fPosition, count, reinterpret_cast<const char*>(bytes),
                                count);
  client.fPosition += count;
  return TakeError(data);
}

KAPError* Delete(void* data) {
  delete static_cast<Client*>(data);
  return nullptr;
}

KAPError* Create(void** outClient, void* data) {
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

Container Simple(Shared& shared) {
  auto client = std::make_unique<Client>(shared);
  Container stream;
  MustSucceed(Call<Factory, "NewClientSimpleStream">(
                  stream.Place(), static_cast<void*>(client.get()), &Read, &WriteAll, &Delete),
              "NewClientSimpleStream");
  client.release();
  return stream;
}

Container Rewindable(Shared& shared) {
  auto client = std::make_unique<Client>(shared);
  Container stream;
  MustSucceed(
      Call<Factory, "NewClientRewindableStream">(stream.Place(), static_cast<void*>(client.get()),
                                                 &Read, &WriteAll, &Delete, &Create, &ToStart),
      "NewClientRewindableStream");
  client.release();
  return stream;
}

Container Positionable(Shared& shared) {
  auto client = std::make_unique<Client>(shared);
  Container stream;
  MustSucceed(Call<Factory, "NewClientPositionableStream">(
                  stream.Place(), static_cast<void*>(client.get()), &Read, &WriteAll, &Delete,
                  &Create, &ToStart, &Create, &TellPosition, &ToPosition),
              "NewClientPositionableStream");
  client.release();
  return stream;
}

std::string SignatureOf(KAPContainer* stream) {
  return TextOf(Atom(Call<KAPContainerInterface, "GetSignature">(stream)));
}

constexpr Check kChecks[] = {
    {"client-streams.simple", "KAPStreamFactoryInterface", "NewClientSimpleStream",
     "A simple stream that forwards to `client`.",
     [] {
       Shared shared;
       const Container stream = Simple(shared);
       Expect(ReadAll(stream, 4) == "0123", "the stream reads other bytes than the client has");
       Write(stream, "abc");
       Expect(shared.fBytes == "0123abc789", "the client gets other bytes than were written");
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
    {"client-streams.deleted", "KAPStreamFactoryInterface", "NewClientSimpleStream",
     "The procedures for client streams take over `client` on success: the last release passes it"
     " to `deleteClient`.",
     [] {
       Shared shared;
       Container stream = Simple(shared);
       Expect(shared.fDeleted == 0, "the client is deleted while the stream lives");
       stream.Reset();
       Expect(shared.fDeleted == 1,
              "the last release deletes the client " + std::to_string(shared.fDeleted) + " times");
     }},
    {"client-streams.error-keeps-client", "KAPStreamFactoryInterface", "NewClientSimpleStream",
     "On an error the client stays the caller's.",
     [] {
       Shared shared;
       Client client(shared);
       MustFail(Call<Factory, "NewClientSimpleStream">(nullptr, static_cast<void*>(&client), &Read,
                                                       &WriteAll, &Delete),
                "NewClientSimpleStream without a result place");
       Expect(shared.fLive == 1, "a call that returns an error deletes the client");
     }},
    {"client-streams.errors", "KAPSimpleStreamInterface", "Write",
     "Writes all `count` bytes at the position and moves the position past them, or returns an"
     " error.",
     [] {
       Shared shared;
       const Container stream = Simple(shared);
       shared.fError =
           Call<KAPErrorInterface, "NewError">("no room", "Probe", 7l, nullptr, nullptr);
       const unsigned char byte = 'x';
       Error error(
           CallStream<KAPSimpleStreamInterface, "Write">(stream, stream, &byte, std::size_t{1}));
       Expect(error, "Write returns no error although the client does");
       Expect((Call<KAPErrorInterface, "GetID">(error) == 7), "Write returns another error");
     }},
    {"client-streams.rewindable", "KAPStreamFactoryInterface", "NewClientRewindableStream",
     "A rewindable stream that forwards to `client`.",
     [] {
       Shared shared;
       const Container stream = Rewindable(shared);
       ReadAll(stream, 5);
       Rewind(stream);
       Expect(ReadAll(stream, 2) == "01", "Rewind does not reach the client");
     }},
    {"client-streams.views", "KAPRewindableStreamInterface", "CreateIndependentlyRewindableStream",
     "A stream over the same data with a position of its own: one reference.",
     [] {
       Shared shared;
       {
         Container stream = Rewindable(shared);
         ReadAll(stream, 5);
         const Container view = RewindableView(stream);
         Expect(shared.fLive == 2, "the client is not asked for a new client");
         Expect(ReadAll(view, 2) == "01", "the new stream reads through another client");
         Expect(ReadAll(stream, 2) == "56", "reading the new stream moves the first one");
         stream.Reset();
         Expect(ReadAll(view, 2) == "23", "the new stream ends with the first one");
       }
       Expect(shared.fLive == 0 && shared.fDeleted == 2, "each client is not deleted once");
     }},
    {"client-streams.positionable", "KAPStreamFactoryInterface", "NewClientPositionableStream",
     "A positionable stream that forwards to `client`.",
     [] {
       Shared shared;
       const Container stream = Positionable(shared);
       ReadAll(stream, 5);
       Expect(Mark(stream) == 5, "Mark returns another position than the client");
       Seek(stream, -7, kKAPSeekFromEnd);
       Expect(shared.fSeekOffset == -7 && shared.fSeekOrigin == kKAPSeekFromEnd,
              "Seek reaches the client with other arguments");
       const Container view = View(stream);
       Expect(ReadAll(view, 2) == "01", "the new stream reads other bytes");
     }},
    {"client-streams.signatures", "KAPContainerInterface", "GetOffsetToPrimaryInstance",
     "All containers of one signature have the same methods, so clients look methods up once per"
     " signature.",
     [] {
       Shared shared;
       const Container simple = Simple(shared), rewindable = Rewindable(shared),
                       positionable = Positionable(shared);
       Expect(SignatureOf(simple) != SignatureOf(rewindable) &&
                  SignatureOf(rewindable) != SignatureOf(positionable) &&
                  SignatureOf(simple) != SignatureOf(positionable),
              "streams with different methods have one signature");
     }},
};

}  // namespace

std::span<const Check> ClientStreamChecks() { return kChecks; }

}  // namespace KAPProbe
