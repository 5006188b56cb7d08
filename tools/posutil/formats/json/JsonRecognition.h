// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "formats/Format.h"

namespace PosUtil {

// Reader::Recognize for JSON.
Reader::Recognition RecognizeJson(std::string_view text, bool isAll);

}  // namespace PosUtil
