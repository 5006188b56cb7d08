// SPDX-License-Identifier: MIT
#include "probe/Checks.h"
#include "probe/Services.h"

// Sinks, filters and progress.

namespace KAPProbe {

namespace {

using Filters = KAPFilterInterface;
using Progresses = KAPProgressInterface;

// What the procedures of a client sink, filter or progress object have been given.
struct Client {
  std::string fBytes;
  int fDeleted = 0;
  int fClosed = 0;
  KAPError* fError = nullptr;  // what the next call returns
  int fImage[3] = {};
  float fQuality = 0;
  float fFraction = -1;
  std::string fText;
  int fFlag = 0;
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
KAPError* ReverseProc(KAPFilter** out, void*) {
  *out = nullptr;
  return nullptr;
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
KAPError* UpdateProc(void* client, float fraction, const char* text, int flag) {
  Of(client).fFraction = fraction;
  Of(client).fText = text ? text : "(null)";
  Of(client).fFlag = flag;
  return TakeError(client);
}

KAPError* NewError() {
  return Call<KAPErrorInterface, "NewError">("refused", "Probe", 7l, nullptr, nullptr);
}

Sink ClientSink(Client& client) {
  Sink sink;
  MustSucceed(Call<Filters, "NewClientDataSink">(sink.Place(), static_cast<void*>(&client),
                                                 &WriteProc, &DeleteProc),
              "NewClientDataSink");
  return sink;
}

Sink ClientFilter(KAPDataSink* target, Client& client) {
  Sink filter;
  MustSucceed(Call<Filters, "NewClientFilter">(filter.Place(), target, static_cast<void*>(&client),
                                               &WriteProc, &DeleteProc, &CloseProc, &ReverseProc),
              "NewClientFilter");
  return filter;
}

Sink Identity(KAPDataSink* target) {
  Sink filter;
  MustSucceed(Call<Filters, "NewIdentityFilter">(filter.Place(), target), "NewIdentityFilter");
  return filter;
}

KAPError* TryWrite(const Sink& sink, const std::string& bytes) {
  return Call<Filters, "Write">(sink, reinterpret_cast<const unsigned char*>(bytes.data()),
                                bytes.size());
}

void Close(const Sink& filter) { MustSucceed(Call<Filters, "Close">(filter), "Close"); }

unsigned long ClosedIn(const Sink& filter) {
  unsigned long state = ~0ul;
  MustSucceed(Call<Filters, "GetChainState">(&state, filter), "GetChainState");
  return state;
}

constexpr Check kFilters[] = {
    {"filters.null", "KAPFilterInterface", "NewNullDataSink",
     "A sink that discards its bytes: one reference.",
     [] {
       Sink sink;
       MustSucceed(Call<Filters, "NewNullDataSink">(sink.Place()), "NewNullDataSink");
       MustSucceed(TryWrite(sink, "bytes"), "Write");
     }},
    {"filters.client", "KAPFilterInterface", "NewClientDataSink",
     "A sink that forwards to `client`: one reference.",
     [] {
       Client client;
       Sink sink = ClientSink(client);
       MustSucceed(TryWrite(sink, "abc"), "Write");
       MustSucceed(TryWrite(sink, "def"), "Write");
       Expect(client.fBytes == "abcdef", "the client gets \"" + client.fBytes + '"');
       Call<Filters, "AddRef">(sink);
       Sink second(sink.Get());
       sink.Reset();
       Expect(client.fDeleted == 0, "the client is deleted while a reference is left");
       second.Reset();
       Expect(client.fDeleted == 1,
              "the last release deletes the client " + std::to_string(client.fDeleted) + " times");
     }},
    {"filters.errors", "KAPFilterInterface", "Write",
     "Writes all `count` bytes, or returns an error, for a closed filter among others.",
     [] {
       Client client;
       const Sink sink = ClientSink(client);
       client.fError = NewError();
       MustFail(TryWrite(sink, "abc"), "Write to a client that returns an error");
       const Sink filter = Identity(sink);
       Close(filter);
       MustFail(TryWrite(filter, "abc"), "Write to a closed filter");
     }},
    {"filters.identity", "KAPFilterInterface", "NewIdentityFilter",
     "A filter that writes its bytes to `target` unchanged: one reference.",
     [] {
       Client client;
       const Sink sink = ClientSink(client);
       MustSucceed(TryWrite(Identity(sink), "abc"), "Write");
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
       Expect(ClosedIn(filter) == 0, "the filter is closed");
       MustSucceed(TryWrite(filter, "abc"), "Write");
     }},
    {"filters.retarget", "KAPFilterInterface", "SetDataSink",
     "Replaces the target; the filter holds a reference to the new one.",
     [] {
       Client first, second;
       const Sink filter = Identity(ClientSink(first));
       MustSucceed(Call<Filters, "SetDataSink">(filter, ClientSink(second)), "SetDataSink");
       Expect(first.fDeleted == 1, "the old target stays");
       Expect(second.fDeleted == 0, "the new target is deleted although the filter lives");
       MustSucceed(TryWrite(filter, "abc"), "Write");
       Expect(second.fBytes == "abc", "the new target gets other bytes");
     }},
    {"filters.ring", "KAPFilterInterface", "SetDataSink",
     "An error when the filter would lead to itself.",
     [] {
       Client client;
       const Sink last = Identity(ClientSink(client));
       const Sink first = Identity(last);
       MustFail(Call<Filters, "SetDataSink">(last, first), "SetDataSink that makes a ring");
     }},
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
       MustSucceed(Call<Filters, "ResetChainState">(first), "ResetChainState");
       Expect(ClosedIn(first) == 0, "a filter is still closed");
       MustSucceed(TryWrite(first, "abc"), "Write");
     }},
    {"filters.reverse", "KAPFilterInterface", "GetVellumcodeFilter",
     "The filter that reverses this one: one reference, or null and no error when there is none.",
     [] {
       Client client, target;
       const Sink filter = ClientFilter(ClientSink(target), client);
       KAPFilter* out = filter;  // not null, to see whether the call clears it
       MustSucceed(Call<Filters, "GetVellumcodeFilter">(&out, filter), "GetVellumcodeFilter");
       Expect(!out, "a filter without a reverse has one");
     }},
    {"filters.jpeg", "KAPFilterInterface", "NewFilterJPEG",
     "As NewClientFilter, for a JPEG coder, which is the client's: the host only forwards the"
     " parameters.",
     [] {
       Client client, target;
       Sink filter;
       MustSucceed(Call<Filters, "NewFilterJPEG">(
                       filter.Place(), ClientSink(target), static_cast<void*>(&client), &WriteProc,
                       &DeleteProc, &CloseProc, &ReverseProc, &ImageProc, &QualityProc),
                   "NewFilterJPEG");
       MustSucceed(Call<Filters, "SetImageParameters">(filter, 640, 480, 3), "SetImageParameters");
       MustSucceed(Call<Filters, "SetCompressionParameters">(filter, 0.5f),
                   "SetCompressionParameters");
       Expect(client.fImage[0] == 640 && client.fImage[1] == 480 && client.fImage[2] == 3,
              "the coder gets other image parameters");
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

constexpr Check kProgress[] = {
    {"progress.null", "KAPProgressInterface", "NewNullProgress",
     "A progress object that ignores its updates: one reference.",
     [] {
       const Progress progress(Call<Progresses, "NewNullProgress">());
       Expect(progress, "NewNullProgress returns null");
       MustSucceed(Call<Progresses, "Update">(progress, 0.5f, "half", 1), "Update");
     }},
    {"progress.client", "KAPProgressInterface", "NewClientProgress",
     "A progress object that forwards to `client`: one reference.",
     [] {
       Client client;
       const Progress progress(Call<Progresses, "NewClientProgress">(static_cast<void*>(&client),
                                                                     &UpdateProc, &DeleteProc));
       Expect(progress, "NewClientProgress returns null");
       MustSucceed(Call<Progresses, "Update">(progress, 0.5f, "half", 3), "Update");
       Expect(client.fFraction > 0.49f && client.fFraction < 0.51f && client.fText == "half" &&
                  client.fFlag == 3,
              "the client gets other arguments");
       MustSucceed(Call<Progresses, "Update">(progress, 1.0f, nullptr, 0), "Update without a text");
       Expect(client.fText == "(null)", "a null text becomes \"" + client.fText + '"');
     }},
    {"progress.last-release", "KAPProgressInterface", "NewClientProgress",
     "The last release passes the client to `deleteClient`.",
     [] {
       Client client;
       Progress progress(Call<Progresses, "NewClientProgress">(static_cast<void*>(&client),
                                                               &UpdateProc, &DeleteProc));
       Call<Progresses, "AddRef">(progress);
       Progress second(progress.Get());
       progress.Reset();
       Expect(client.fDeleted == 0, "the client is deleted while a reference is left");
       second.Reset();
       Expect(client.fDeleted == 1,
              "the last release deletes the client " + std::to_string(client.fDeleted) + " times");
     }},
    {"progress.stop", "KAPProgressInterface", "Update", "An error asks the caller to stop.",
     [] {
       Client client;
       const Progress progress(Call<Progresses, "NewClientProgress">(static_cast<void*>(&client),
                                                                     &UpdateProc, &DeleteProc));
       client.fError = NewError();
       MustFail(Call<Progresses, "Update">(progress, 0.5f, "half", 0),
                "Update of a client that returns an error");
     }},
};

}  // namespace

std::span<const Check> FilterChecks() { return kFilters; }
std::span<const Check> ProgressChecks() { return kProgress; }

}  // namespace KAPProbe
