#pragma once

#include "files/Output.h"

namespace PosUtil {

// Writes a zero-terminated text between double quotes, escaped as JSON wants it. Throws ValueError for bytes that are
// no UTF-8.
void PutJsonString(Output& out, const char* text);

}  // namespace PosUtil
