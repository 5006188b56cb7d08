// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace KAPHost {

// The calls that led to a place, as addresses. Naming them takes long and waits for a report.
struct Stack {
  unsigned long fTime = 0;  // ModulesTime
  std::vector<void*> fFrames;
};

// From the frame that the address returns to, outwards. Null when out of memory.
std::shared_ptr<const Stack> CaptureStack(const void* returnAddress) noexcept;

// A line for each frame of interest: `Totals::Sum (totals.cpp:41)`, without file and line where
// there is no debug information or the host was built without KAP_HOST_SYMBOLS, and
// `totals.so+0x1234` where nothing is known. Throws std::bad_alloc.
std::vector<std::string> DescribeStack(const Stack& stack);

}  // namespace KAPHost
