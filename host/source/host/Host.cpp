// SPDX-License-Identifier: MIT
#include "kaphost/Host.h"

#include <utility>

#include "base/Current.h"
#include "host/HostState.h"

namespace KAPHost {

namespace {

void* GetProcAddressProc(const char* interfaceName, const char* methodName,
                         const char* procName) noexcept {
  const Binder* binder = Current<Binder>();
  return binder ? binder->Find(interfaceName, methodName, procName) : nullptr;
}

}  // namespace

Host::Host(HostOptions options) : fState(std::make_unique<HostState>(std::move(options))) {}

Host::~Host() = default;

KAPGetProcAddressProc Host::GetProcAddress() const { return &GetProcAddressProc; }

void* Host::Find(const char* interfaceName, const char* methodName, const char* procName) const {
  return fState->fBinder.Find(interfaceName, methodName, procName);
}

bool Host::Register(const char* interfaceName, const char* methodName, const char* procName,
                    void* proc) {
  return fState->fBinder.Register(interfaceName, methodName, procName, proc);
}

void Host::Unregister(const char* interfaceName) { fState->fBinder.Unregister(interfaceName); }

Component Host::Load(const std::string& path, const std::string& name) {
  Component component(path, name);
  if (component.IsInitialised()) throw LoadError("\"" + path + "\" is already initialised");
  if (!component.Initialize(GetProcAddress())) {
    throw LoadError("\"" + path + "\": " + name + "Initialize failed");
  }
  return component;
}

std::vector<std::string> Host::Reports() const { return fState->fReports.All(); }

std::vector<std::string> Host::TakeReports() { return fState->fReports.Take(); }

Snapshot Host::TakeSnapshot() const { return fState->TakeSnapshot(); }

std::uint64_t Host::TakeDigest() const { return fState->TakeDigest(); }

std::vector<LiveThing> Host::LiveThings(unsigned long since) const {
  const Ledger* const ledger = fState->TheLedger();
  return ledger ? ledger->Live(since) : std::vector<LiveThing>();
}

unsigned long Host::LastThing() const {
  const Ledger* const ledger = fState->TheLedger();
  return ledger ? ledger->Last() : 0;
}

void Host::FailCall(KAPFault kind, unsigned long n) { fState->fFaultRules.FailCall(kind, n); }

void Host::FailFrom(KAPFault kind, unsigned long n) { fState->fFaultRules.FailFrom(kind, n); }

void Host::CountCalls() { fState->fFaultRules.CountCalls(); }

void Host::FailBlocksAbove(std::size_t size) { fState->fFaultRules.FailBlocksAbove(size); }

void Host::LimitReads(std::size_t size) { fState->fFaultRules.LimitReads(size); }

void Host::HideProcedure(const char* interfaceName, const char* methodName) {
  if (!interfaceName || !methodName) return;
  fState->fFaultRules.HideProcedure(interfaceName, methodName);
}

void Host::HideInterface(const char* interfaceName) {
  if (interfaceName) fState->fFaultRules.HideInterface(interfaceName);
}

void Host::FailRegistration(const char* interfaceName, const char* methodName) {
  if (!interfaceName || !methodName) return;
  fState->fFaultRules.FailRegistration(interfaceName, methodName);
}

void Host::StopFaults() { fState->fFaultRules.Stop(); }

bool Host::Fired() const { return fState->fFaultRules.Fired(); }

unsigned long Host::CallCount(KAPFault kind) const { return fState->fFaultRules.CallCount(kind); }

void Host::LogStreamCalls(bool log) { fState->fStreamLog.Switch(log); }

std::vector<StreamCall> Host::TakeStreamCalls() { return fState->fStreamLog.Take(); }

}  // namespace KAPHost
