// SPDX-License-Identifier: MIT
#pragma once

#include "TestHost.h"

// A host whose streams read and write strings. A call that fails returns the message of its error.
class StreamsTest : public HostTest {
 protected:
  using Factory = KAP_T_MT::KAPStreamFactoryInterface;
  using Simple = KAP_T_MT::KAPSimpleStreamInterface;
  using Rewindable = KAP_T_MT::KAPRewindableStreamInterface;
  using Positionable = KAP_T_MT::KAPPositionableStreamInterface;

  template <class Interface, KAP_T_MT::TKAPName Method, class... Args>
  KAPContainer* New(Args... args) {
    KAPContainer* stream = nullptr;
    EXPECT_EQ((fHost.Do<Interface, Method>(&stream, args...)), "");
    return stream;
  }
  KAPContainer* NewMemory() { return New<Factory, "NewPositionableMemoryStream">(); }
  KAPContainer* NewFile(const std::string& path, const char* mode) {
    return New<Factory, "NewPositionableFileStream">(path.c_str(), mode);
  }
  KAPContainer* NewIndependent(KAPContainer* stream) {
    return New<Positionable, "CreateIndependentlyPositionableStream">(stream);
  }
  void Release(KAPContainer* stream) { fHost.Containers<"Release">(stream); }

  std::string Read(KAPContainer* stream, std::size_t count) {
    std::vector<unsigned char> bytes(count + 1);
    std::size_t read = 99;
    const std::string error = fHost.Do<Simple, "Read">(&read, stream, bytes.data(), count);
    EXPECT_TRUE(error.empty() || read == 0);
    return error.empty() ? std::string(bytes.begin(), bytes.begin() + static_cast<long>(read))
                         : error;
  }
  std::string Write(KAPContainer* stream, std::string_view text) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    return fHost.Do<Simple, "Write">(stream, bytes, text.size());
  }
  std::string Seek(KAPContainer* stream, long offset, int origin = 0) {
    return fHost.Do<Positionable, "Seek">(stream, offset, origin);
  }
  std::string Rewind(KAPContainer* stream) { return fHost.Do<Rewindable, "Rewind">(stream); }
  std::string Mark(KAPContainer* stream) {
    long position = 99;
    const std::string error = fHost.Do<Positionable, "Mark">(&position, stream);
    return error.empty() ? std::to_string(position) : error;
  }
};
