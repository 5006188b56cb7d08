// SPDX-License-Identifier: MIT
#include "faults/FaultRules.h"

#include <algorithm>

#include "base/Current.h"

namespace KAPHost {

constinit std::atomic<unsigned> gGate{kGateClosed};

bool FailsSlowly(KAPFault kind, std::size_t blockSize) noexcept {
  FaultRules* rules = Current<FaultRules>();
  return !rules || (!tIsExempt && rules->Fails(kind, blockSize));
}

std::size_t ReadLimitSlowly() noexcept {
  const FaultRules* rules = Current<FaultRules>();
  return rules ? rules->ReadLimit() : 0;
}

// A new rule restarts the counting, for all kinds.
void FaultRules::Arm() {
  fCalls = {};
  fFired = false;
  gGate.fetch_or(kGateArmed);
}

void FaultRules::SetRule(KAPFault kind, Rule rule) {
  const std::lock_guard lock(fMutex);
  fRules[static_cast<unsigned>(kind)] = rule;
  Arm();
}

void FaultRules::CountCalls() {
  const std::lock_guard lock(fMutex);
  Arm();
}

void FaultRules::FailBlocksAbove(std::size_t size) {
  const std::lock_guard lock(fMutex);
  fLargestBlock = size;
  Arm();
}

void FaultRules::LimitReads(std::size_t size) {
  const std::lock_guard lock(fMutex);
  fLargestRead = std::max(size, std::size_t{1});  // 0 bytes would mean the end
  Arm();
}

void FaultRules::HideProcedure(std::string_view interfaceName, std::string_view methodName) {
  const std::lock_guard lock(fMutex);
  fHidden.emplace(interfaceName, methodName);
  Arm();
}

void FaultRules::HideInterface(std::string_view interfaceName) { HideProcedure(interfaceName, ""); }

void FaultRules::FailRegistration(std::string_view interfaceName, std::string_view methodName) {
  const std::lock_guard lock(fMutex);
  fFailingRegistrations.emplace(interfaceName, methodName);
  Arm();
}

void FaultRules::Stop() {
  const std::lock_guard lock(fMutex);
  gGate.fetch_and(~static_cast<unsigned>(kGateArmed));
  fRules = {};
  fLargestBlock = kAnySize;
  fLargestRead = kAnySize;
  fHidden.clear();
  fFailingRegistrations.clear();
}

bool FaultRules::Fired() const {
  const std::lock_guard lock(fMutex);
  return fFired;
}

unsigned long FaultRules::CallCount(KAPFault kind) const {
  const std::lock_guard lock(fMutex);
  return fCalls[static_cast<unsigned>(kind)];
}

bool FaultRules::CountOne(KAPFault kind) {
  const auto index = static_cast<unsigned>(kind);
  const unsigned long number = ++fCalls[index];
  return fRules[index].fFirst <= number && number <= fRules[index].fLast;
}

bool FaultRules::Fails(KAPFault kind, std::size_t blockSize) noexcept {
  const std::lock_guard lock(fMutex);
  const bool byKind = CountOne(kind);
  const bool byNumber = CountOne(KAPFault::kAny);
  const bool fails = byKind || byNumber || blockSize > fLargestBlock;
  fFired = fFired || fails;
  return fails;
}

std::size_t FaultRules::ReadLimit() const noexcept {
  const std::lock_guard lock(fMutex);
  return fLargestRead;
}

// The sets are small; comparing is cheaper than making the strings that a look-up needs.
bool FaultRules::Contains(const Names& names, std::string_view first,
                          std::string_view second) noexcept {
  return std::any_of(names.begin(), names.end(), [&](const auto& name) {
    return name.first == first && name.second == second;
  });
}

bool FaultRules::IsHidden(std::string_view interfaceName,
                          std::string_view methodName) const noexcept {
  if (!HasGateBits(kGateArmed) || tIsExempt) return false;
  const std::lock_guard lock(fMutex);
  const bool hidden =
      Contains(fHidden, interfaceName, methodName) || Contains(fHidden, interfaceName, "");
  fFired = fFired || hidden;
  return hidden;
}

bool FaultRules::FailsRegistration(std::string_view interfaceName,
                                   std::string_view methodName) const noexcept {
  if (!HasGateBits(kGateArmed)) return false;
  const std::lock_guard lock(fMutex);
  const bool fails = Contains(fFailingRegistrations, interfaceName, methodName);
  fFired = fFired || fails;
  return fails;
}

}  // namespace KAPHost
