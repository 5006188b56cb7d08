// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "commands/declarations/Options.h"
#include "formats/Format.h"

namespace PosUtil {

// The options of a command that writes documents: --compact and --indent.
class LayoutOption {
 public:
  void Declare(Options& options);

  // Returns whether one of the options is there.
  bool IsGiven() const { return fIsCompact || !fIndent.empty(); }
  // Sets the layout. `onOneLine` is for missing options. Throws Failure with kExitUsage for a
  // layout that the format of the writer does not have.
  void Apply(const Writer& writer, bool onOneLine, WriteOptions& options) const;

 private:
  bool fIsCompact = false;
  std::string fIndent;
};

}  // namespace PosUtil
