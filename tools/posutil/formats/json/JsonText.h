#pragma once

#include "files/Output.h"

namespace PosUtil {

// Writes a zero-terminated text as a JSON string. Throws ValueError for invalid UTF-8.
void PutJsonString(Output& out, const char* text);

}  // namespace PosUtil
