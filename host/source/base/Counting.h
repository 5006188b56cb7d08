// SPDX-License-Identifier: MIT
#pragma once

#include <sys/single_threaded.h>

#include <atomic>
#include <mutex>

namespace KAPHost {

// Counts and locks without locked instructions while the process has one thread. The C library
// knows when that is so. It changes only in a call that starts or joins a thread, which orders
// everything before it. A reference and its release take 4 ns then, and 14 with locked instructions
// (get_short/floor of bench_dict).

inline bool IsSingleThreaded() noexcept { return __libc_single_threaded != 0; }

// Replaces the value by `next` if it is `value`, which becomes the present value otherwise.
template <class Value>
bool TryUpdate(std::atomic<Value>& count, Value& value, Value next) noexcept {
  if (IsSingleThreaded()) {
    count.store(next, std::memory_order_relaxed);
    return true;
  }
  return count.compare_exchange_weak(value, next, std::memory_order_acq_rel,
                                     std::memory_order_relaxed);
}

// Replaces the value by next(value) and returns the former one.
template <class Value, class Next>
Value Update(std::atomic<Value>& count, Next next) noexcept {
  Value value = count.load(std::memory_order_relaxed);
  while (!TryUpdate(count, value, next(value))) {
  }
  return value;
}

template <class Value>
void Increment(std::atomic<Value>& count) noexcept {
  if (IsSingleThreaded()) {
    count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  } else {
    count.fetch_add(1, std::memory_order_relaxed);
  }
}

// Returns the value after the decrement.
template <class Value>
Value Decrement(std::atomic<Value>& count) noexcept {
  if (IsSingleThreaded()) {
    const Value value = count.load(std::memory_order_relaxed) - 1;
    count.store(value, std::memory_order_relaxed);
    return value;
  }
  return count.fetch_sub(1, std::memory_order_acq_rel) - 1;
}

// Holds a mutex, unless the process had a single thread at construction.
class ThreadLock {
 public:
  explicit ThreadLock(std::mutex& mutex) : fMutex(IsSingleThreaded() ? nullptr : &mutex) {
    if (fMutex) fMutex->lock();
  }
  ThreadLock(const ThreadLock&) = delete;
  ThreadLock& operator=(const ThreadLock&) = delete;
  ~ThreadLock() {
    if (fMutex) fMutex->unlock();
  }

 private:
  std::mutex* fMutex;
};

}  // namespace KAPHost
