// SPDX-License-Identifier: MIT
#pragma once

#include <sstream>
#include <string_view>

#include "POSStreamer.h"
#include "World.h"

// A world in which documents are bytes.
class StreamerWorld : public World {
 public:
  static constexpr std::string_view kTag = "POSStreamerTypeA_Version1.0 ";

  // The first document fills the method tables that stay, so that they count in no balance.
  StreamerWorld() { OutcomeOfValue(Value(Read("1"))); }

  Object NewMemory() const {
    KAPContainer* stream = nullptr;
    EXPECT_EQ((Do<Factory, "NewPositionableMemoryStream">(&stream)), "");
    return Own(stream);
  }
  Object NewBuffer(std::string_view bytes) const {
    KAPContainer* stream = nullptr;
    const auto* const data = reinterpret_cast<const unsigned char*>(bytes.data());
    EXPECT_EQ((Do<Factory, "NewPositionableBufferStream">(&stream, data, bytes.size())), "");
    return Own(stream);
  }
  // From the position on; the stream is then at its end.
  std::string Rest(const Object& stream) const {
    std::string all;
    unsigned char part[512];
    for (std::size_t count = 1; count != 0;) {
      EXPECT_EQ((Do<Simple, "Read">(&count, stream.get(), +part, sizeof part)), "");
      all.append(part, part + count);
    }
    return all;
  }
  std::string Contents(const Object& stream) const {
    EXPECT_EQ((Do<KAP_T_MT::KAPRewindableStreamInterface, "Rewind">(stream.get())), "");
    return Rest(stream);
  }

  void Serialize(const Object& stream, const Object& object, const char* version = nullptr) const {
    Call<Streamer, "Serialize">(fStreamer.get(), stream.get(), object.get(), version);
  }
  Object Deserialize(const Object& stream) const {
    return Own(Call<Streamer, "Deserialize">(fStreamer.get(), stream.get()));
  }

  std::string Document(const Object& object) const {
    const Object stream = NewMemory();
    Serialize(stream, object);
    return Contents(stream);
  }
  std::string Value(const Object& object) const {  // the document without the tag
    const std::string document = Document(object);
    EXPECT_TRUE(document.starts_with(kTag)) << document;
    return document.substr(kTag.size());
  }
  static std::string Tagged(std::string_view value) { return std::string(kTag).append(value); }

  // What is read from the bytes, as Show writes it, or "error: " and the report; and, after a bar,
  // what has not been read of them.
  std::string Outcome(std::string_view document) {
    const Object stream = NewBuffer(document);
    const Object object = Deserialize(stream);
    const std::string outcome = object ? Show(object) : "error: " + TakeReport();
    const std::string rest = Rest(stream);
    return rest.empty() ? outcome : outcome + " | " + rest;
  }
  std::string OutcomeOfValue(std::string_view value) { return Outcome(Tagged(value)); }

  // Of every kind that can be read; its document is longer than a stream's buffer.
  Object Everything() const {
    Object dict = Read("< a [1.5 (t\1\n) `00e9` []] b < c < > > >");
    Put(dict, "data", BinData("type", std::string(100, '\x7f')));
    Put(dict, "more", BinData("", std::string(400, '\1')));
    return dict;
  }

  // The calls of streams that `body` makes, such as "Read(512) = 3"; the same call again is only
  // counted: "28 Read(1) = 1".
  std::vector<std::string> CallsOf(const auto& body) {
    LogStreamCalls();
    body();
    LogStreamCalls(false);
    std::vector<std::string> calls;
    std::string last;
    for (int times = 0; const KAPHost::StreamCall& call : TakeStreamCalls()) {
      std::ostringstream text;
      text << call;
      const std::string one = text.str().substr(text.str().find(": ") + 2);
      times = one == last ? times + 1 : 1;
      if (times == 1) calls.emplace_back();
      calls.back() = (times > 1 ? std::to_string(times) + " " : "") + one;
      last = one;
    }
    return calls;
  }

 protected:
  using Factory = KAP_T_MT::KAPStreamFactoryInterface;
  using Simple = KAP_T_MT::KAPSimpleStreamInterface;
  using Streamer = KAP_T_MT::POSStreamerInterface;

  Object fStreamer = Own(Call<Streamer, "NewPOSStreamer">());
};

class StreamerTest : public ::testing::Test, protected StreamerWorld {};
