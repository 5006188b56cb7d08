// SPDX-License-Identifier: MIT
#include <mutex>

#include "RuntimeTest.h"
#include "Threads.h"

namespace {

using namespace KAP_T_MT;

TEST(WaitMutexTest, IsRecursiveAndExclusive) {
  TOQWaitMutex mutex;
  long sum = 0;
  RunOnThreads([&](int) {
    for (int i = 0; i < 5000; ++i) {
      const std::lock_guard outer(mutex);
      {
        const std::lock_guard inner(mutex);
        ++sum;
      }
      ++sum;  // still alone
    }
  });
  EXPECT_EQ(sum, 2 * 5000 * kThreads);
}

class MovingCounterTest : public HostTest {
 protected:
  MovingCounterTest() {
    EXPECT_TRUE(KAPClientInit(fHost.GetProcAddress()));
    RegisterEcho(fHost);
  }
  ~MovingCounterTest() override { KAPClientTerminate(); }

  void SoakWhileItMoves(const std::function<void(int)>& body) {
    Soak(body, [this] { MoveCounter(fHost); });
  }
};

TEST_F(MovingCounterTest, HostTables) {
  SoakWhileItMoves([](int thread) {
    const std::string text = std::to_string(thread);
    const CKAPStringAtom own(text.c_str()), shared("shared");
    ASSERT_STREQ((own + shared).Text(), (text + "shared").c_str());
    ASSERT_TRUE(CKAPError("m", text.c_str(), thread).Matches(text.c_str(), thread));
    const CKAPContainerHolder container;
    const KAPContainerBaseGeneric wrapper(container.Handle());
    ASSERT_EQ(EchoClient::Call<"First">() + EchoClient::Call<"Third">(), 4);
  });
}

TEST_F(MovingCounterTest, MethodTables) {
  TDelVTabList<EchoInterface> tables;
  const char* const implementations[] = {"A", "B", "C"};
  std::atomic<const void*> tableOfA = nullptr;
  void* const third = EchoProc(fHost, 2);
  SoakWhileItMoves([&](int thread) {
    for (int i = 0; i < 24; ++i) {
      const int which = (thread + i / 8) % 3;
      const CKAPContainerHolder container(MakeContainer(implementations[which]), true);
      const auto* slots = tables.InitVTab(container.Handle());
      ASSERT_NE(slots, nullptr);
      ASSERT_EQ(slots[2], third);
      if (which != 0) continue;
      const void* before = nullptr;
      ASSERT_TRUE(tableOfA.compare_exchange_strong(before, slots) || before == slots);
    }
  });
}

// Threads share atoms, an error, a container and tables while an interface comes and goes. A call
// reaches a procedure that is registered, or was a moment ago, or fails as it should.
TEST_F(MovingCounterTest, InterfacesComeAndGo) {
  TDelVTabList<EchoInterface> tables;
  const CKAPContainerHolder container(MakeContainer("Impl"), true);
  const CKAPStringAtom atom("shared");
  const CKAPError error("message", "shared", 7);
  const auto useAll = [&](int) {
    const CKAPStringAtom copy(atom);
    ASSERT_EQ(copy.Text(), CKAPStringAtom("shared").Text());
    ASSERT_TRUE(CKAPError(error).Matches("shared", 7));
    int results[2] = {2, 2};
    const std::string thrown[] = {
        Thrown([&] { results[0] = EchoClient::Call<"Second">(); }),
        Thrown([&] { results[1] = tables.Method<"Second">(container.Handle())(); })};
    ASSERT_TRUE(thrown[0].empty() || thrown[0] == kMissingProcedure) << thrown[0];
    ASSERT_TRUE(thrown[1].empty() || thrown[1] == kInvalidContainer) << thrown[1];
    for (const int result : results) ASSERT_TRUE(result == 2 || result == 12) << result;
  };
  Soak(useAll, [this, round = 0]() mutable {
    fHost.Unregister(EchoInterface::kName);
    ++round % 2 ? RegisterEcho<10>(fHost) : RegisterEcho(fHost);
  });
  RegisterEcho<10>(fHost);
  MoveCounter(fHost);
  EXPECT_EQ(EchoClient::Call<"Second">(), 12);
  EXPECT_EQ(tables.Method<"Second">(container.Handle())(), 12);
}

}  // namespace
