// SPDX-License-Identifier: MIT
#include "probe/StreamCalls.h"

#include <algorithm>
#include <vector>

namespace KAPProbe {

using Simple = KAPSimpleStreamInterface;
using Rewindable = KAPRewindableStreamInterface;
using Positionable = KAPPositionableStreamInterface;

std::string ReadSome(KAPContainer* stream, std::size_t count) {
  std::vector<unsigned char> buffer(count + 1, 0xEE);
  std::size_t done = ~std::size_t{0};
  DoStream<Simple, "Read">(stream, &done, stream, buffer.data(), count);
  Need<Simple, "Read">(done <= count, "returns more bytes than were requested");
  Need<Simple, "Read">(buffer[count] == 0xEE, "writes past the end of the buffer");
  return {buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(done)};
}

std::string ReadAll(KAPContainer* stream, std::size_t count) {
  std::string all;
  while (all.size() < count) {
    const std::string piece = ReadSome(stream, std::min<std::size_t>(count - all.size(), 4096));
    if (piece.empty()) break;
    all += piece;
  }
  return all;
}

void Write(KAPContainer* stream, const std::string& bytes) {
  DoStream<Simple, "Write">(stream, stream, reinterpret_cast<const unsigned char*>(bytes.data()),
                            bytes.size());
}

long Mark(KAPContainer* stream) {
  long position = -1;
  DoStream<Positionable, "Mark">(stream, &position, stream);
  return position;
}

void Seek(KAPContainer* stream, long offset, KAPSeekOrigin origin) {
  DoStream<Positionable, "Seek">(stream, stream, offset, static_cast<int>(origin));
}

void Rewind(KAPContainer* stream) { DoStream<Rewindable, "Rewind">(stream, stream); }

Container View(KAPContainer* stream) {
  constexpr TKAPName kMethod = "CreateIndependentlyPositionableStream";
  Container view;
  DoStream<Positionable, kMethod>(stream, view.Place(), stream);
  Need<Positionable, kMethod>(view, "returns neither a stream nor an error");
  return view;
}

Container RewindableView(KAPContainer* stream) {
  constexpr TKAPName kMethod = "CreateIndependentlyRewindableStream";
  Container view;
  DoStream<Rewindable, kMethod>(stream, view.Place(), stream);
  Need<Rewindable, kMethod>(view, "returns neither a stream nor an error");
  return view;
}

void ExpectText(const std::string& actual, const std::string& expected, const char* what) {
  Expect(actual == expected, std::string(what) + " is \"" + actual + "\", not \"" + expected + '"');
}

}  // namespace KAPProbe
