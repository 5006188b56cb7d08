// SPDX-License-Identifier: MIT
#include <functional>

#include "StreamerWorld.h"

// Streams whose "Write" changes or releases what is being written.

namespace {

using namespace KAP_T_MT;

class ChangingTest : public StreamerTest {
 protected:
  // Keeps the bytes written, and runs `change` in its call number `at`.
  struct Sink {
    std::string bytes = {};
    int calls = 0;
    int at = 0;
    std::function<void()> change = {};
    std::function<void()> release = {};  // releases the stream
  };

  // What the library writes to the sink, without the tag.
  std::string Written(const Object& object, Sink& sink) {
    const auto write = [](void* client, const unsigned char* bytes, std::size_t count) {
      auto& self = *static_cast<Sink*>(client);
      self.bytes.append(bytes, bytes + count);
      if (++self.calls == self.at) self.change();
      return static_cast<KAPError*>(nullptr);
    };
    // Serialize only writes.
    const auto none = [](auto...) { return static_cast<KAPError*>(nullptr); };
    const KAPClientReadProc read = none;
    const KAPClientDeleteProc deleteClient = none;
    const KAPClientCreateStreamProc create = none;
    const KAPClientRewindProc rewind = none;
    const KAPClientMarkProc mark = none;
    const KAPClientSeekProc seek = none;
    KAPContainer* stream = nullptr;
    EXPECT_EQ((Do<Factory, "NewClientPositionableStream">(&stream, static_cast<void*>(&sink), read,
                                                          +write, deleteClient, create, rewind,
                                                          create, mark, seek)),
              "");
    Object owned = Own(stream);
    sink.release = [&owned] { owned.reset(); };
    Serialize(owned, object);
    sink.release = {};
    return sink.bytes;
  }

  // A string of so many bytes.
  Object Long(char c, std::size_t size) const {
    return Own(Call<POSStringInterface, "NewPOSString">(std::string(size, c).c_str()));
  }
  void Append(const Object& array, const Object& element) const {
    Call<POSArrayInterface, "Append">(array.get(), element.get());
  }
};

// The tag takes two calls, so the third one is the first that interrupts a value.
TEST_F(ChangingTest, ValueUnderWayIsWrittenWhole) {
  const std::string x(300, 'x');
  const std::string y(300, 'y');
  const Object array = Read("[]");
  for (const char c : {'x', 'y', 'z'}) Append(array, Long(c, 300));
  Sink sink = {.at = 3, .change = [&] { Empty(array); }};
  EXPECT_EQ(Outcome(Written(array, sink)), "[\"" + x + "\" \"" + y + "\"]");

  const Object dict = Read("< zz 1 >");
  Put(dict, "a", Long('x', 300));
  Put(dict, std::string(300, 'k').c_str(), Long('y', 300));
  sink = {.at = 3, .change = [&] { Empty(dict); }};  // in the middle of the key
  EXPECT_EQ(Outcome(Written(dict, sink)),
            "<a \"" + x + "\" " + std::string(300, 'k') + " \"" + y + "\">");
}

TEST_F(ChangingTest, ObjectAndStreamAreReleased) {
  const std::string x(300, 'x');
  Object array = Read("[]");
  for (const char c : {'x', 'y'}) Append(array, Long(c, 300));
  Sink sink = {.at = 1, .change = [&] {
                 array.reset();
                 sink.release();
               }};
  EXPECT_EQ(Outcome(Written(array, sink)), "[\"" + x + "\" \"" + std::string(300, 'y') + "\"]");
}

// Values after a change are written as they are at that time.
TEST_F(ChangingTest, LaterValuesAsTheyAreThen) {
  const Object array = Read("[]");
  for (const char c : {'x', 'y', 'z'}) Append(array, Long(c, 300));
  Sink sink = {.at = 3, .change = [&] {
                 Call<POSArrayInterface, "SetAt">(array.get(), 2ul, Number(7).get());
                 Append(array, Read("[8]"));
               }};
  EXPECT_TRUE(Outcome(Written(array, sink)).ends_with("y\" 7 [8]]"));
  const Object dict = Read("< c 3 d 4 >");
  Put(dict, "a", Long('x', 300));
  Put(dict, "b", Long('y', 300));
  sink = {.at = 3, .change = [&] {
            for (const char* key : {"a", "b", "c"}) Remove(dict, key);
            Put(dict, "bb", Number(5));
          }};
  EXPECT_TRUE(Outcome(Written(dict, sink)).ends_with("y\" bb 5 d 4>"));
}

// The stream may also take the bytes between two elements.
TEST_F(ChangingTest, EmptiedAtTheEndOfALine) {
  for (std::size_t size = 0; size < 8; ++size) {
    SCOPED_TRACE(size);
    const Object array = Read("[]");
    Append(array, Long('x', size));
    for (int i = 0; i < 200; ++i) Append(array, Number(1));
    Sink sink = {.at = 3, .change = [&] { Empty(array); }};
    const std::string outcome = Outcome(Written(array, sink));
    EXPECT_TRUE(outcome.starts_with("[\"" + std::string(size, 'x') + "\" 1 1")) << outcome;
    EXPECT_TRUE(outcome.ends_with("1 1]") && outcome.size() < 300) << outcome;
  }
}

// Whenever the outermost container, or one inside it, is emptied: what is written can be read.
TEST_F(ChangingTest, WheneverItIsEmptied) {
  const std::string data(400, '\2');
  for (const char* path : {"", "a", "a[1].c"}) {
    bool reached = true;
    for (int at = 3; reached; ++at) {
      SCOPED_TRACE(std::string(path) + ", call " + std::to_string(at));
      const BalancedScope balanced(*this);
      const Object dict = Read("< a [1 < b (text) c [] > [] (more)] d < e 5 > >");
      for (const char* inner : {"a", "a[1].c", "a[2]"}) {
        const Object array = DeepGet(dict, inner);
        for (const char c : {'x', 'y'}) Append(array, Long(c, 200));
        Append(array, BinData("type", data));
        Append(array, Read("[[[7]]]"));
      }
      const auto empty = [&] { *path == '\0' ? Empty(dict) : Empty(DeepGet(dict, path)); };
      Sink sink = {.at = at, .change = empty};
      const std::string written = Written(dict, sink);
      EXPECT_EQ(Outcome(written).find("error"), std::string::npos);
      reached = sink.calls >= at;
    }
  }
}

}  // namespace
