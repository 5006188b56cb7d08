// SPDX-License-Identifier: MIT
#include "TestHost.h"

namespace {

using Filters = KAP_T_MT::KAPFilterInterface;

// The calls of a component's object, and the error that each procedure returns.
struct Client {
  std::string fCalls;
  KAPError* fError = nullptr;
};

KAPError* Done(void* client, const char* call) {
  static_cast<Client*>(client)->fCalls += call;
  return static_cast<Client*>(client)->fError;
}
KAPError* WriteProc(void* client, const unsigned char*, std::size_t) {
  return Done(client, "write ");
}
KAPError* Delete(void* client) { return Done(client, "delete "); }
KAPError* Close(void* client) { return Done(client, "close "); }
KAPError* Code(KAPFilter** out, void* client) {
  return *out = reinterpret_cast<KAPFilter*>(client), Done(client, "code ");
}

class FilterTest : public HostTest {
 protected:
  template <KAP_T_MT::TKAPName Method, class... Args>
  std::string Do(Args... args) {
    return fHost.Do<Filters, Method>(args...);
  }
  template <KAP_T_MT::TKAPName Method, class... Args>
  KAPDataSink* New(Args... args) {
    KAPDataSink* sink = nullptr;
    EXPECT_EQ(Do<Method>(&sink, args...), "");
    return sink;
  }
  std::string Write(KAPDataSink* sink) { return Do<"Write">(sink, nullptr, 0ul); }
  void Release(KAPDataSink* sink) { fHost.Call<Filters, "Release">(sink); }
};

TEST_F(FilterTest, Chains) {
  Client client;
  KAPDataSink* const end = New<"NewClientDataSink">(&client, &WriteProc, &Delete);
  KAPDataSink* const second = New<"NewIdentityFilter">(end);
  KAPDataSink* const first = New<"NewIdentityFilter">(second);
  Release(end);
  EXPECT_EQ(fHost.TakeSnapshot().Describe(), "data sinks: 3 (2 references)\n");
  EXPECT_EQ(Write(first), "");
  EXPECT_EQ(Do<"SetDataSink">(second, first), "a filter cannot be its own target");
  EXPECT_EQ((fHost.Call<Filters, "PeekTarget">(second)), end);
  KAPFilter* code = end;
  EXPECT_EQ(Do<"GetVellumcodeFilter">(&code, second), "");
  EXPECT_EQ(code, nullptr);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(Do<"Close">(second), "");
  EXPECT_EQ(Write(first), "the filter is closed");
  unsigned long state = 99;
  EXPECT_EQ(Do<"GetChainState">(&state, first), "");
  EXPECT_EQ(state, 1u);
  EXPECT_EQ(Do<"ResetChainState">(first), "");
  EXPECT_EQ(Write(first), "");
  KAPDataSink* const null = New<"NewNullDataSink">();
  EXPECT_EQ(Do<"SetDataSink">(second, null), "");
  EXPECT_EQ(client.fCalls, "write write delete ");
  EXPECT_EQ(Do<"Close">(null), "invalid filter");
  EXPECT_EQ(Do<"SetImageParameters">(first, 1, 2, 3), "invalid filter");
  for (KAPDataSink* sink : {first, second, null}) Release(sink);
}

TEST_F(FilterTest, LongChains) {
  Client client;
  KAPDataSink* const end = New<"NewClientDataSink">(&client, &WriteProc, &Delete);
  KAPDataSink* first = end;
  for (int i = 0; i < 200000; ++i) {
    KAPDataSink* const filter = New<"NewIdentityFilter">(first);
    Release(std::exchange(first, filter));
  }
  EXPECT_EQ(Write(first), "");
  EXPECT_EQ(client.fCalls, "write ");
  EXPECT_EQ(Do<"Close">(end), "invalid filter");
  Release(first);
  EXPECT_EQ(client.fCalls, "write delete ");
}

// After a fault the object belongs to its maker; an error of its delete procedure is reported.
TEST_F(FilterTest, FailingClients) {
  Client client;
  KAPDataSink* const target = New<"NewNullDataSink">();
  KAPDataSink* filter = target;
  fHost.FailCall(KAP_T_MT::KAPFault::kSink, 1);
  EXPECT_EQ(Do<"NewClientFilter">(&filter, target, &client, &WriteProc, &Delete, &Close, &Code),
            "out of memory");
  EXPECT_EQ(filter, nullptr);
  filter = New<"NewClientFilter">(target, &client, &WriteProc, &Delete, &Close, &Code);
  client.fError = fHost.Errors<"NewError">("failed", "test", 1L, nullptr, nullptr);
  for (int i = 0; i < 2; ++i) fHost.Errors<"AddRef">(client.fError);
  EXPECT_EQ(Do<"Close">(filter), "failed");
  KAPFilter* code = target;
  EXPECT_EQ(Do<"GetVellumcodeFilter">(&code, filter), "failed");
  EXPECT_EQ(code, nullptr);
  KAPError* const error = std::exchange(client.fError, nullptr);
  EXPECT_EQ(Write(filter), "");  // it could not be closed
  client.fError = error;
  Release(filter);
  EXPECT_EQ(fHost.TakeReport(), "failed");
  KAPDataSink* const sink = New<"NewClientDataSink">(&client, &WriteProc, &Delete);
  client.fError = fHost.Errors<"NewError">(nullptr, "test", 1L, nullptr, nullptr);
  Release(sink);
  EXPECT_EQ(fHost.TakeReport(), "(an error without a message)");
  EXPECT_EQ(client.fCalls, "close code write delete delete ");
  Release(target);
}

}  // namespace
