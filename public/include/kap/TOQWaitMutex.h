#pragma once

#include <pthread.h>

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A recursive lock made of a mutex and a condition variable. The mutex is held only while the state
// below changes, never while the lock itself is held. Meets BasicLockable, so std::lock_guard
// applies. Errors: none; a lock that is destroyed must be free.
class TOQWaitMutex {
 public:
  TOQWaitMutex() noexcept;
  ~TOQWaitMutex();
  TOQWaitMutex(const TOQWaitMutex&) = delete;
  TOQWaitMutex& operator=(const TOQWaitMutex&) = delete;

  void lock() noexcept;
  void unlock() noexcept;

 private:
  static constexpr pthread_t kNobody = ~pthread_t{0};

  pthread_mutex_t fMutex;
  pthread_cond_t fFree;
  pthread_t fOwner = kNobody;
  unsigned int fDepth = 0;
  unsigned int fWaiters = 0;
};

}  // namespace KAP_T_MT
