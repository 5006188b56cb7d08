// SPDX-License-Identifier: MIT
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "Small.h"

// Breaks no rule. Has a thread as long as it is initialised.
namespace {
struct Worker {
  std::mutex fMutex;
  std::condition_variable fChange;
  bool fIsOver = false;
  std::thread fThread{[this] {
    std::unique_lock lock(fMutex);
    while (!fIsOver) fChange.wait(lock);
  }};
};
Worker* gWorker = nullptr;  // a static object would be destroyed when the process exits
}  // namespace
bool Start() {
  if (!StartWell()) return false;
  gWorker = new Worker;
  return true;
}
void Stop() {
  const std::unique_ptr<Worker> worker(std::exchange(gWorker, nullptr));
  if (worker) {
    {
      const std::lock_guard lock(worker->fMutex);
      worker->fIsOver = true;
    }
    worker->fChange.notify_all();
    worker->fThread.join();
  }
  StopWell();
}
double Answer() noexcept { return 42; }
