// SPDX-License-Identifier: MIT
#pragma once

#include "formats/Format.h"

namespace PosUtil {

// Sets the layout in the options to that of a document that has been read. The text of a scalar or
// an empty container has no indentation; that of the options then stays.
void ApplyLayout(const Reader& reader, const DocumentText& text, WriteOptions& options);

}  // namespace PosUtil
