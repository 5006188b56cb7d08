// SPDX-License-Identifier: MIT
#include "kap/TOQWaitMutex.h"

namespace KAP_T_MT {

TOQWaitMutex::~TOQWaitMutex() {
  pthread_cond_destroy(&fFree);
  pthread_mutex_destroy(&fMutex);
}

void TOQWaitMutex::lock() noexcept {
  pthread_mutex_lock(&fMutex);
  if (fOwner == pthread_self()) {
    ++fDepth;
  } else {
    ++fWaiters;
    while (fDepth != 0) pthread_cond_wait(&fFree, &fMutex);
    --fWaiters;
    fDepth = 1;
    fOwner = pthread_self();
  }
  pthread_mutex_unlock(&fMutex);
}

void TOQWaitMutex::unlock() noexcept {
  pthread_mutex_lock(&fMutex);
  if (--fDepth == 0) {
    fOwner = kNoThread;
    if (fWaiters != 0) pthread_cond_signal(&fFree);
  }
  pthread_mutex_unlock(&fMutex);
}

}  // namespace KAP_T_MT
