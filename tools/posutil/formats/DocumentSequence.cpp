// SPDX-License-Identifier: MIT
#include "formats/DocumentSequence.h"

namespace PosUtil {

KAP_T_MT::CPOSObject DocumentSequence::Next() {
  if (kExtent == Extent::kOne && fIsRead) return {};
  KeepNothing();  // however much space comes before the document
  const bool hasMore = SkipSpace();
  if (kExtent == Extent::kAll && !hasMore) return {};
  fIsRead = true;
  if (fText == Text::kKept) KeepFromHere();
  KAP_T_MT::CPOSObject object = ReadDocument();
  if (kExtent == Extent::kOne && SkipSpace()) {
    throw ErrorHere("unexpected text after the document (see --all)");
  }
  return object;
}

}  // namespace PosUtil
