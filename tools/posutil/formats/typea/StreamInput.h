// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "base/SyntaxError.h"
#include "formats/Format.h"
#include "kap/KAPClientBase.h"
#include "kap/KAPStream.h"
#include "terminal/Progress.h"

namespace PosUtil {

// A file, or standard input, as a host stream. The file need not be seekable: a window over the
// bytes read last lets a reader go back as far as it reads ahead.
class StreamInput {
 public:
  // `progress` and `idle` are those of InputWindow. Throws Failure, also for a file that is too
  // large.
  StreamInput(const std::string& fileName, Extent extent, Progress& progress,
              std::function<void()> idle);
  StreamInput(const StreamInput&) = delete;
  StreamInput& operator=(const StreamInput&) = delete;

  KAP_T_MT::CKAPPositionableStream& Stream() { return fStream; }
  // The number of bytes that the reader has taken.
  std::size_t Position() const;

  // A document starts at the next byte; only a single one must be smaller than 2 GiB.
  void BeginDocument();
  // Makes the window keep the text from the next byte on, and returns that text.
  void KeepFromHere();
  void KeepNothing();
  DocumentText Kept() const;

  // Throws the failure that stopped the reading, if there is one.
  void CheckFailure();
  // Skips white space. Returns false at the end of the input.
  bool SkipSpace();
  // The place of the last of these characters up to `offset`, which is returned if there is none in
  // the window.
  std::size_t FindBack(std::string_view characters, std::size_t offset) const;
  // A byte of the window.
  char At(std::size_t offset) const;
  // The error at a byte of the window; `offset` counts from the start of the input.
  SyntaxError ErrorAt(std::size_t offset, const std::string& message) const;
  // The error after the last byte that is not white space.
  SyntaxError ErrorAfterText(const std::string& message) const;

 private:
  class Client;

  explicit StreamInput(KAP_T_MT::TKAPClientObject<Client> client);

  Client* fClient;  // owned by the stream
  KAP_T_MT::CKAPPositionableStream fStream;
};

}  // namespace PosUtil
