// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "probe/Checks.h"
#include "probe/StreamCalls.h"

// The streams that the host implements: in memory, over bytes, over a file.

namespace KAPProbe {

namespace {

using Factory = KAPStreamFactoryInterface;

Container MemoryStream(const std::string& bytes = "") {
  Container stream;
  Do<Factory, "NewPositionableMemoryStream">(stream.Place());
  Need<Factory, "NewPositionableMemoryStream">(stream, "returns neither a stream nor an error");
  if (!bytes.empty()) Write(stream, bytes);
  return stream;
}

Container BufferStream(const std::string& bytes) {
  Container stream;
  Do<Factory, "NewPositionableBufferStream">(
      stream.Place(), reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  Need<Factory, "NewPositionableBufferStream">(stream, "returns neither a stream nor an error");
  return stream;
}

// A file with some bytes, removed at the end.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& bytes)
      : fPath((Folder() / "kapprobe-XXXXXX").string()) {
    const int file = ::mkstemp(fPath.data());
    const bool isWritten = file >= 0 && ::write(file, bytes.data(), bytes.size()) ==
                                            static_cast<ssize_t>(bytes.size());
    if (file >= 0) ::close(file);
    if (!isWritten) throw NotOffered("a folder for temporary files");
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { ::unlink(fPath.c_str()); }

  Container Open(const char* mode) const {
    Container stream;
    Do<Factory, "NewPositionableFileStream">(stream.Place(), fPath.c_str(), mode);
    Need<Factory, "NewPositionableFileStream">(stream, "returns neither a stream nor an error");
    return stream;
  }
  // How many descriptors of this process are the file; those that another program would inherit.
  int Descriptors(bool areInherited = false) const {
    int count = 0;
    for (int file = 0; file < 1024; ++file) {
      std::error_code error;
      const auto target =
          std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file), error);
      if (error || target != fPath) continue;
      if (!areInherited || (::fcntl(file, F_GETFD) & FD_CLOEXEC) == 0) ++count;
    }
    return count;
  }
  std::string Content() const {
    std::string content;
    std::FILE* const file = std::fopen(fPath.c_str(), "rb");
    if (!file) return "(no file)";
    for (int byte; (byte = std::fgetc(file)) != EOF;) content += static_cast<char>(byte);
    std::fclose(file);
    return content;
  }

 private:
  static std::filesystem::path Folder() {
    std::error_code ignored;  // then no file can be made
    return std::filesystem::temp_directory_path(ignored);
  }

  std::string fPath;
};

// What every positionable stream over "0123456789" does.
void CheckPositions(KAPContainer* stream) {
  const struct {
    long fOffset;
    KAPSeekOrigin fOrigin;
    long fPosition;
  } rows[] = {{3, kKAPSeekFromStart, 3},     {2, kKAPSeekFromPosition, 5},
              {-4, kKAPSeekFromPosition, 1}, {-1, kKAPSeekFromEnd, 9},
              {0, kKAPSeekFromEnd, 10},      {0, kKAPSeekFromStart, 0}};
  for (const auto& row : rows) {
    Seek(stream, row.fOffset, row.fOrigin);
    const long position = Mark(stream);
    Expect(position == row.fPosition, "Seek(" + std::to_string(row.fOffset) + ", " +
                                          std::to_string(row.fOrigin) + ") leads to " +
                                          std::to_string(position) + ", not to " +
                                          std::to_string(row.fPosition));
  }
}

// `make` returns a new stream over the same data as the one at position 4.
void CheckView(Container first, Container (*make)(KAPContainer*), const std::string& added) {
  Seek(first, 4, kKAPSeekFromStart);
  Container view = make(first);
  Rewind(view);
  ExpectText(ReadAll(view, 3), "012", "what the new stream reads");
  Expect(Mark(first) == 4, "reading the new stream moves the position of the first one");
  if (!added.empty()) {
    Write(first, added);
    ExpectText(ReadAll(view, 4), "3" + added.substr(0, 3), "what is read after a write");
  }
  first.Reset();
  Rewind(view);
  ExpectText(ReadAll(view, 3), "012", "what is read after the first stream has gone");
}

void CheckViews(Container (*make)(KAPContainer*)) {
  CheckView(BufferStream("0123456789"), make, "");
  CheckView(MemoryStream("0123456789"), make, "abc");
  const TemporaryFile file("0123456789");
  CheckView(file.Open("rb"), make, "");
  CheckView(file.Open("r+b"), make, "abc");
}

void CheckReadOnly() {
  const Container stream = BufferStream("0123456789");
  const unsigned char byte = 'x';
  MustFail(CallStream<KAPSimpleStreamInterface, "Write">(stream, stream, &byte, std::size_t{1}),
           "Write to a read-only stream");
  Rewind(stream);
  ExpectText(ReadAll(stream), "0123456789", "the content after a write");
}

// What a mode reads and leaves in a file of "0123456789" when "ab" is written at position 2.
void CheckModes() {
  const struct {
    const char* fMode;
    const char* fRead;     // null: reading is an error
    const char* fContent;  // null: writing is an error
  } rows[] = {{"rb", "01", nullptr},           {"r+b", "01", "01ab456789"},
              {"wb", nullptr, "ab"},           {"w+b", "", "ab"},
              {"ab", nullptr, "0123456789ab"}, {"a+b", "01", "0123456789ab"}};
  for (const auto& row : rows) {
    const TemporaryFile file("0123456789");
    {
      const Container stream = file.Open(row.fMode);
      const auto text = std::string(" with mode \"") + row.fMode + '"';
      const unsigned char bytes[] = {'a', 'b'};
      unsigned char buffer[2];
      std::size_t count = 0;
      Error reading(CallStream<KAPSimpleStreamInterface, "Read">(stream, &count, stream, &buffer[0],
                                                                 std::size_t{2}));
      Expect(!reading == (row.fRead != nullptr), "Read" + text + " succeeds or fails wrongly");
      Need<KAPSimpleStreamInterface, "Read">(count <= 2, "returns more bytes than were requested");
      if (row.fRead) {
        ExpectText({buffer, buffer + count}, row.fRead, ("what is read" + text).c_str());
      }
      const Error writing(
          CallStream<KAPSimpleStreamInterface, "Write">(stream, stream, bytes, std::size_t{2}));
      Expect(!writing == (row.fContent != nullptr), "Write" + text + " succeeds or fails wrongly");
    }
    ExpectText(file.Content(), row.fContent ? row.fContent : "0123456789",
               (std::string("a file with mode ") + row.fMode).c_str());
  }
}

void CheckSeeks() {
  CheckPositions(BufferStream("0123456789"));
  CheckPositions(MemoryStream("0123456789"));
  const TemporaryFile file("0123456789");
  CheckPositions(file.Open("rb"));
}

void CheckWrongStreams() {
  const Container stream = BufferStream("0123456789");
  Container empty;
  Do<KAPContainerInterface, "NewContainer">(empty.Place());
  for (KAPContainer* const wrong : {static_cast<KAPContainer*>(nullptr), empty.Get()}) {
    unsigned char byte = 0;
    std::size_t count = 77;
    MustFail(
        CallStream<KAPSimpleStreamInterface, "Read">(stream, &count, wrong, &byte, std::size_t{1}),
        "Read of what is not a stream");
    Expect(count == 0, "Read returns an error and a count");
  }
}

constexpr Check kChecks[] = {
    {"streams.memory", "KAPStreamFactoryInterface", "NewPositionableMemoryStream",
     "An empty stream in memory, for reading and writing.",
     [] {
       const Container stream = MemoryStream();
       ExpectText(ReadSome(stream, 10), "", "what a new stream reads");
       const std::string large(100'000, 'x');
       Write(stream, "0123456789" + large);
       Expect(Mark(stream) == 100'010, "Write does not move the position");
       Rewind(stream);
       Expect(ReadAll(stream) == "0123456789" + large, "the stream reads other bytes than written");
       Seek(stream, 3, kKAPSeekFromStart);
       Write(stream, "abc");
       Rewind(stream);
       ExpectText(ReadAll(stream, 10), "012abc6789", "what the stream reads after a change");
     }},
    {"streams.read", "KAPSimpleStreamInterface", "Read",
     "Reads up to `count` bytes at the position and moves the position past them.",
     [] {
       const Container stream = BufferStream("0123456789");
       ExpectText(ReadAll(stream, 4), "0123", "the first piece");
       Expect(Mark(stream) == 4, "the position after 4 bytes is " + std::to_string(Mark(stream)));
       ExpectText(ReadAll(stream, 4), "4567", "the second piece");
     }},
    {"streams.end", "KAPSimpleStreamInterface", "Read",
     "`*outCount`: how many; 0 at the end of the input.",
     [] {
       const Container stream = BufferStream("0123456789");
       ExpectText(ReadAll(stream), "0123456789", "the content");
       ExpectText(ReadSome(stream, 10), "", "what is read at the end");
       ExpectText(ReadSome(BufferStream(""), 10), "", "what an empty stream reads");
     }},
    {"streams.seek", "KAPPositionableStreamInterface", "Seek",
     "Moves the position; `origin` is a KAPSeekOrigin.", &CheckSeeks},
    {"streams.wrong-handle", "KAPSimpleStreamInterface", "Read",
     "the compiler does not distinguish them, so every procedure checks.", &CheckWrongStreams},
    {"streams.rewind", "KAPRewindableStreamInterface", "Rewind", "Moves the position to the start.",
     [] {
       const Container stream = BufferStream("0123456789");
       Seek(stream, 7, kKAPSeekFromStart);
       Rewind(stream);
       Expect(Mark(stream) == 0, "the position is " + std::to_string(Mark(stream)));
     }},
    {"streams.views", "KAPPositionableStreamInterface", "CreateIndependentlyPositionableStream",
     "A stream over the same data with a position of its own: one reference.",
     [] { CheckViews(&View); }},
    {"streams.rewindable-views", "KAPRewindableStreamInterface",
     "CreateIndependentlyRewindableStream",
     "A stream over the same data with a position of its own: one reference.",
     [] { CheckViews(&RewindableView); }},
    {"streams.copy", "KAPStreamFactoryInterface", "NewPositionableBufferStream",
     "A read-only stream over a copy of the bytes.",
     [] {
       std::string bytes = "0123456789";
       const Container stream = BufferStream(bytes);
       bytes.assign(10, 'x');
       ExpectText(ReadAll(stream), "0123456789", "the content after the caller's bytes changed");
     }},
    {"streams.read-only", "KAPStreamFactoryInterface", "NewPositionableBufferStream",
     "A read-only stream over a copy of the bytes.", &CheckReadOnly},
    {"streams.file", "KAPStreamFactoryInterface", "NewPositionableFileStream",
     "A stream over the file at `path`, opened with a mode of fopen.", &CheckModes},
    {"streams.file-closed", "KAPStreamFactoryInterface", "NewPositionableFileStream",
     "The last release closes the file.",
     [] {
       const TemporaryFile file("");
       Container stream = file.Open("wb");
       Write(stream, "0123456789");
       Expect(file.Descriptors(true) == 0, "a program that is started inherits the file");
       stream.Reset();
       Expect(file.Descriptors() == 0, "the file is still open");
       ExpectText(file.Content(), "0123456789", "the file after the release");
     }},
    {"streams.no-file", "KAPStreamFactoryInterface", "NewPositionableFileStream",
     "A stream over the file at `path`",
     [] {
       Container stream;
       Fails<Factory, "NewPositionableFileStream">("of a missing file", stream.Place(),
                                                   "/no/such/file", "rb");
     }},
};

}  // namespace

std::span<const Check> StreamChecks() { return kChecks; }

}  // namespace KAPProbe
