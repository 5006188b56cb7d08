#pragma once

#include <cstddef>

namespace PosUtil {

// Prepares the heap for the property objects of a text of this size: many small blocks, in large
// pages where the system has them, since a page fault for every 4 KiB took a fifth of the time. A
// hint: it cannot fail, and memory that stays unused costs nothing.
void ReserveHeapFor(std::size_t textSize);

}  // namespace PosUtil
