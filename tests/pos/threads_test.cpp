#include "Threads.h"
#include "World.h"

namespace {

using namespace KAP_T_MT;

constexpr int kRounds = 150;

// One document that does not change, read by all threads through procedures and wrappers, while the
// counter moves under them, which makes every table stale.
TEST_F(WrapperTest, ManyThreadsReadOneDocument) {
  std::string text;
  for (int i = 0; i < 20; ++i) {
    text += " k" + std::to_string(i) + " < number 5 words [(one) two `0041`] list [[1] 2] >";
  }
  const Object document = Read(("<" + text + ">").c_str());
  const std::string shown = Show(document);

  const auto read = [&](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      const Object clone = Own(Call<POSObjectInterface, "Clone">(document.get()));
      ASSERT_TRUE(IsEqual(clone, document));
      ASSERT_EQ(Show(DeepGet(document, "k7.list[1]")), "2");
      if (round % 10 == 0) {
        ASSERT_EQ(Show(clone), shown);
      }
      const CPOSDict dict(CPOSObject(document.get()), false);
      ASSERT_EQ(dict.NumKeys(), 20u);
      ASSERT_EQ(dict.DeepGetNumber("k3.number", false).Get(), 5);
      ASSERT_TRUE(dict["k1"].Clone().IsEqual(dict["k2"]));
      CPOSArray own = CPOSArray::New();
      for (int i = 0; i < 10; ++i) own.Append(CPOSNumber(thread));
      ASSERT_TRUE(own.IsEqual(own.Clone()));
    }
  };
  RunOnThreads(read, [this] { MoveUnregisterCounter(); });
  EXPECT_EQ(Show(document), shown);
}

}  // namespace
