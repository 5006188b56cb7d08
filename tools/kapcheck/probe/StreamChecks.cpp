// SPDX-License-Identifier: MIT
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

Container MemoryStream() {
  Container stream;
  MustSucceed(Call<Factory, "NewPositionableMemoryStream">(stream.Place()),
              "NewPositionableMemoryStream");
  return stream;
}

Container BufferStream(const std::string& bytes) {
  Container stream;
  MustSucceed(
      Call<Factory, "NewPositionableBufferStream">(
          stream.Place(), reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()),
      "NewPositionableBufferStream");
  return stream;
}

// A file with some bytes, removed at the end.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& bytes)
      : fPath((std::filesystem::temp_directory_path() / "kapprobe-XXXXXX").string()) {
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
    MustSucceed(Call<Factory, "NewPositionableFileStream">(stream.Place(), fPath.c_str(), mode),
                std::string("NewPositionableFileStream with mode \"") + mode + '"');
    return stream;
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
  std::string fPath;
};

void ExpectText(const std::string& actual, const std::string& expected, const char* what) {
  Expect(actual == expected, std::string(what) + " is \"" + actual + "\", not \"" + expected + '"');
}

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

void CheckViews(KAPContainer* stream) {
  Seek(stream, 4, kKAPSeekFromStart);
  for (const Container& view : {View(stream), RewindableView(stream)}) {
    Expect(view, "the call returns neither a stream nor an error");
    Rewind(view);
    ExpectText(ReadAll(view, 3), "012", "what the new stream reads");
    Expect(Mark(stream) == 4, "reading the new stream moves the position of the first one");
  }
  ExpectText(ReadAll(stream, 2), "45", "what the first stream reads");
}

void CheckReadOnly() {
  const Container stream = BufferStream("0123456789");
  const unsigned char byte = 'x';
  MustFail(CallStream<KAPSimpleStreamInterface, "Write">(stream, stream, &byte, std::size_t{1}),
           "Write to a read-only stream");
  Rewind(stream);
  ExpectText(ReadAll(stream), "0123456789", "the content after a write");
}

void CheckModes() {
  const TemporaryFile file("0123456789");
  {
    const Container reading = file.Open("rb");
    CheckPositions(reading);
    CheckViews(reading);
  }
  {
    const Container appending = file.Open("ab");
    Write(appending, "+");
  }
  ExpectText(file.Content(), "0123456789+", "a file that was appended to");
  {
    const Container writing = file.Open("wb");
    Write(writing, "new");
  }
  ExpectText(file.Content(), "new", "a file that was written");
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
     "Moves the position; `origin` is a KAPSeekOrigin.",
     [] {
       CheckPositions(BufferStream("0123456789"));
       const Container memory = MemoryStream();
       Write(memory, "0123456789");
       CheckPositions(memory);
     }},
    {"streams.rewind", "KAPRewindableStreamInterface", "Rewind", "Moves the position to the start.",
     [] {
       const Container stream = BufferStream("0123456789");
       Seek(stream, 7, kKAPSeekFromStart);
       Rewind(stream);
       Expect(Mark(stream) == 0, "the position is " + std::to_string(Mark(stream)));
     }},
    {"streams.views", "KAPPositionableStreamInterface", "CreateIndependentlyPositionableStream",
     "A stream over the same data with a position of its own: one reference.",
     [] {
       CheckViews(BufferStream("0123456789"));
       const Container memory = MemoryStream();
       Write(memory, "0123456789");
       CheckViews(memory);
     }},
    {"streams.view-lives", "KAPPositionableStreamInterface",
     "CreateIndependentlyPositionableStream",
     "A stream over the same data with a position of its own: one reference.",
     [] {
       Container stream = BufferStream("0123456789");
       const Container view = View(stream);
       stream.Reset();
       Rewind(view);
       ExpectText(ReadAll(view), "0123456789", "the data after the first stream has gone");
     }},
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
       stream.Reset();
       ExpectText(file.Content(), "0123456789", "the file after the release");
     }},
    {"streams.no-file", "KAPStreamFactoryInterface", "NewPositionableFileStream",
     "After an error the result places are null or 0.",
     [] {
       KAPContainer* stream = reinterpret_cast<KAPContainer*>(16);
       MustFail(Call<Factory, "NewPositionableFileStream">(&stream, "/no/such/file", "rb"),
                "NewPositionableFileStream of a missing file");
       Expect(!stream, "the result place of a failed call is not null");
     }},
};

}  // namespace

std::span<const Check> StreamChecks() { return kChecks; }

}  // namespace KAPProbe
