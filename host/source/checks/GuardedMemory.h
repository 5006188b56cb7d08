// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace KAPHost {

class Binder;

// Blocks of host memory with guard bytes before their start and past their end. A host registers
// these procedures in place of its plain ones while it has a ledger, which they fill. While the
// host checks, they report a block that was written outside of its bytes or after it was freed, and
// a free of anything that is not such a block, which is not freed then.
//
// A guarded block does not start where the allocator's block starts: `free` of one ends the process
// at once, with the culprit on the stack, where an unguarded one would go unnoticed. So a later
// host without a ledger registers them as well if there are guarded blocks by then: they free any
// block, and make plain ones.

// How many guarded blocks components hold.
std::size_t GuardedBlocks() noexcept;

// With `hasPlainBlocks`, components hold blocks of a former host that are not guarded: one that is
// not known is freed as a plain one.
void RegisterGuardedMemory(Binder& binder, bool hasPlainBlocks);

// Checks the blocks that were made since the registration and are held, and those that were freed,
// which it gives back. To be called at the end of a host that has a ledger.
void EndGuardedMemory() noexcept;

}  // namespace KAPHost
