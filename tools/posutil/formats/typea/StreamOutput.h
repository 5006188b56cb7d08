// SPDX-License-Identifier: MIT
#pragma once

#include "base/SavedException.h"
#include "files/Output.h"
#include "kap/KAPStream.h"

namespace PosUtil {

// A host stream that appends to an output. Do not use the output while this exists.
class StreamOutput {
 public:
  explicit StreamOutput(Output& out);
  StreamOutput(const StreamOutput&) = delete;
  StreamOutput& operator=(const StreamOutput&) = delete;

  KAP_T_MT::CKAPPositionableStream& Stream() { return fStream; }
  // Throws the failure that stopped the writing, if there is one.
  void CheckFailure() { fSaved.Rethrow(); }

 private:
  class Client;

  SavedException fSaved;
  KAP_T_MT::CKAPPositionableStream fStream;
};

}  // namespace PosUtil
