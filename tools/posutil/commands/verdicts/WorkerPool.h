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
  // The number of workers that run.
  std::size_t Count() const { return fWorkers.size(); }
  // After ReceiveAll: whether a worker was killed or returned an exit status other than 0.
  bool HasFailed() const { return fHasFailed; }

 private:
  struct Worker {
    pid_t fProcess;
    Descriptor fPipe;
  };
  struct Unmap {
    void operator()(std::atomic<std::size_t>* shared) const noexcept;
  };

  void StartAll(std::size_t workers);
  bool Start();
  // Waits until all workers have ended.
  void Collect();

  const std::size_t fMost;  // of the workers
  const std::size_t fTasks;
  std::size_t fTaken = 0;  // at the last Restart
  bool fHasFailed = false;
  std::unique_ptr<std::atomic<std::size_t>, Unmap> fNextTask;
  std::vector<Worker> fWorkers;  // of the parent
  Descriptor fResults;           // of a worker
};

}  // namespace PosUtil
