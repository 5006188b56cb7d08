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
    OfferEcho(fHost);
  }
  ~MovingCounterTest() override { KAPClientTerminate(); }

  void RunWhileItMoves(const std::function<void(int)>& body) {
    RunOnThreads(body, [this] { MoveCounter(fHost); });
  }
};

TEST_F(MovingCounterTest, HostTables) {
  RunWhileItMoves([](int thread) {
    const std::string text = std::to_string(thread);
    for (int i = 0; i < 3000; ++i) {
      const CKAPStringAtom own(text.c_str()), shared("shared");
      ASSERT_STREQ((own + shared).Text(), (text + "shared").c_str());
      ASSERT_TRUE(CKAPError("m", text.c_str(), i).Matches(text.c_str(), i));
      const CKAPContainerHolder container;
      const KAPContainerBaseGeneric wrapper(container.Handle());
      ASSERT_EQ(EchoClient::Call<"First">() + EchoClient::Call<"Third">(), 4);
    }
  });
}

TEST_F(MovingCounterTest, MethodTables) {
  TDelVTabList<EchoInterface> tables;
  const char* const implementations[] = {"A", "B", "C"};
  std::atomic<const void*> tableOfA = nullptr;
  void* const third = EchoProc(fHost, 2);
  RunWhileItMoves([&](int thread) {
    for (int i = 0; i < 5000; ++i) {
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

}  // namespace
