#pragma once

#include <iosfwd>
#include <string>

#include "kap/KAPTypes.h"

namespace KAPHost {

// A call of a stream's method, as it is logged. A plain value.
struct StreamCall {
  std::string fMethod;  // "Read", "Seek" ...
  std::string fKind;    // of the stream: "memory", "buffer", "file", "client"; "" for none
  KAPContainer* fStream = nullptr;  // only to be compared: it may be gone
  long fAmount = 0;                 // the bytes asked for or written, the offset of a seek
  int fOrigin = 0;                  // of a seek
  long fResult = 0;                 // the bytes read, the position marked
  bool fFailed = false;

  friend bool operator==(const StreamCall&, const StreamCall&) = default;
};

// Such as `memory: Read(64) = 5` or `file: Seek(-1, 0) failed`.
std::ostream& operator<<(std::ostream& out, const StreamCall& call);

}  // namespace KAPHost
