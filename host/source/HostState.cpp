#include "HostState.h"

#include <atomic>
#include <iostream>
#include <stdexcept>

#include "ContainerTypes.h"
#include "Gate.h"
#include "Services.h"

namespace KAPHost {

namespace {

constinit std::atomic<HostState*> gCurrent{nullptr};

Snapshot CountAll() {
  Snapshot books;
  for (const Service* service : Services()) {
    if (service->fCount != nullptr) service->fCount(books);
  }
  return books;
}

}  // namespace

HostState::HostState(HostOptions options)
    : fReports(std::move(options.fOnReport)),
      fOnLeak(std::move(options.fOnLeak)),
      fBefore(CountAll()) {
  for (const Service* service : Services()) service->fRegister(fBinder);
  HostState* none = nullptr;
  if (!gCurrent.compare_exchange_strong(none, this)) {
    throw std::logic_error(
        "KAPHost::Host: another host lives in this process; there can be one at a time");
  }
  gGate.store(0);
}

HostState::~HostState() {
  gContainerTypes.ReleaseUnused();
  ReportLeaks();
  gGate.store(kGateClosed);
  gCurrent.store(nullptr);
}

HostState* HostState::Current() noexcept { return gCurrent.load(std::memory_order_acquire); }

void* HostState::Find(const char* interfaceName, const char* methodName,
                      const char* procName) const noexcept {
  if (interfaceName == nullptr || methodName == nullptr || procName == nullptr) return nullptr;
  if (fFaultRules.IsHidden(interfaceName, methodName)) return nullptr;
  return fBinder.Find(interfaceName, methodName, procName);
}

bool HostState::Register(const char* interfaceName, const char* methodName, const char* procName,
                         void* proc) {
  if (interfaceName == nullptr || methodName == nullptr || procName == nullptr || proc == nullptr) {
    return false;
  }
  fBinder.Register(interfaceName, methodName, procName, proc);
  return true;
}

bool HostState::RegisterForComponent(const char* interfaceName, const char* methodName,
                                     const char* procName, void* proc) {
  if (interfaceName != nullptr && methodName != nullptr &&
      fFaultRules.FailsRegistration(interfaceName, methodName)) {
    return false;
  }
  return Register(interfaceName, methodName, procName, proc);
}

Snapshot HostState::TakeSnapshot() const { return CountAll() - fBefore; }

void HostState::ReportLeaks() const noexcept {
  try {
    const Snapshot leaked = TakeSnapshot();
    if (leaked.IsEmpty()) return;
    if (fOnLeak) {
      fOnLeak(leaked);
    } else {
      std::cerr << "KAP host: still held at shutdown:\n" << leaked;
    }
  } catch (const std::exception&) {
    std::cerr << "KAP host: no memory to tell what is still held at shutdown\n";
  }
}

void Report(const char* message) noexcept {
  if (HostState* state = HostState::Current()) state->fReports.Add(message);
}

}  // namespace KAPHost
