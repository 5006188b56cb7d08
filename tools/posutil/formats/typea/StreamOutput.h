#pragma once

#include "base/SavedException.h"
#include "files/Output.h"
#include "kap/KAPStream.h"

namespace PosUtil {

// A host stream that writes behind what an output holds. The output is not to be used while there
// is one.
class StreamOutput {
 public:
  explicit StreamOutput(Output& out);
  StreamOutput(const StreamOutput&) = delete;
  StreamOutput& operator=(const StreamOutput&) = delete;

  KAP_T_MT::CKAPPositionableStream& Stream() { return fStream; }
  // Throws what kept the output from being written, if anything did.
  void CheckFailure() { fKept.Rethrow(); }

 private:
  class Client;

  SavedException fKept;
  KAP_T_MT::CKAPPositionableStream fStream;
};

}  // namespace PosUtil
