// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "commands/changes/Change.h"
#include "commands/changes/ChangedDocument.h"
#include "commands/declarations/Options.h"

namespace PosUtil {

// The arguments of a command that applies a patch to a document.
class PatchArgument {
 public:
  // Declares FILE, PATCH and their options.
  void Declare(Options& options, const char* description);
  // Applies the patch to the document, or to each with --all, and writes the result. Throws
  // Failure.
  void Run(Session& session, void (*apply)(KAP_T_MT::CPOSObject& document, Change& patch)) const;

 private:
  ChangedDocument fDocument;
  std::string fPatch;
  std::string fPatchFormat;
};

}  // namespace PosUtil
