// SPDX-License-Identifier: MIT
#include "quarantine/Quarantine.h"

#include <new>
#include <utility>

#include "base/Current.h"
#include "base/Quoted.h"
#include "base/Reports.h"

namespace KAPHost {

Quarantine::~Quarantine() {
  for (const auto& [record, entry] : fEntries) entry.fFree(const_cast<void*>(record));
}

void Quarantine::Keep(void* record, void (*freeRecord)(void*), std::string what) {
  Entry oldest{};
  void* old = nullptr;
  {
    const std::lock_guard lock(fMutex);
    fOrder.push_back(record);
    fEntries.insert_or_assign(record, Entry{freeRecord, std::move(what)});
    if (fOrder.size() <= kMost) return;
    old = fOrder.front();
    fOrder.pop_front();
    if (const auto entry = fEntries.extract(old)) oldest = std::move(entry.mapped());
  }
  if (!oldest.fFree) return;  // it was not kept after all
  if (HandleObserver* const observer = Current<HandleObserver>()) observer->Freed(old);
  oldest.fFree(old);
}

void Quarantine::Forget(const void* record) noexcept {
  const std::lock_guard lock(fMutex);
  fEntries.erase(record);
}

std::string Quarantine::NameOf(const void* record) const {
  const std::lock_guard lock(fMutex);
  const auto entry = fEntries.find(record);
  return entry != fEntries.end() ? entry->second.fWhat : "object";
}

std::shared_ptr<const Stack> StackOfEnd() noexcept {
  const HandleObserver* const observer = Current<HandleObserver>();
  return observer && HasGateBits(kGateChecking) ? observer->StackHere() : nullptr;
}

namespace {

std::string WhatIs(const char* kind, const char* name) {
  return name ? std::string(kind).append(" ").append(Quoted(name)) : kind;
}

}  // namespace

bool KeepDeadSlowly(void* record, void (*freeRecord)(void*), const char* kind, const char* name,
                    std::shared_ptr<const Stack> stack) noexcept {
  HandleObserver* const observer = Current<HandleObserver>();
  Quarantine* const quarantine = Current<Quarantine>();
  try {
    if (observer && quarantine && HasGateBits(kGateChecking)) {
      const std::string what = WhatIs(kind, name);
      quarantine->Keep(record, freeRecord, what);
      observer->Died(record, what, std::move(stack));
      return true;
    }
  } catch (const std::bad_alloc&) {
    quarantine->Forget(record);
  }
  if (observer) observer->Freed(record);
  return false;
}

void NoteHostTook(const KAPError& error, const void* proc) noexcept {
  if (HandleObserver* const observer = Current<HandleObserver>()) observer->HostTook(error, proc);
}

void NoteHostReleased(const KAPError& error) noexcept {
  if (HandleObserver* const observer = Current<HandleObserver>()) observer->HostReleased(error);
}

void ReportDead(const void* record, const char* call) noexcept {
  if (record == tReportedDead) return;
  const Quarantine* const quarantine = Current<Quarantine>();
  const HandleObserver* const observer = Current<HandleObserver>();
  if (!quarantine || !observer) return;
  try {
    observer->Report(std::string(call) + " of a dead " + quarantine->NameOf(record), record);
  } catch (const std::bad_alloc&) {
    Report("KAP host: a dead object was used");
  }
}

}  // namespace KAPHost
