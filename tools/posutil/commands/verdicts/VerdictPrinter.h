#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "commands/verdicts/Verdict.h"
#include "files/Output.h"

namespace PosUtil {

struct VerdictCounts {
  std::size_t fValid = 0;
  std::size_t fInvalid = 0;
  std::size_t fUnchecked = 0;
  std::size_t fMessages = 0;
};

// Prints the verdicts: Begin, then Print or PrintUnchecked for each file, then End.
class VerdictPrinter {
 public:
  // The names of the forms, and a new printer for one of them.
  static constexpr const char* kText = "text";
  static constexpr const char* kJson = "json";
  static std::unique_ptr<VerdictPrinter> New(const std::string& form, Output& out);

  explicit VerdictPrinter(Output& out) : fOut(out) {}
  VerdictPrinter(const VerdictPrinter&) = delete;
  VerdictPrinter& operator=(const VerdictPrinter&) = delete;
  virtual ~VerdictPrinter() = default;

  virtual void Begin() = 0;
  virtual void Print(const std::string& name, const Verdict& verdict) = 0;
  // For a file without a verdict. `reason` is on standard error too.
  virtual void PrintUnchecked(const std::string& name, const std::string& reason) = 0;
  virtual void End(const VerdictCounts& counts) = 0;

 protected:
  Output& fOut;
};

}  // namespace PosUtil
