// SPDX-License-Identifier: MIT
#include "binder/Binder.h"

#include <atomic>
#include <mutex>
#include <new>

#include "faults/FaultRules.h"

namespace KAPHost {

namespace {

constinit std::atomic<unsigned long> gUnregisterCount{0};
static_assert(sizeof gUnregisterCount == sizeof(unsigned long) &&
              std::atomic<unsigned long>::is_always_lock_free);

}  // namespace

bool Binder::Register(const char* interfaceName, const char* methodName, const char* procName,
                      void* proc) {
  if (!interfaceName || !methodName || !procName || !proc) return false;
  void* const handedOut = fWrap ? fWrap(interfaceName, methodName, procName, proc) : proc;
  const std::unique_lock lock(fMutex);
  auto procs = fInterfaces.find(std::string_view(interfaceName));
  const bool isNew = procs == fInterfaces.end();
  if (isNew) procs = fInterfaces.emplace(interfaceName, Procs()).first;
  try {
    procs->second.insert_or_assign({methodName, procName}, Registered{proc, handedOut});
  } catch (...) {
    if (isNew) fInterfaces.erase(procs);
    throw;
  }
  return true;
}

bool Binder::RegisterForComponent(const char* interfaceName, const char* methodName,
                                  const char* procName, void* proc) noexcept {
  if (interfaceName && methodName && fFaultRules.FailsRegistration(interfaceName, methodName)) {
    return false;
  }
  try {
    return Register(interfaceName, methodName, procName, proc);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void Binder::Unregister(const char* interfaceName) noexcept {
  if (!interfaceName) return;
  const std::unique_lock lock(fMutex);
  const auto procs = fInterfaces.find(std::string_view(interfaceName));
  if (procs == fInterfaces.end()) return;
  fInterfaces.erase(procs);
  gUnregisterCount.fetch_add(1, std::memory_order_release);
}

std::vector<std::string> Binder::UnregisterIf(const std::function<bool(void* proc)>& matches) {
  std::vector<std::string> names;
  const std::unique_lock lock(fMutex);
  for (auto& [name, procs] : fInterfaces) {
    if (std::erase_if(procs, [&](const auto& entry) { return matches(entry.second.fProc); }) == 0)
      continue;
    gUnregisterCount.fetch_add(1, std::memory_order_release);
    names.push_back(name);
  }
  std::erase_if(fInterfaces, [](const auto& interface) { return interface.second.empty(); });
  return names;
}

void* Binder::Find(const char* interfaceName, const char* methodName,
                   const char* procName) const noexcept {
  if (!interfaceName || !methodName || !procName) return nullptr;
  const std::string_view interfaceText = interfaceName;
  const Names names(methodName, procName);
  if (fFaultRules.IsHidden(interfaceText, names.first)) return nullptr;
  const std::shared_lock lock(fMutex);
  const auto procs = fInterfaces.find(interfaceText);
  if (procs == fInterfaces.end()) return nullptr;
  const auto proc = procs->second.find(names);
  return proc == procs->second.end() ? nullptr : proc->second.fHandedOut;
}

unsigned long* Binder::UnregisterCountAddr() noexcept {
  return reinterpret_cast<unsigned long*>(&gUnregisterCount);
}

}  // namespace KAPHost
