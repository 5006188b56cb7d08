// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace PosUtil {

// The candidate that a misspelt or shortened word most probably means; empty if none is near.
std::string Closest(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace PosUtil
