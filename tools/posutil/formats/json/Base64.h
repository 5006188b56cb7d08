// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace PosUtil {

// Base64 with padding. Decoding appends to `out`. It returns false for any text that encoding does
// not write.
std::string Base64Encode(const unsigned char* data, std::size_t size);
bool Base64Decode(std::string_view text, std::vector<unsigned char>& out);

}  // namespace PosUtil
