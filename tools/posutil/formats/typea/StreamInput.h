#pragma once

#include <string>

#include "base/SyntaxError.h"
#include "kap/KAPClientBase.h"
#include "kap/KAPStream.h"
#include "terminal/Progress.h"

namespace PosUtil {

// A file, or standard input, as a host stream. It need not have positions: what was read last is
// kept, so that a reader can go back as far as it reads ahead.
class StreamInput {
 public:
  // What is read advances the progress. Throws Failure, for what is too large as well.
  StreamInput(const std::string& fileName, Progress& progress);
  StreamInput(const StreamInput&) = delete;
  StreamInput& operator=(const StreamInput&) = delete;

  KAP_T_MT::CKAPPositionableStream& Stream() { return fStream; }
  // What a regular file holds, 0 for anything else.
  std::size_t Size() const;
  // How many bytes have been read.
  std::size_t Position() const;

  // Throws what kept the input from being read, if anything did.
  void CheckFailure();
  // Moves on to the first byte that is no white space; false when there is none.
  bool SkipSpace();
  // The error at the byte of that number from the start. It must have been read lately.
  SyntaxError ErrorAt(std::size_t offset, const std::string& message) const;

 private:
  class Client;

  explicit StreamInput(KAP_T_MT::TKAPClientObject<Client> client);

  Client* fClient;  // the stream's
  KAP_T_MT::CKAPPositionableStream fStream;
};

}  // namespace PosUtil
