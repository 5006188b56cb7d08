// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "faults/Gate.h"
#include "kap/KAPTypes.h"

namespace KAPHost {

struct Stack;

// Learns what becomes of the things that components hold handles of. Thread-safe.
class HandleObserver {
 public:
  virtual ~HandleObserver() = default;

  // The stack of the calling thread; null unless stacks are on.
  virtual std::shared_ptr<const Stack> StackHere() const noexcept = 0;
  // The thing is dead, and its record stays. `what` describes it: `container "POSObjectImpl"`.
  // Throws std::bad_alloc.
  virtual void Died(const void* record, const std::string& what,
                    std::shared_ptr<const Stack> stack) = 0;
  // The memory of the thing is about to be freed.
  virtual void Freed(const void* record) noexcept = 0;
  // The host has got the reference to an error that a component's procedure returned to it, and has
  // released such a reference.
  virtual void HostTook(const KAPError& error, const void* proc) noexcept = 0;
  virtual void HostReleased(const KAPError& error) noexcept = 0;
  // Reports misuse: the headline, the call under way, and where the thing was made and ended.
  // Throws std::bad_alloc.
  virtual void Report(const std::string& headline, const void* thing) const = 0;
};

// While checking is on, the records of destroyed atoms, errors and containers are kept until the
// host ends, so that a release of a dead handle finds a record that says so. Marks in freed memory
// would not last, and a set of live handles would cost a look-up in every call. Thread-safe.
class Quarantine {
 public:
  Quarantine() = default;
  Quarantine(const Quarantine&) = delete;
  Quarantine& operator=(const Quarantine&) = delete;
  ~Quarantine();

  // Keeps a record, and passes it to `freeRecord` when later records need the room or when the
  // quarantine ends; `what` describes it. Throws std::bad_alloc.
  void Keep(void* record, void (*freeRecord)(void*), std::string what);
  // The record is not kept after all.
  void Forget(const void* record) noexcept;
  // What describes a record that is kept, else "object". Throws std::bad_alloc.
  std::string NameOf(const void* record) const;

  static constexpr std::size_t kMost = 50'000;  // with their histories, 50 MB

 private:
  struct Entry {
    void (*fFree)(void*);
    std::string fWhat;
  };

  mutable std::mutex fMutex;
  std::unordered_map<const void*, Entry> fEntries;
  std::deque<void*> fOrder;
};

// The dead record whose use in the present call is already reported, with more than is known here.
inline thread_local constinit const void* tReportedDead = nullptr;

// Whether KeepDead has anything to do.
inline bool IsFollowing() noexcept { return HasGateBits(kGateChecking | kGateFollowing); }

// The stack of the calling thread for KeepDead; null unless stacks are on.
std::shared_ptr<const Stack> StackOfEnd() noexcept;

bool KeepDeadSlowly(void* record, void (*freeRecord)(void*), const char* kind, const char* name,
                    std::shared_ptr<const Stack> stack) noexcept;

// To be called for each thing that is destroyed, while its record is still what it was: the list of
// what is held may look at it until then. While checking is on, keeps the record in the live host's
// quarantine. False: the caller frees the record. Kind and name (may be null) describe it.
inline bool KeepDead(void* record, void (*freeRecord)(void*), const char* kind,
                     const char* name) noexcept {
  return IsFollowing() && KeepDeadSlowly(record, freeRecord, kind, name, StackOfEnd());
}

// For HandleObserver.
void NoteHostTook(const KAPError& error, const void* proc) noexcept;
void NoteHostReleased(const KAPError& error) noexcept;

// Reports the use of a dead record, whose mark the caller has read.
void ReportDead(const void* record, const char* call) noexcept;

}  // namespace KAPHost
