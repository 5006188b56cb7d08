// SPDX-License-Identifier: MIT
#pragma once

#include "heap/ThreadHeap.h"

// What passes between threads: blocks that another thread than the owner of their page frees, and
// the pages of threads that end.
//
// The rule for returned blocks: while a page's list of returned blocks is not empty, exactly one
// party knows of it and will collect it. A thread that adds the first block to the list becomes
// that party. It hands the page to the owner by pushing it on the owner's stack; the thread that
// takes the stack is the next party. Hence a page is on one stack at most, and it is not empty, and
// stays a page of its use, as long as any party knows of it: its returned blocks count as used.
//
// When a thread ends, its pages with blocks become orphans, which belong to a heap without a
// thread and are guarded by a lock. A thread that frees a block of an orphan adopts the page, and
// so does a thread that needs a page for the same use.

namespace KAPHost {

// Frees a block of a page that the calling thread does not own.
void ReturnBlock(Page& page, FreeBlock& block) noexcept;

// Collects the blocks that other threads have returned to a heap of the calling thread.
void CollectReturned(ThreadHeap& heap) noexcept;

// The calling thread gets a heap, which its end takes away. Null when out of memory.
ThreadHeap* StartHeap() noexcept;

// Adds to the heap an orphan with a free block for this use. False when there is none.
bool AdoptPage(ThreadHeap& heap, unsigned use) noexcept;

// For the time of a fork: no other thread changes the orphans or the pool.
void LockPages() noexcept;
void UnlockPages() noexcept;

}  // namespace KAPHost
