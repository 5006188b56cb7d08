// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "files/Descriptor.h"
#include "files/Output.h"
#include "files/TemporaryFile.h"

namespace PosUtil {

// The output file of a command: complete or unchanged. An existing file stays as it is until
// Commit. Some files cannot be replaced, and writes go to them directly: a pipe, a device, the file
// that standard output leads to, a descriptor of the caller such as /dev/stderr or /dev/fd/N, and a
// file without a name.
// Errors: Failure.
class Destination {
 public:
  explicit Destination(const std::string& fileName);
  Destination(const Destination&) = delete;
  Destination& operator=(const Destination&) = delete;

  // Returns whether a new file takes the place of the old one.
  bool Replaces() const { return fTemporary.has_value(); }
  // If so, Commit keeps the old file under its name with this suffix.
  void KeepOldAs(const std::string& suffix) {
    if (fTemporary) fTemporary->KeepReplacedAs(suffix);
  }
  // If so, Commit fails if another file has taken the place of the old one: for an output that is
  // made from it.
  void RequireOld() {
    if (fTemporary) fTemporary->RequireReplaced();
  }

  Output& Out() { return *fOut; }
  void Commit();

 private:
  void Open();
  void WriteThrough(int descriptor);

  const std::string fName;
  std::optional<TemporaryFile> fTemporary;
  bool fIsTruncated = false;  // at the end, since the input may be the same file
  std::optional<Output> fOut;
};

}  // namespace PosUtil
