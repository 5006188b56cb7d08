#include "binder/Binder.h"

#include <atomic>
#include <mutex>

namespace KAPHost {

namespace {

constinit std::atomic<unsigned long> gUnregisterCount{0};
static_assert(sizeof gUnregisterCount == sizeof(unsigned long) &&
              std::atomic<unsigned long>::is_always_lock_free);

}  // namespace

void Binder::Register(std::string_view interfaceName, std::string_view methodName,
                      std::string_view procName, void* proc) {
  const std::unique_lock lock(fMutex);
  auto procs = fInterfaces.find(interfaceName);
  const bool isNew = procs == fInterfaces.end();
  if (isNew) procs = fInterfaces.emplace(interfaceName, Procs()).first;
  try {
    procs->second.insert_or_assign({std::string(methodName), std::string(procName)}, proc);
  } catch (...) {
    if (isNew) fInterfaces.erase(procs);
    throw;
  }
}

void Binder::Unregister(std::string_view interfaceName) noexcept {
  const std::unique_lock lock(fMutex);
  const auto procs = fInterfaces.find(interfaceName);
  if (procs == fInterfaces.end()) return;
  fInterfaces.erase(procs);
  gUnregisterCount.fetch_add(1, std::memory_order_release);
}

void* Binder::Find(std::string_view interfaceName, std::string_view methodName,
                   std::string_view procName) const noexcept {
  const std::shared_lock lock(fMutex);
  const auto procs = fInterfaces.find(interfaceName);
  if (procs == fInterfaces.end()) return nullptr;
  const auto proc = procs->second.find(Names(methodName, procName));
  return proc == procs->second.end() ? nullptr : proc->second;
}

unsigned long* Binder::UnregisterCountAddr() noexcept {
  return reinterpret_cast<unsigned long*>(&gUnregisterCount);
}

}  // namespace KAPHost
