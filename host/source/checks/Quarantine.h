// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <unordered_map>

#include "faults/Gate.h"

namespace KAPHost {

// While checking is on, the records of destroyed atoms, errors and containers are kept until the
// host ends, so that a release of a dead handle finds a record that says so. Marks in freed memory
// would not last, and a set of live handles would cost a look-up in every call. Thread-safe.
class Quarantine {
 public:
  Quarantine() = default;
  Quarantine(const Quarantine&) = delete;
  Quarantine& operator=(const Quarantine&) = delete;
  ~Quarantine();

  // Keeps a record, which it hands to `freeRecord` at its end. Kind and name (may be null) describe
  // it in reports: `container "POSObjectImpl"`. False when out of memory.
  bool Keep(void* record, void (*freeRecord)(void*), const char* kind, const char* name) noexcept;
  // Set while nothing is kept yet: called with each record that is kept and its description.
  std::function<void(const void* record, const std::string& what)>& OnKeep() { return fOnKeep; }
  // Reports that a dead record was used.
  void ReportUse(const void* record, const char* call) const noexcept;

 private:
  struct Entry {
    void (*fFree)(void*);
    std::string fWhat;
  };

  std::function<void(const void*, const std::string&)> fOnKeep;
  mutable std::mutex fMutex;
  std::unordered_map<const void*, Entry> fEntries;
};

// The dead record whose use in the present call is already reported, with more than is known here.
inline thread_local constinit const void* tReportedDead = nullptr;

// Whether the records of destroyed objects are kept.
inline bool IsChecking() noexcept { return HasGateBits(kGateChecking); }

bool KeepDeadSlowly(void* record, void (*freeRecord)(void*), const char* kind,
                    const char* name) noexcept;

// While checking is on, keeps a dead record in the live host's quarantine. False: the caller frees
// the record.
inline bool KeepDead(void* record, void (*freeRecord)(void*), const char* kind,
                     const char* name) noexcept {
  return IsChecking() && KeepDeadSlowly(record, freeRecord, kind, name);
}

// Reports the use of a dead record, whose mark the caller has read.
void ReportDead(const void* record, const char* call) noexcept;

}  // namespace KAPHost
