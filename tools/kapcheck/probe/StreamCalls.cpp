// SPDX-License-Identifier: MIT
#include "probe/StreamCalls.h"

#include <algorithm>
#include <vector>

namespace KAPProbe {

std::string ReadSome(KAPContainer* stream, std::size_t count) {
  std::vector<unsigned char> buffer(count + 1, 0xEE);
  std::size_t done = ~std::size_t{0};
  MustSucceed(
      CallStream<KAPSimpleStreamInterface, "Read">(stream, &done, stream, buffer.data(), count),
      "Read");
  Expect(done <= count, "Read returns more bytes than were requested");
  Expect(buffer[count] == 0xEE, "Read writes past the end of the buffer");
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
  MustSucceed(
      CallStream<KAPSimpleStreamInterface, "Write">(
          stream, stream, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()),
      "Write");
}

long Mark(KAPContainer* stream) {
  long position = -1;
  MustSucceed(CallStream<KAPPositionableStreamInterface, "Mark">(stream, &position, stream),
              "Mark");
  return position;
}

void Seek(KAPContainer* stream, long offset, KAPSeekOrigin origin) {
  MustSucceed(CallStream<KAPPositionableStreamInterface, "Seek">(stream, stream, offset,
                                                                 static_cast<int>(origin)),
              "Seek");
}

void Rewind(KAPContainer* stream) {
  MustSucceed(CallStream<KAPRewindableStreamInterface, "Rewind">(stream, stream), "Rewind");
}

Container View(KAPContainer* stream) {
  Container view;
  MustSucceed(CallStream<KAPPositionableStreamInterface, "CreateIndependentlyPositionableStream">(
                  stream, view.Place(), stream),
              "CreateIndependentlyPositionableStream");
  return view;
}

Container RewindableView(KAPContainer* stream) {
  Container view;
  MustSucceed(CallStream<KAPRewindableStreamInterface, "CreateIndependentlyRewindableStream">(
                  stream, view.Place(), stream),
              "CreateIndependentlyRewindableStream");
  return view;
}

}  // namespace KAPProbe
