#include "kaphost/Host.h"

#include <utility>

#include "HostState.h"

namespace KAPHost {

namespace {

void* GetProcAddressProc(const char* interfaceName, const char* methodName,
                         const char* procName) noexcept {
  const HostState* state = HostState::Current();
  return state != nullptr ? state->Find(interfaceName, methodName, procName) : nullptr;
}

}  // namespace

Host::Host(HostOptions options) : fState(std::make_unique<HostState>(std::move(options))) {}

Host::~Host() = default;

KAPGetProcAddressProc Host::GetProcAddress() const { return &GetProcAddressProc; }

void* Host::Find(const char* interfaceName, const char* methodName, const char* procName) const {
  return fState->Find(interfaceName, methodName, procName);
}

bool Host::Register(const char* interfaceName, const char* methodName, const char* procName,
                    void* proc) {
  return fState->Register(interfaceName, methodName, procName, proc);
}

void Host::Unregister(const char* interfaceName) {
  if (interfaceName != nullptr) fState->fBinder.Unregister(interfaceName);
}

Component Host::Load(const std::string& path, const std::string& name) {
  Component component(path, name);
  if (!component.Initialize(GetProcAddress())) {
    throw LoadError("\"" + path + "\": " + name + "Initialize failed");
  }
  return component;
}

std::vector<std::string> Host::Reports() const { return fState->fReports.All(); }

std::vector<std::string> Host::TakeReports() { return fState->fReports.Take(); }

Snapshot Host::TakeSnapshot() const { return fState->TakeSnapshot(); }

void Host::Refuse(Call kind, unsigned long n) { fState->fRefusals.Refuse(kind, n); }

void Host::RefuseFrom(Call kind, unsigned long n) { fState->fRefusals.RefuseFrom(kind, n); }

void Host::CountCalls() { fState->fRefusals.CountCalls(); }

void Host::RefuseBlocksAbove(std::size_t size) { fState->fRefusals.RefuseBlocksAbove(size); }

void Host::LimitReads(std::size_t size) { fState->fRefusals.LimitReads(size); }

void Host::HideProcedure(const char* interfaceName, const char* methodName) {
  fState->fRefusals.HideProcedure(interfaceName, methodName);
}

void Host::HideInterface(const char* interfaceName) {
  fState->fRefusals.HideInterface(interfaceName);
}

void Host::RefuseRegistration(const char* interfaceName, const char* methodName) {
  fState->fRefusals.RefuseRegistration(interfaceName, methodName);
}

void Host::StopRefusing() { fState->fRefusals.Stop(); }

bool Host::Fired() const { return fState->fRefusals.Fired(); }

unsigned long Host::CallCount(Call kind) const { return fState->fRefusals.CallCount(kind); }

void Host::LogStreamCalls(bool log) { fState->fStreamLog.Switch(log); }

std::vector<StreamCall> Host::TakeStreamCalls() { return fState->fStreamLog.Take(); }

}  // namespace KAPHost
