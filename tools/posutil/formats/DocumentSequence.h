// SPDX-License-Identifier: MIT
#pragma once

#include "base/SyntaxError.h"
#include "formats/Format.h"

namespace PosUtil {

// The documents of a format that is read in pieces: one of them, or all with white space or nothing
// between them.
class DocumentSequence : public Documents {
 public:
  DocumentSequence(Extent extent, Text text) : kExtent(extent), fText(text) {}

  KAP_T_MT::CPOSObject Next() override;

 protected:
  // Skips white space. Returns false at the end of the input.
  virtual bool SkipSpace() = 0;
  // Keep the text from the next byte on, for LastText, or none.
  virtual void KeepFromHere() = 0;
  virtual void KeepNothing() = 0;
  // Reads a document. Throws Failure.
  virtual KAP_T_MT::CPOSObject ReadDocument() = 0;
  // The error at the next byte.
  virtual SyntaxError ErrorHere(const std::string& message) const = 0;

  const Extent kExtent;

 private:
  const Text fText;
  bool fIsRead = false;
};

}  // namespace PosUtil
