#pragma once

#include <sys/single_threaded.h>

#include <atomic>

namespace NPOSObjectImpl {

// Adds to a counter that all threads share. While the process has had only one thread, which the C
// library knows, an ordinary addition does: a locked one costs more than the rest of an object's
// constructor. A second thread is created after it and sees it.
inline void AddToProcessCounter(std::atomic<unsigned int>& counter, int change) noexcept {
  const auto difference = static_cast<unsigned int>(change);
  if (__libc_single_threaded) {
    counter.store(counter.load(std::memory_order_relaxed) + difference, std::memory_order_relaxed);
  } else {
    counter.fetch_add(difference, std::memory_order_relaxed);
  }
}

}  // namespace NPOSObjectImpl
