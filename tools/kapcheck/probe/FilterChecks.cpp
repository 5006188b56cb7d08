// SPDX-License-Identifier: MIT
#include "probe/Checks.h"
#include "probe/Services.h"

// Sinks and filters.

namespace KAPProbe {

namespace {

using Filters = KAPFilterInterface;

// What the procedures of a client sink or filter have been given.
struct Client {
  std::string fBytes;
  int fDeleted = 0;
  int fClosed = 0;
  KAPError* fError = nullptr;  // what the next call returns
  int fImage[3] = {};
  float fQuality = 0;
  KAPFilter* fReverse = nullptr;  // one reference for the host
};

Client& Of(void* client) { return *static_cast<Client*>(client); }
KAPError* TakeError(void* client) { return std::exchange(Of(client).fError, nullptr); }

KAPError* WriteProc(void* client, const unsigned char* data, std::size_t count) {
  Of(client).fBytes.append(reinterpret_cast<const char*>(data), count);
  return TakeError(client);
}
KAPError* DeleteProc(void* client) {
  ++Of(client).fDeleted;
  return nullptr;
}
KAPError* CloseProc(void* client) {
  ++Of(client).fClosed;
  return TakeError(client);
}
KAPError* ReverseProc(KAPFilter** out, void* client) {
  *out = std::exchange(Of(client).fReverse, nullptr);
  return TakeError(client);
}
KAPError* ImageProc(void* client, int width, int height, int channels) {
  int* const image = Of(client).fImage;
  image[0] = width, image[1] = height, image[2] = channels;
  return TakeError(client);
}
KAPError* QualityProc(void* client, float quality) {
  Of(client).fQuality = quality;
  return TakeError(client);
}
KAPError* NewError() {
  return Call<KAPErrorInterface, "NewError">("refused", "Probe", 7l, nullptr, nullptr);
}

Sink ClientSink(Client& client) {
  Sink sink;
  Do<Filters, "NewClientDataSink">(sink.Place(), static_cast<void*>(&client), &WriteProc,
                                   &DeleteProc);
  Need<Filters, "NewClientDataSink">(sink, "returns neither a sink nor an error");
  return sink;
}

Sink ClientFilter(KAPDataSink* target, Client& client) {
  Sink filter;
  Do<Filters, "NewClientFilter">(filter.Place(), target, static_cast<void*>(&client), &WriteProc,
                                 &DeleteProc, &CloseProc, &ReverseProc);
  Need<Filters, "NewClientFilter">(filter, "returns neither a filter nor an error");
  return filter;
}

Sink JPEGFilter(KAPDataSink* target, Client& client) {
  Sink filter;
  Do<Filters, "NewFilterJPEG">(filter.Place(), target, static_cast<void*>(&client), &WriteProc,
                               &DeleteProc, &CloseProc, &ReverseProc, &ImageProc, &QualityProc);
  Need<Filters, "NewFilterJPEG">(filter, "returns neither a filter nor an error");
  return filter;
}

Sink Identity(KAPDataSink* target) {
  Sink filter;
  Do<Filters, "NewIdentityFilter">(filter.Place(), target);
  Need<Filters, "NewIdentityFilter">(filter, "returns neither a filter nor an error");
  return filter;
}

KAPError* TryWrite(const Sink& sink, const std::string& bytes) {
  return Call<Filters, "Write">(sink, reinterpret_cast<const unsigned char*>(bytes.data()),
                                bytes.size());
}
void Write(const Sink& sink, const std::string& bytes) {
  KAPError* const error = TryWrite(sink, bytes);
  if (error) Need<Filters, "Write">(false, Returns(error));
}

void Close(const Sink& filter) { Do<Filters, "Close">(filter); }

unsigned long ClosedIn(const Sink& filter) {
  unsigned long state = ~0ul;
  Do<Filters, "GetChainState">(&state, filter);
  return state;
}

// What every filter of a client does.
void CheckClientFilter(Sink (*make)(KAPDataSink*, Client&)) {
  Client client, target;
  Sink sink = ClientSink(target);
  Sink filter = make(sink, client);
  sink.Reset();
  Expect(target.fDeleted == 0, "the target is deleted although the filter lives");
  Write(filter, "abc");
  Close(filter);
  Expect(client.fBytes == "abc", "the client gets \"" + client.fBytes + '"');
  Expect(client.fClosed == 1, "the client is closed " + std::to_string(client.fClosed) + " times");
  Expect(target.fBytes.empty(), "the host writes what the client was given to the target");
  Expect(client.fDeleted == 0, "the client is deleted while the filter lives");
  filter.Reset();
  Expect(client.fDeleted == 1,
         "the last release deletes the client " + std::to_string(client.fDeleted) + " times");
  Expect(target.fDeleted == 1, "the target stays when the filter has gone");
}

// The error that a client returns is the caller's.
template <TKAPName Method, class... Args>
void CheckError(Client& client, const Args&... args) {
  client.fError = NewError();
  Fails<Filters, Method>("of a client that returns an error", args...);
  Expect(!client.fError, std::string(Method.fText) + " does not reach the client");
}

void CheckErrors() {
  Client client, target;
  const Sink filter = JPEGFilter(ClientSink(target), client);
  const unsigned char byte = 'x';
  const unsigned char* const bytes = &byte;
  CheckError<"Write">(client, filter, bytes, std::size_t{1});
  CheckError<"SetImageParameters">(client, filter, 1, 1, 1);
  CheckError<"SetCompressionParameters">(client, filter, 0.5f);
  KAPFilter* reverse = filter;
  CheckError<"GetVellumcodeFilter">(client, &reverse, filter);
  Expect(!reverse, "GetVellumcodeFilter returns an error and a filter");
  CheckError<"Close">(client, filter);
}

template <TKAPName Method, class... Args>
void CheckErrorKeepsClient(const Args&... args) {
  Client client;
  Fails<Filters, Method>("without a result place", nullptr, args..., static_cast<void*>(&client),
                         &WriteProc, &DeleteProc);
  Expect(client.fDeleted == 0, "a call that returns an error deletes the client");
}

void CheckRing() {
  Client client;
  const Sink sink = ClientSink(client);
  const Sink last = Identity(sink);
  const Sink first = Identity(last);
  Fails<Filters, "SetDataSink">("that makes a ring", last, first);
  Expect(Call<Filters, "PeekTarget">(last) == sink, "the target changes all the same");
}

void CheckReverse() {
  Client client, target, other;
  const Sink sink = ClientSink(target);
  const Sink filter = ClientFilter(sink, client);
  KAPFilter* none = filter;  // not null, to see whether the call clears it
  Do<Filters, "GetVellumcodeFilter">(&none, filter);
  Expect(!none, "a filter without a reverse has one");
  Sink made = ClientFilter(sink, other);
  KAPFilter* const expected = made.Get();
  client.fReverse = made.Detach();
  Sink reverse;
  Do<Filters, "GetVellumcodeFilter">(reverse.Place(), filter);
  Expect(reverse == expected, "the reverse is not the one that the client returns");
  reverse.Reset();
  Expect(other.fDeleted == 1, "the reverse carries another number of references than one");
}

constexpr Check kFilters[] = {
    {"filters.null", "KAPFilterInterface", "NewNullDataSink",
     "A sink that discards its bytes: one reference.",
     [] {
       Sink sink;
       Do<Filters, "NewNullDataSink">(sink.Place());
       Need<Filters, "NewNullDataSink">(sink, "returns neither a sink nor an error");
       Write(sink, "bytes");
     }},
    {"filters.client", "KAPFilterInterface", "NewClientDataSink",
     "A sink that forwards to `client`: one reference.",
     [] {
       Client client;
       const Sink sink = ClientSink(client);
       Write(sink, "abc");
       Write(sink, "def");
       Expect(client.fBytes == "abcdef", "the client gets \"" + client.fBytes + '"');
     }},
    {"filters.last-release", "KAPFilterInterface", "NewClientDataSink",
     "the last release passes it to `deleteClient`.",
     [] {
       Client client;
       CheckLastRelease<Filters>(ClientSink(client), client.fDeleted, "deletes the client");
     }},
    {"filters.references", "KAPFilterInterface", "AddRef", "Adds one reference; null is ignored.",
     [] {
       Call<Filters, "AddRef">(nullptr);
       Client client;
       CheckLastRelease<Filters>(ClientSink(client), client.fDeleted, "deletes the client");
     }},
    {"filters.release", "KAPFilterInterface", "Release", "Releases one reference; null is ignored.",
     [] {
       Call<Filters, "Release">(nullptr);
       Client client;
       ClientSink(client).Reset();
       Expect(client.fDeleted == 1, "a new sink outlives one release");
     }},
    {"filters.error-keeps-client", "KAPFilterInterface", "NewClientDataSink",
     "On an error the client stays the caller's.",
     [] { CheckErrorKeepsClient<"NewClientDataSink">(); }},
    {"filters.client-filter", "KAPFilterInterface", "NewClientFilter",
     "A filter that forwards to `client`, which writes to the target itself: one reference.",
     [] { CheckClientFilter(&ClientFilter); }},
    {"filters.client-errors", "KAPFilterInterface", "NewFilterJPEG",
     "the host only forwards the parameters.", &CheckErrors},
    {"filters.errors", "KAPFilterInterface", "Write",
     "Writes all `count` bytes, or returns an error",
     [] {
       Client client;
       const Sink sink = ClientSink(client);
       client.fError = NewError();
       MustFail(TryWrite(sink, "abc"), "Write to a client that returns an error");
     }},
    {"filters.closed", "KAPFilterInterface", "Write",
     "or returns an error, for a closed filter among others.",
     [] {
       Client client;
       const Sink filter = Identity(ClientSink(client));
       Close(filter);
       MustFail(TryWrite(filter, "abc"), "Write to a closed filter");
     }},
    {"filters.identity", "KAPFilterInterface", "NewIdentityFilter",
     "A filter that writes its bytes to `target` unchanged: one reference.",
     [] {
       Client client;
       const Sink filter = Identity(ClientSink(client));
       Write(filter, "abc");
       Close(filter);
       Expect(client.fBytes == "abc", "the target gets \"" + client.fBytes + '"');
     }},
    {"filters.target", "KAPFilterInterface", "NewIdentityFilter",
     "The filter holds a reference to the target.",
     [] {
       Client client;
       Sink sink = ClientSink(client);
       Sink filter = Identity(sink);
       sink.Reset();
       Expect(client.fDeleted == 0, "the target is deleted although the filter lives");
       filter.Reset();
       Expect(client.fDeleted == 1, "the target stays when the filter has gone");
     }},
    {"filters.is-filter", "KAPFilterInterface", "IsFilter",
     "Whether the sink is a filter; false for null.",
     [] {
       Client client;
       const Sink sink = ClientSink(client);
       Expect(!Call<Filters, "IsFilter">(nullptr) && !Call<Filters, "IsFilter">(sink),
              "null or a sink is a filter");
       Expect(Call<Filters, "IsFilter">(Identity(sink)), "a filter is not a filter");
     }},
    {"filters.peek", "KAPFilterInterface", "PeekTarget",
     "The target, borrowed; null for a sink that is not a filter.",
     [] {
       Client client;
       const Sink sink = ClientSink(client);
       Expect(Call<Filters, "PeekTarget">(Identity(sink)) == sink, "the target is another one");
       Expect(!Call<Filters, "PeekTarget">(sink), "a sink has a target");
     }},
    {"filters.close", "KAPFilterInterface", "Close",
     "Ends the filter's output and closes the filter; for a closed filter does nothing.",
     [] {
       Client client, target;
       const Sink filter = ClientFilter(ClientSink(target), client);
       Close(filter);
       Close(filter);
       Expect(client.fClosed == 1,
              "the client is closed " + std::to_string(client.fClosed) + " times");
     }},
    {"filters.close-fails", "KAPFilterInterface", "Close",
     "After an error the filter is still open.",
     [] {
       Client client, target;
       const Sink filter = ClientFilter(ClientSink(target), client);
       client.fError = NewError();
       MustFail(Call<Filters, "Close">(filter), "Close of a client that returns an error");
       KAPError* const error = TryWrite(filter, "abc");
       Expect(!error, "the filter is closed: Write " + (error ? Returns(error) : ""));
       Close(filter);
       Expect(client.fClosed == 2, "the filter is closed: Close does not reach the client");
     }},
    {"filters.retarget", "KAPFilterInterface", "SetDataSink",
     "Replaces the target; the filter holds a reference to the new one.",
     [] {
       Client first, second;
       const Sink filter = Identity(ClientSink(first));
       Do<Filters, "SetDataSink">(filter, ClientSink(second));
       Expect(first.fDeleted == 1, "the old target stays");
       Expect(second.fDeleted == 0, "the new target is deleted although the filter lives");
       Write(filter, "abc");
       Close(filter);
       Expect(second.fBytes == "abc", "the new target gets other bytes");
     }},
    {"filters.ring", "KAPFilterInterface", "SetDataSink",
     "An error when the filter would lead to itself.", &CheckRing},
    {"filters.chain", "KAPFilterInterface", "GetChainState",
     "The number of closed filters in the chain: this one and those that follow it as targets.",
     [] {
       Client client;
       const Sink last = Identity(ClientSink(client));
       const Sink first = Identity(last);
       Expect(ClosedIn(first) == 0, "a new chain has closed filters");
       Close(last);
       Expect(ClosedIn(first) == 1, "a closed filter further on is not counted");
       Close(first);
       Expect(ClosedIn(first) == 2, "two closed filters count " + std::to_string(ClosedIn(first)));
     }},
    {"filters.reset", "KAPFilterInterface", "ResetChainState", "Opens all filters of the chain.",
     [] {
       Client client;
       const Sink last = Identity(ClientSink(client));
       const Sink first = Identity(last);
       Close(first);
       Close(last);
       Do<Filters, "ResetChainState">(first);
       for (const Sink* filter : {&first, &last}) {
         KAPError* const error = TryWrite(*filter, "abc");
         Expect(!error, "a filter is still closed: Write " + (error ? Returns(error) : ""));
       }
     }},
    {"filters.reverse", "KAPFilterInterface", "GetVellumcodeFilter",
     "The filter that reverses this one: one reference, or null and no error when there is none.",
     &CheckReverse},
    {"filters.jpeg", "KAPFilterInterface", "NewFilterJPEG", "As NewClientFilter, for a JPEG coder",
     [] { CheckClientFilter(&JPEGFilter); }},
    {"filters.image", "KAPFilterInterface", "SetImageParameters",
     "Forwards the image's size in pixels and its number of channels to a JPEG coder.",
     [] {
       Client client, target;
       const Sink filter = JPEGFilter(ClientSink(target), client);
       Do<Filters, "SetImageParameters">(filter, 640, 480, 3);
       Expect(client.fImage[0] == 640 && client.fImage[1] == 480 && client.fImage[2] == 3,
              "the coder gets other image parameters");
     }},
    {"filters.quality", "KAPFilterInterface", "SetCompressionParameters",
     "Forwards the quality to a JPEG coder, which defines its range.",
     [] {
       Client client, target;
       const Sink filter = JPEGFilter(ClientSink(target), client);
       Do<Filters, "SetCompressionParameters">(filter, 0.5f);
       Expect(client.fQuality > 0.49f && client.fQuality < 0.51f, "the coder gets another quality");
     }},
    {"filters.not-jpeg", "KAPFilterInterface", "SetImageParameters",
     "A call on a sink that is not a filter of the required kind is an error.",
     [] {
       Client client;
       const Sink filter = Identity(ClientSink(client));
       MustFail(Call<Filters, "SetImageParameters">(filter, 1, 1, 1),
                "SetImageParameters of an identity filter");
       MustFail(Call<Filters, "Close">(ClientSink(client)), "Close of a sink");
     }},
};

}  // namespace

std::span<const Check> FilterChecks() { return kFilters; }

}  // namespace KAPProbe
