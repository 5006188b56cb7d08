#include "Threads.h"
#include "StreamerWorld.h"

namespace {

// One streamer, one object, a stream for each thread.
TEST_F(StreamerTest, ManyThreadsUseOneStreamer) {
  const Object everything = Everything();
  const std::string document = Document(everything);
  const auto work = [&](int) {
    for (int round = 0; round < 50; ++round) {
      ASSERT_EQ(Document(everything), document);
      ASSERT_TRUE(IsEqual(Deserialize(NewBuffer(document)), everything));
    }
  };
  RunOnThreads(work, [this] { MoveUnregisterCounter(); });
}

}  // namespace
