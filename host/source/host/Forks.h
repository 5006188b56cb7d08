// SPDX-License-Identifier: MIT
#pragma once

namespace KAPHost {

// From now on, a fork waits until no other thread is in the middle of changing atoms, pages or the
// accounting, so that the child, which has only the forking thread, finds them whole and unlocked.
// What other threads own stays as it is in the child.
void SurviveForks() noexcept;

}  // namespace KAPHost
