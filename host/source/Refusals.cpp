#include "Refusals.h"

#include <algorithm>

#include "Gate.h"

namespace KAPHost {

// A new rule starts the counting anew, for all kinds.
void Refusals::Arm() {
  fCalls = {};
  fFired = false;
  gGate.fetch_or(kGateArmed);
}

void Refusals::SetRule(Call kind, Rule rule) {
  const std::lock_guard lock(fMutex);
  fRules[static_cast<unsigned>(kind)] = rule;
  Arm();
}

void Refusals::CountCalls() {
  const std::lock_guard lock(fMutex);
  Arm();
}

void Refusals::RefuseBlocksAbove(std::size_t size) {
  const std::lock_guard lock(fMutex);
  fLargestBlock = size;
  Arm();
}

void Refusals::LimitReads(std::size_t size) {
  const std::lock_guard lock(fMutex);
  fLargestRead = size;
  Arm();
}

void Refusals::HideProcedure(std::string_view interfaceName, std::string_view methodName) {
  const std::lock_guard lock(fMutex);
  fHidden.emplace(interfaceName, methodName);
  Arm();
}

void Refusals::HideInterface(std::string_view interfaceName) { HideProcedure(interfaceName, ""); }

void Refusals::RefuseRegistration(std::string_view interfaceName, std::string_view methodName) {
  const std::lock_guard lock(fMutex);
  fUnregistrable.emplace(interfaceName, methodName);
  Arm();
}

void Refusals::Stop() {
  const std::lock_guard lock(fMutex);
  gGate.fetch_and(~static_cast<unsigned>(kGateArmed));
  fRules = {};
  fLargestBlock = kAnySize;
  fLargestRead = kAnySize;
  fHidden.clear();
  fUnregistrable.clear();
}

bool Refusals::Fired() const {
  const std::lock_guard lock(fMutex);
  return fFired;
}

unsigned long Refusals::CallCount(Call kind) const {
  const std::lock_guard lock(fMutex);
  return fCalls[static_cast<unsigned>(kind)];
}

bool Refusals::CountOne(Call kind) {
  const auto index = static_cast<unsigned>(kind);
  const unsigned long number = ++fCalls[index];
  return fRules[index].fFirst <= number && number <= fRules[index].fLast;
}

bool Refusals::IsRefused(Call kind, std::size_t blockSize) noexcept {
  const std::lock_guard lock(fMutex);
  const bool byKind = CountOne(kind);
  const bool byNumber = CountOne(Call::kAny);
  const bool refused = byKind || byNumber || blockSize > fLargestBlock;
  fFired = fFired || refused;
  return refused;
}

std::size_t Refusals::ReadLimit() const noexcept {
  const std::lock_guard lock(fMutex);
  return fLargestRead;
}

// The sets are small; comparing beats making the texts that a look-up would need.
bool Refusals::Contains(const Names& names, std::string_view first,
                        std::string_view second) noexcept {
  return std::any_of(names.begin(), names.end(), [&](const auto& name) {
    return name.first == first && name.second == second;
  });
}

bool Refusals::IsHidden(std::string_view interfaceName,
                        std::string_view methodName) const noexcept {
  if (gGate.load(std::memory_order_relaxed) == 0) return false;
  const std::lock_guard lock(fMutex);
  const bool hidden =
      Contains(fHidden, interfaceName, methodName) || Contains(fHidden, interfaceName, "");
  fFired = fFired || hidden;
  return hidden;
}

bool Refusals::IsRegistrationRefused(std::string_view interfaceName,
                                     std::string_view methodName) const noexcept {
  if (gGate.load(std::memory_order_relaxed) == 0) return false;
  const std::lock_guard lock(fMutex);
  const bool refused = Contains(fUnregistrable, interfaceName, methodName);
  fFired = fFired || refused;
  return refused;
}

}  // namespace KAPHost
