// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace KAPCheck {

// Exceptions that a component throws and its client catches. A client that catches everything, as a
// good scenario does, would hide them. kapcheck has functions in place of those of the C++ run time
// that throw and catch; they call the original ones.

// Watches from now on, on all threads. Takes the address of some code of each; null ends it.
void WatchCrossings(const void* component, const void* client);

// What the first such exception since the last call says, "(not a std::exception)" if nothing; ""
// when there was none.
std::string TakeCrossing();

}  // namespace KAPCheck
