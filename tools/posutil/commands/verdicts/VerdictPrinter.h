// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "commands/verdicts/Verdict.h"
#include "files/Output.h"
#include "terminal/Style.h"

namespace PosUtil {

// What a verdict is about. The schema is that of the rules; documents count from 1, and 0 means
// that the file has only one.
struct CheckedName {
  std::string fFile;
  std::string fSchema;
  std::size_t fDocument = 0;
};

struct VerdictCounts {
  std::size_t fValid = 0;
  std::size_t fInvalid = 0;
  std::size_t fUnchecked = 0;
  std::size_t fMessages = 0;
  std::size_t fPrinted = 0;  // of the messages
};

// Prints the verdicts: Begin, then Print or PrintUnchecked for each document, then End.
class VerdictPrinter {
 public:
  // The names of the forms, and a new printer for one of them.
  static constexpr const char* kText = "text";
  static constexpr const char* kJson = "json";
  static std::unique_ptr<VerdictPrinter> New(const std::string& form, const Style& style,
                                             Output& out);

  explicit VerdictPrinter(Output& out) : fOut(out) {}
  VerdictPrinter(const VerdictPrinter&) = delete;
  VerdictPrinter& operator=(const VerdictPrinter&) = delete;
  virtual ~VerdictPrinter() = default;

  virtual void Begin() = 0;
  virtual void Print(const CheckedName& name, const Verdict& verdict) = 0;
  // For a document without a verdict. `reason` is on standard error too.
  virtual void PrintUnchecked(const CheckedName& name, const std::string& reason) = 0;
  virtual void End(const VerdictCounts& counts) = 0;
  // Instead of all this: nothing can be checked. `reason` is on standard error too.
  virtual void PrintFailure(const std::string& /*reason*/) {}

 protected:
  Output& fOut;
};

}  // namespace PosUtil
