// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace KAPHost {

class Binder;

// Blocks of host memory with guard bytes past their end. The host registers these procedures in
// place of its plain ones while it has a ledger, which they fill. While the host checks, they
// report a block that was written past its end or after it was freed, and a free of anything that
// is not such a block, which is not freed then.
//
// A block starts where the allocator's block starts: the plain procedures of a later host may free
// it. So nothing guards the bytes before it.

void RegisterGuardedMemory(Binder& binder);

// Whether it is a block that is held.
bool IsGuarded(const void* block) noexcept;
// The size that was asked for; 0 for what is not a guarded block.
std::size_t GuardedSize(const void* block) noexcept;

// Checks the blocks that are held, and those that were freed, which it gives back. To be called at
// the end of a host that has a ledger.
void EndGuardedMemory() noexcept;

}  // namespace KAPHost
