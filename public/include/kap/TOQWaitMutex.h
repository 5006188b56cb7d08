// SPDX-License-Identifier: MIT
#pragma once

#include <pthread.h>

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A recursive lock made of a mutex and a condition variable. The mutex is held only while the state
// below changes, never while the lock itself is held. A plain mutex would deadlock: filling a
// method table calls the host, which may call back into the same list. Meets BasicLockable: use
// std::lock_guard.
// Errors: none. Destroying a lock that is held, and unlocking one that is not, are undefined.
// Threads: any.
class TOQWaitMutex {
 public:
  constexpr TOQWaitMutex() noexcept = default;
  ~TOQWaitMutex();
  TOQWaitMutex(const TOQWaitMutex&) = delete;
  TOQWaitMutex& operator=(const TOQWaitMutex&) = delete;

  // Waits until no other thread holds the lock; counts how often this one does.
  void lock() noexcept;
  // Undoes one call of lock.
  void unlock() noexcept;

 private:
  static constexpr pthread_t kNoThread = ~pthread_t{0};  // the owner of a free lock

  pthread_mutex_t fMutex = PTHREAD_MUTEX_INITIALIZER;
  pthread_cond_t fFree = PTHREAD_COND_INITIALIZER;
  pthread_t fOwner = kNoThread;
  unsigned int fDepth = 0;
  unsigned int fWaiters = 0;
};

}  // namespace KAP_T_MT
