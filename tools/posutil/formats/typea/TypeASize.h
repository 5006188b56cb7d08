#pragma once

#include <cstddef>
#include <string>

namespace PosUtil {

// Throws Failure about the file of that name when TypeA documents cannot reach that far: their
// readers count positions in 32 bits.
void CheckTypeASize(std::size_t size, const std::string& name);

}  // namespace PosUtil
