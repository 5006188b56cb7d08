// SPDX-License-Identifier: MIT
#include "StreamsTest.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <functional>
#include <random>

namespace {

using KAP_T_MT::KAPFault;

class FileStreamsTest : public StreamsTest {
 protected:
  ~FileStreamsTest() override { std::filesystem::remove(fPath); }

  const std::string fPath =
      std::filesystem::temp_directory_path() / ("stream" + std::to_string(getpid()));
};

// The same operations on a stream and on a string with a position, in sizes around that of a file's
// buffer; sometimes through a second stream over the same bytes.
TEST_F(FileStreamsTest, AgreeWithAModel) {
  const std::size_t sizes[] = {0, 1, 16, 100, 16383, 16384, 16385, 70000};
  for (const bool file : {false, true}) {
    std::mt19937 random(20);
    KAPContainer* streams[2] = {file ? NewFile(fPath, "w+b") : NewMemory(), nullptr};
    std::size_t positions[2] = {};
    std::string bytes;
    for (int step = 0; step < 3000; ++step) {
      SCOPED_TRACE(testing::Message() << (file ? "file" : "memory") << ", step " << step);
      if (step % 500 == 250) streams[1] = NewIndependent(streams[0]), positions[1] = 0;
      if (step % 500 == 400) Release(std::exchange(streams[1], nullptr));
      const std::size_t which = streams[1] ? random() % 2 : 0;
      KAPContainer* const stream = streams[which];
      std::size_t& position = positions[which];
      const std::size_t count = random() % 3 == 0 ? sizes[random() % 8] : random() % 40;
      if (const auto action = random() % 4; action == 0) {
        const std::string text(count, static_cast<char>('a' + random() % 26));
        ASSERT_EQ(Write(stream, text), "");
        if (count != 0) bytes.resize(std::max(bytes.size(), position + count));
        if (count != 0) bytes.replace(position, count, text);
        position += count;
      } else if (action == 1) {
        const std::string expected = position < bytes.size() ? bytes.substr(position, count) : "";
        ASSERT_TRUE(Read(stream, count) == expected);
        position += expected.size();
      } else {
        const std::size_t back = action == 2 ? random() % 20000 : bytes.size() / 2;
        const std::size_t from = action == 2 ? position : bytes.size() + random() % 2 * 50;
        position = from - std::min(from, back);
        const std::size_t origin = action == 2 ? from : bytes.size();
        ASSERT_EQ(Seek(stream, static_cast<long>(position - origin), action == 2 ? 1 : 2), "");
        ASSERT_EQ(Mark(stream), std::to_string(position));
      }
    }
    for (KAPContainer* stream : streams) Release(stream);
    EXPECT_TRUE(!file || std::filesystem::file_size(fPath) == bytes.size());
  }
}

TEST_F(FileStreamsTest, Bounds) {
  for (KAPContainer* stream : {NewMemory(), NewFile(fPath, "w+")}) {
    EXPECT_EQ(Write(stream, "12345"), "");
    EXPECT_EQ(Seek(stream, 2), "");
    EXPECT_EQ(Seek(stream, -3, 1), "seek before the start of the stream");
    EXPECT_EQ(Seek(stream, -6, 2), "seek before the start of the stream");
    EXPECT_EQ(Seek(stream, LONG_MAX, 1), "seek out of range");
    EXPECT_EQ(Seek(stream, 0, 3), "unknown origin of a seek");
    EXPECT_EQ(Mark(stream), "2");
    EXPECT_EQ(Seek(stream, LONG_MAX), "");
    EXPECT_EQ(Read(stream, 10), "");
    EXPECT_NE(Write(stream, "x"), "");
    EXPECT_EQ(Mark(stream), std::to_string(LONG_MAX));
    EXPECT_EQ(Rewind(stream), "");
    EXPECT_EQ((fHost.Do<Simple, "Write">(stream, nullptr, 1ul)), "invalid argument");
    std::size_t count = 9;
    EXPECT_EQ((fHost.Do<Simple, "Read">(&count, stream, nullptr, 0ul)), "");
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(Read(stream, 10), "12345");
    Release(stream);
  }
}

TEST_F(FileStreamsTest, Modes) {
  const std::string badWrite = "cannot write \"" + fPath + "\": Bad file descriptor";
  const std::string badRead = "cannot read \"" + fPath + "\": Bad file descriptor";
  const struct {
    const char* mode;
    std::string read, write, after;  // of a file that holds "old"; "+" is written
  } rows[] = {{"r", "old", badWrite, "old"}, {"rbe+", "old", "", "old+"},
              {"w", badRead, "", "+"},       {"w+b", "", "", "+"},
              {"a", badRead, "", "old+"},    {"a+", "old", "", "old+"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.mode);
    KAPContainer* stream = NewFile(fPath, "w");
    Write(stream, "old");
    Release(stream);
    stream = NewFile(fPath, row.mode);
    EXPECT_EQ(fHost.TakeSnapshot().Of(KAP_T_MT::KAPResource::kFile, fPath).fNumber, 1);
    EXPECT_EQ(Read(stream, 10), row.read);
    EXPECT_EQ(Write(stream, "+"), row.write);
    EXPECT_EQ(Seek(stream, 0, 2), "");
    EXPECT_EQ(Mark(stream), std::to_string(row.after.size()));
    Release(stream);
    stream = NewFile(fPath, "r");
    EXPECT_EQ(Read(stream, 10), row.after);
    Release(stream);
  }
  const std::pair<const char*, int> failures[] = {
      {"wx", EEXIST}, {"rx", EINVAL}, {"q", EINVAL}, {"r?", EINVAL}, {"r", ENOENT}};
  for (const auto& [mode, code] : failures) {
    if (code == ENOENT) std::filesystem::remove(fPath);
    KAPContainer* stream = reinterpret_cast<KAPContainer*>(this);
    KAPError* const error =
        fHost.Call<Factory, "NewPositionableFileStream">(&stream, fPath.c_str(), mode);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(fHost.Errors<"GetID">(error), code);
    EXPECT_EQ(fHost.TakeMessage(error), "cannot open \"" + fPath + "\": " + std::strerror(code));
  }
}

// A stream that cannot be made changes no file.
TEST_F(FileStreamsTest, RefusedStreams) {
  for (const char* const old : {"old", ""}) {
    KAPContainer* stream = NewFile(fPath, "w");
    Write(stream, old);
    Release(stream);
    if (*old == '\0') std::filesystem::remove(fPath);
    fHost.FailCall(KAPFault::kContainer, 1);
    EXPECT_EQ((fHost.Do<Factory, "NewPositionableFileStream">(&stream, fPath.c_str(), "w")),
              "out of memory");
    fHost.StopFaults();
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(std::filesystem::exists(fPath), *old != '\0');
    EXPECT_TRUE(*old == '\0' || std::filesystem::file_size(fPath) == 3);
  }
}

// Bytes that the system does not take are an error of the call that writes them, or of the release.
TEST_F(StreamsTest, FullDisk) {
  const char* const message = "cannot write \"/dev/full\": No space left on device";
  const std::string large(20000, 'x');
  const std::function<std::string(KAPContainer*)> uses[] = {
      [&](KAPContainer* stream) { return Write(stream, large); },
      [&](KAPContainer* stream) { return Read(stream, 1); },
      [&](KAPContainer* stream) { return Read(stream, large.size()); },
      [&](KAPContainer* stream) {
        EXPECT_EQ(Seek(stream, 100), "");
        const std::string error = Write(stream, "far");
        EXPECT_EQ(Seek(stream, 5), "");
        return error;
      },
      [&](KAPContainer* stream) {
        KAPContainer* out = stream;
        return fHost.Do<Positionable, "CreateIndependentlyPositionableStream">(&out, stream);
      }};
  for (const auto& use : uses) {
    KAPContainer* const stream = NewFile("/dev/full", "w+");
    EXPECT_EQ(Write(stream, "waits"), "");
    EXPECT_EQ(use(stream), message);
    EXPECT_EQ(Mark(stream), "5");
    Release(stream);
    EXPECT_EQ(fHost.Reports(), std::vector<std::string>{message});
    EXPECT_EQ(fHost.TakeReport(), message);
  }
  KAPContainer* const stream = NewFile("/dev/full", "w");
  EXPECT_EQ(Write(stream, large), message);  // nothing waits
  Release(stream);
}

// A pipe has no positions, and a read returns what there is.
TEST_F(StreamsTest, Pipes) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string paths[] = {"/proc/self/fd/" + std::to_string(ends[0]),
                               "/proc/self/fd/" + std::to_string(ends[1])};
  KAPContainer* const in = NewFile(paths[0], "r");
  KAPContainer* const out = NewFile(paths[1], "w");
  EXPECT_EQ(Write(out, "12345"), "");
  EXPECT_EQ(Seek(out, 0), "cannot seek in \"" + paths[1] + "\": Illegal seek");
  Release(out);
  KAPContainer* const more = NewFile(paths[1], "a");
  EXPECT_EQ(Write(more, "6"), "");
  Release(more);
  EXPECT_EQ(Read(in, 3), "123");
  EXPECT_EQ(Read(in, 9), "456");
  Release(in);
  for (const int end : ends) close(end);
}

TEST_F(StreamsTest, UnreadableFiles) {
  KAPContainer* const stream = NewFile("/proc/self/mem", "r");
  EXPECT_EQ(Read(stream, 10), "cannot read \"/proc/self/mem\": Input/output error");
  EXPECT_EQ(Mark(stream), "0");
  Release(stream);
}

TEST_F(StreamsTest, Handles) {
  KAPContainer* const original = NewMemory();
  KAPStringAtom* const name = fHost.Containers<"GetSignature">(original);
  KAPContainer* impostor = nullptr;
  KAPContainer* clone = nullptr;
  fHost.Containers<"NewFullContainer">(&impostor, this, name, name, nullptr);
  fHost.Containers<"CloneContainer">(&clone, original);
  EXPECT_EQ(Write(nullptr, "x"), "invalid container");
  EXPECT_EQ(Read(impostor, 1), "invalid container");
  EXPECT_EQ(Write(clone, "x"), "");
  for (KAPContainer* handle : {impostor, original, clone}) Release(handle);
  fHost.Strings<"DeleteStringAtom">(name);
}

TEST_F(StreamsTest, FaultsLimitsAndLog) {
  KAPContainer* const stream = New<Factory, "NewPositionableBufferStream">(
      reinterpret_cast<const unsigned char*>("12345"), 5ul);
  EXPECT_EQ(Write(stream, "x"), "a buffer stream is read-only");
  fHost.FailCall(KAPFault::kSeek, 2);
  fHost.FailCall(KAPFault::kMark, 1);
  fHost.LimitReads(2);
  fHost.LogStreamCalls();
  EXPECT_EQ(Read(stream, 4), "12");
  EXPECT_EQ(Seek(stream, -1, 1), "");
  EXPECT_EQ(Rewind(stream), "out of memory");
  EXPECT_EQ(Mark(stream), "out of memory");
  fHost.StopFaults();
  EXPECT_EQ(Mark(stream), "1");
  fHost.LimitReads(0);
  EXPECT_EQ(Read(stream, 9), "2");
  fHost.StopFaults();
  EXPECT_EQ(Read(stream, 9), "345");
  EXPECT_EQ((fHost.Do<Simple, "Read">(nullptr, stream, nullptr, 1ul)), "invalid argument");
  EXPECT_EQ((fHost.Do<Positionable, "Mark">(nullptr, stream)), "invalid argument");
  EXPECT_EQ(Rewind(nullptr), "invalid container");
  fHost.LogStreamCalls(false);
  EXPECT_EQ(Rewind(stream), "");
  EXPECT_EQ(testing::PrintToString(fHost.TakeStreamCalls()),
            "{ buffer: Read(4) = 2, buffer: Seek(-1, 1), buffer: Rewind() failed, "
            "buffer: Mark() failed, buffer: Mark() = 1, buffer: Read(9) = 1, "
            "buffer: Read(9) = 3, buffer: Read(1) failed, buffer: Mark() failed, "
            "not a stream: Rewind() failed }");
  Release(stream);
}

}  // namespace
