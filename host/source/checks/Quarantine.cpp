// SPDX-License-Identifier: MIT
#include "checks/Quarantine.h"

#include <new>
#include <utility>

#include "base/Current.h"
#include "base/Reports.h"

namespace KAPHost {

Quarantine::~Quarantine() {
  for (const auto& [record, entry] : fEntries) entry.fFree(const_cast<void*>(record));
}

bool Quarantine::Keep(void* record, void (*freeRecord)(void*), const char* kind,
                      const char* name) noexcept {
  try {
    std::string what = kind;
    if (name) what.append(" \"").append(name).append("\"");
    if (fOnKeep) fOnKeep(record, what);
    const std::lock_guard lock(fMutex);
    fEntries.insert_or_assign(record, Entry{freeRecord, std::move(what)});
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void Quarantine::ReportUse(const void* record, const char* call) const noexcept {
  try {
    std::string message = std::string("KAP host: ") + call + " of a dead ";
    {
      const std::lock_guard lock(fMutex);
      const auto entry = fEntries.find(record);
      message += entry != fEntries.end() ? entry->second.fWhat : "object";
    }
    Report(message.c_str());
  } catch (const std::bad_alloc&) {
    Report("KAP host: a dead object was used");
  }
}

bool KeepDeadSlowly(void* record, void (*freeRecord)(void*), const char* kind,
                    const char* name) noexcept {
  Quarantine* quarantine = Current<Quarantine>();
  return quarantine && quarantine->Keep(record, freeRecord, kind, name);
}

void ReportDead(const void* record, const char* call) noexcept {
  if (record == tReportedDead) return;
  if (const Quarantine* quarantine = Current<Quarantine>()) quarantine->ReportUse(record, call);
}

}  // namespace KAPHost
