// SPDX-License-Identifier: MIT
#pragma once

#include <iosfwd>
#include <string>

#include "kap/KAPTypes.h"

namespace KAPHost {

// A logged call of a stream's method; see Host::LogStreamCalls. A plain value.
struct StreamCall {
  std::string fMethod;  // "Read", "Seek" ...
  std::string fKind;    // of the stream: "memory", "buffer", "file" or "client"; "" when
                        // the handle is not a stream
  KAPContainer* fStream = nullptr;  // for comparison only: it may no longer exist
  long fAmount = 0;                 // the bytes asked for or written, the offset of a seek
  int fOrigin = 0;                  // of a seek
  long fResult = 0;                 // the bytes read, the position marked
  bool fFailed = false;             // whether the method returned an error

  // Whether all fields are equal.
  friend bool operator==(const StreamCall&, const StreamCall&) = default;
};

// Writes a call as `memory: Read(64) = 5` or `file: Seek(-1, 0) failed`.
std::ostream& operator<<(std::ostream& out, const StreamCall& call);

}  // namespace KAPHost
