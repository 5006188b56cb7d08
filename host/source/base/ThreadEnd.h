// SPDX-License-Identifier: MIT
#pragma once

#include <pthread.h>

namespace KAPHost {

// Has kEnd(part) called when the calling thread ends. A thread_local object with a destructor would
// do, but its registration ends the process when it has no memory. Destructors that run still later
// may make another part, whose end comes in the next round. False when out of memory or keys.
template <void (*kEnd)(void*)>
bool CallAtThreadEnd(void* part) noexcept {
  struct Key {
    pthread_key_t fKey;
    bool fIsMade;
  };
  static const Key key = [] {
    pthread_key_t made{};
    const bool isMade = pthread_key_create(&made, kEnd) == 0;
    return Key{made, isMade};
  }();
  return key.fIsMade && pthread_setspecific(key.fKey, part) == 0;
}

}  // namespace KAPHost
