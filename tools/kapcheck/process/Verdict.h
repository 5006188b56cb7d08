// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "process/ChildProcess.h"

namespace KAPCheck {

// How a process ended, as a phrase such as "crashes: Segmentation fault"; "" for a normal end.
// `limit` is the time limit in seconds.
std::string Misbehaviour(const Ending& ending, double limit);

// The same, and an end without a verdict.
std::string EndWithoutVerdict(const Ending& ending, double limit);

}  // namespace KAPCheck
