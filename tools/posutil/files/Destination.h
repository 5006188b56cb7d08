#pragma once

#include <optional>
#include <string>

#include "files/Output.h"
#include "files/TemporaryFile.h"

namespace PosUtil {

// A file that a command makes: complete or not at all. What is there stays as it is until Commit.
// Only what cannot be replaced is written at once: a pipe, a device, and what standard output leads
// to. Throws Failure.
class Destination {
 public:
  explicit Destination(const std::string& fileName);
  Destination(const Destination&) = delete;
  Destination& operator=(const Destination&) = delete;

  Output& Out() { return *fOut; }
  void Commit();

 private:
  const std::string fName;
  std::optional<TemporaryFile> fTemporary;
  std::optional<Output> fOut;
};

}  // namespace PosUtil
