// SPDX-License-Identifier: MIT
#include "StreamsTest.h"

namespace {

using KAP_T_MT::KAPFault;

// A component's stream object. Its procedures return an error when one is set.
struct Client {
  int fDeleted = 0;
  long fPosition = 0;
  std::size_t fReads = 1;  // what Read claims to have read
  KAPError* fError = nullptr;
  Client* fIndependent = nullptr;
};

Client& Of(void* client) { return *static_cast<Client*>(client); }
KAPError* ReadProc(std::size_t* out, void* client, unsigned char* buffer, std::size_t) {
  return *buffer = 'x', *out = Of(client).fReads, Of(client).fError;
}
KAPError* WriteProc(void* client, const unsigned char*, std::size_t count) {
  return Of(client).fPosition += static_cast<long>(count), Of(client).fError;
}
KAPError* DeleteProc(void* client) { return ++Of(client).fDeleted, Of(client).fError; }
KAPError* CreateProc(void** out, void* client) {
  return *out = Of(client).fIndependent, Of(client).fError;
}
KAPError* RewindProc(void* client) { return Of(client).fPosition = 0, Of(client).fError; }
KAPError* MarkProc(long* out, void* client) {
  return *out = Of(client).fPosition, Of(client).fError;
}
KAPError* SeekProc(void* client, long offset, int origin) {
  return Of(client).fPosition = offset * 10 + origin, Of(client).fError;
}

class ClientStreamTest : public StreamsTest {
 protected:
  // Makes a stream of capability 1 (simple) to 3 (positionable).
  KAPError* Make(KAPContainer** out, int capability, Client& client) {
    const auto simple = fHost.Proc<Factory, "NewClientSimpleStream">();
    const auto rewindable = fHost.Proc<Factory, "NewClientRewindableStream">();
    const auto positionable = fHost.Proc<Factory, "NewClientPositionableStream">();
    if (capability == 1) return simple(out, &client, &ReadProc, &WriteProc, &DeleteProc);
    if (capability == 2) {
      return rewindable(out, &client, &ReadProc, &WriteProc, &DeleteProc, &CreateProc, &RewindProc);
    }
    return positionable(out, &client, &ReadProc, &WriteProc, &DeleteProc, &CreateProc, &RewindProc,
                        &CreateProc, &MarkProc, &SeekProc);
  }
};

TEST_F(ClientStreamTest, EachCapabilityHasItsMethods) {
  const char* const invalid = "invalid container";
  KAPStringAtom* const mark[] = {fHost.Atom("Mark"), fHost.Atom("KAPPositionableStreamMarkProc")};
  for (int capability = 1; capability <= 3; ++capability) {
    Client client;
    KAPContainer* stream = nullptr;
    EXPECT_EQ(Make(&stream, capability, client), nullptr);
    EXPECT_EQ(Write(stream, "four"), "");
    EXPECT_EQ(Read(stream, 5), "x");
    EXPECT_EQ(Mark(stream), capability == 3 ? "4" : invalid);
    EXPECT_EQ(Rewind(stream), capability > 1 ? "" : invalid);
    EXPECT_EQ(Seek(stream, 3, 1), capability == 3 ? "" : invalid);
    EXPECT_EQ(client.fPosition, capability == 3 ? 31 : capability == 2 ? 0 : 4);
    client.fReads = 6;
    EXPECT_EQ(Read(stream, 5), "a client stream read more than it was asked for");
    void* method = nullptr;
    fHost.Containers<"GetMethod">(&method, stream, mark[0], mark[1], 1);
    EXPECT_EQ(method != nullptr, capability == 3);
    EXPECT_EQ(client.fDeleted, 0);
    Release(stream);
    EXPECT_EQ(client.fDeleted, 1);
  }
  for (KAPStringAtom* name : mark) fHost.Strings<"DeleteStringAtom">(name);
}

// After a fault a new object still belongs to its maker; the host deletes an independent one.
TEST_F(ClientStreamTest, FaultsAndErrors) {
  Client client, other;
  KAPContainer* stream = nullptr;
  for (const KAPFault kind : {KAPFault::kStream, KAPFault::kContainer}) {
    fHost.FailCall(kind, 1);
    EXPECT_EQ(fHost.TakeMessage(Make(&stream, 3, client)), "out of memory");
    EXPECT_EQ(client.fDeleted, 0);
    fHost.StopFaults();
  }
  EXPECT_EQ(Make(&stream, 3, client), nullptr);
  const auto create = fHost.Proc<Positionable, "CreateIndependentlyPositionableStream">();
  KAPContainer* out = stream;
  EXPECT_EQ(fHost.TakeMessage(create(&out, stream)),
            "a client stream returned no independent stream");
  client.fIndependent = &other;
  fHost.FailCall(KAPFault::kContainer, 1);
  EXPECT_EQ(fHost.TakeMessage(create(&out, stream)), "out of memory");
  EXPECT_EQ(other.fDeleted, 1);
  KAPContainer* const independent = NewIndependent(stream);

  client.fError = fHost.Errors<"NewError">("failed", "test", 1L, nullptr, nullptr);
  for (int i = 0; i < 3; ++i) fHost.Errors<"AddRef">(client.fError);
  EXPECT_EQ(fHost.TakeMessage(create(&out, stream)), "failed");
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(Read(stream, 1), "failed");
  EXPECT_EQ(Mark(stream), "failed");
  Release(stream);
  EXPECT_EQ(fHost.TakeReport(), "failed");
  EXPECT_EQ(Seek(independent, 5), "");
  EXPECT_EQ(other.fPosition, 50);
  Release(independent);
  EXPECT_EQ(other.fDeleted, 2);
}

}  // namespace
