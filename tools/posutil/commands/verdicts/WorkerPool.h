// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/Descriptor.h"

namespace PosUtil {

// Child processes that share numbered tasks. Processes and not threads: the library reports to its
// host, which has one list of reports, so with threads a report could be about any document.
//
// After the constructor, both sides run: the parent calls ReceiveAll; a worker takes tasks until
// none is left, then returns to the end of the program, where its host checks its accounting.
// Errors: Failure if no process starts in the constructor.
class WorkerPool {
 public:
  // Output that is still in a buffer would appear once for each process: flush it before.
  WorkerPool(std::size_t workers, std::size_t tasks);
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;
  // Ends the processes that still run.
  ~WorkerPool();

  bool IsWorker() const { return static_cast<bool>(fResults); }

  // For a worker: the next task, and the pipe for what the worker finds out.
  std::optional<std::size_t> NextTask();
  int Results() const { return fResults.Get(); }

  // For the parent: starts workers for the tasks that none has taken because all have died, and
  // returns whether it has. Like the constructor, it returns in the workers too. Returns false if
  // the workers before took no task: new ones would die the same way.
  bool Restart();

  // For the parent: calls `receive` with the bytes that the workers send, until all have ended.
  using Receive = std::function<void(std::size_t worker, std::string_view bytes)>;
  void ReceiveAll(const Receive& receive);
  // For the parent: the first tasks, this many, need no more memory. Workers wait before they run
  // far ahead of them.
  void SetDone(std::size_t tasks) {
    if (!fHasLost) fShared->fLimit.store(tasks + kMostAhead, std::memory_order_relaxed);
  }
  // The number of workers that run.
  std::size_t Count() const { return fWorkers.size(); }
  // After ReceiveAll: whether a worker was killed or returned an exit status other than 0.
  bool HasFailed() const { return fHasFailed; }

 private:
  struct Worker {
    pid_t fProcess;
    Descriptor fPipe;
  };
  // In memory that all processes share.
  struct Shared {
    std::atomic<std::size_t> fNextTask = 0;
    std::atomic<std::size_t> fLimit = kMostAhead;  // no worker begins this task or a later one
  };
  struct Unmap {
    void operator()(Shared* shared) const noexcept;
  };
  static Shared* NewShared();

  // Results of tasks wait in memory for those of the tasks before.
  static constexpr std::size_t kMostAhead = 256;

  void StartAll(std::size_t workers);
  bool Start();
  // Waits until all workers have ended.
  void Collect();

  const std::size_t fMost;  // of the workers
  const std::size_t fTasks;
  std::size_t fTaken = 0;  // at the last Restart
  bool fHasFailed = false;
  bool fHasLost = false;  // a worker has ended, perhaps with a task that will never be done
  std::unique_ptr<Shared, Unmap> fShared;
  std::vector<Worker> fWorkers;  // of the parent
  Descriptor fResults;           // of a worker
};

}  // namespace PosUtil
