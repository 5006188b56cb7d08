// SPDX-License-Identifier: MIT
#include "Threads.h"
#include "StreamerWorld.h"

namespace {

// One streamer, one object, a stream for each thread.
TEST_F(StreamerTest, ManyThreadsUseOneStreamer) {
  const Object everything = Everything();
  const std::string document = Document(everything);
  const auto work = [&](int) {
    ASSERT_EQ(Document(everything), document);
    ASSERT_TRUE(IsEqual(Deserialize(NewBuffer(document)), everything));
  };
  Soak(work, [this] { MoveUnregisterCounter(); });
}

}  // namespace
