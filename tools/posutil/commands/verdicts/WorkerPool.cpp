// SPDX-License-Identifier: MIT
#include "commands/verdicts/WorkerPool.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <new>

#include "base/Failure.h"

namespace PosUtil {

namespace {

static_assert(std::atomic<std::size_t>::is_always_lock_free, "the processes share one");

constexpr timespec kPause = {0, 2'000'000};  // of a worker that is far ahead

}  // namespace

WorkerPool::Shared* WorkerPool::NewShared() {
  void* const memory =
      ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return new (memory) Shared;
}

void WorkerPool::Unmap::operator()(Shared* shared) const noexcept {
  ::munmap(shared, sizeof *shared);
}

WorkerPool::WorkerPool(std::size_t workers, std::size_t tasks)
    : fMost(workers), fTasks(tasks), fShared(NewShared()) {
  StartAll(workers);
  if (!IsWorker() && fWorkers.empty()) {
    throw Failure(std::string("cannot start a process: ") + std::strerror(errno));
  }
}

// Fewer workers than wanted take longer, but do the same.
void WorkerPool::StartAll(std::size_t workers) {
  fWorkers.reserve(workers);
  while (fWorkers.size() < workers && !IsWorker() && Start()) {
  }
}

bool WorkerPool::Restart() {
  const std::size_t taken = fShared->fNextTask.load(std::memory_order_relaxed);
  if (taken >= fTasks || taken == fTaken) return false;
  fTaken = taken;
  StartAll(std::min(fMost, fTasks - taken));
  return IsWorker() || !fWorkers.empty();
}

bool WorkerPool::Start() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return false;
  Descriptor from(ends[0]);
  Descriptor to(ends[1]);
  const pid_t parent = ::getpid();
  const pid_t process = ::fork();
  if (process < 0) return false;
  if (process > 0) {
    fWorkers.push_back({process, std::move(from)});
    return true;
  }
  fWorkers.clear();  // else the pipes of the others stay open when the parent ends
  fResults = std::move(to);
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (::getppid() != parent) ::raise(SIGTERM);  // it ended before the call
  return true;
}

WorkerPool::~WorkerPool() {
  for (Worker& worker : fWorkers) {
    if (worker.fPipe) ::kill(worker.fProcess, SIGTERM);  // its results have no reader
    worker.fPipe = Descriptor();
  }
  Collect();
}

void WorkerPool::Collect() {
  for (const Worker& worker : fWorkers) {
    int status = 0;
    while (::waitpid(worker.fProcess, &status, 0) < 0 && errno == EINTR) {
    }
    fHasFailed |= status != 0;
  }
  fWorkers.clear();
}

std::optional<std::size_t> WorkerPool::NextTask() {
  const std::size_t task = fShared->fNextTask.fetch_add(1, std::memory_order_relaxed);
  if (task >= fTasks) return std::nullopt;
  while (task >= fShared->fLimit.load(std::memory_order_relaxed)) ::nanosleep(&kPause, nullptr);
  return task;
}

void WorkerPool::ReceiveAll(const Receive& receive) {
  std::vector<char> bytes(64 * 1024);
  std::vector<pollfd> waiting;
  for (const Worker& worker : fWorkers) waiting.push_back({worker.fPipe.Get(), POLLIN, 0});
  std::size_t open = fWorkers.size();
  while (open > 0) {
    if (::poll(waiting.data(), waiting.size(), -1) < 0) {
      if (errno == EINTR) continue;
      throw Failure(std::string("cannot wait for a process: ") + std::strerror(errno));
    }
    for (std::size_t i = 0; i < waiting.size(); ++i) {
      if (!waiting[i].revents) continue;
      const ssize_t count = ::read(waiting[i].fd, bytes.data(), bytes.size());
      if (count < 0 && errno == EINTR) continue;
      if (count > 0) {
        receive(i, {bytes.data(), static_cast<std::size_t>(count)});
        continue;
      }
      waiting[i].fd = -1;  // poll skips it
      fWorkers[i].fPipe = Descriptor();
      --open;
      fHasLost = true;
      fShared->fLimit.store(SIZE_MAX, std::memory_order_relaxed);
    }
  }
  Collect();
}

}  // namespace PosUtil
