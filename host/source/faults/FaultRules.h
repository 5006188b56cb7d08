// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "faults/Gate.h"
#include "kap/KAPInterface.h"

namespace KAPHost {

// Set while the host makes calls of its own on a thread, to describe what components pass to each
// other: no rule applies to them, and they do not count.
inline thread_local constinit bool tIsExempt = false;

// The rules of fault injection, and the calls counted. Thread-safe. The gate is armed while there
// are any rules.
class FaultRules {
 public:
  void FailCall(KAPFault kind, unsigned long n) { SetRule(kind, {n, n}); }
  void FailFrom(KAPFault kind, unsigned long n) { SetRule(kind, {n, kForever}); }
  void CountCalls();
  void FailBlocksAbove(std::size_t size);
  void LimitReads(std::size_t size);
  void HideProcedure(std::string_view interfaceName, std::string_view methodName);
  void HideInterface(std::string_view interfaceName);
  void FailRegistration(std::string_view interfaceName, std::string_view methodName);
  void Stop();

  bool Fired() const;
  unsigned long CallCount(KAPFault kind) const;

  // Called by the procedures, to count the call.
  bool Fails(KAPFault kind, std::size_t blockSize) noexcept;
  std::size_t ReadLimit() const noexcept;
  bool IsHidden(std::string_view interfaceName, std::string_view methodName) const noexcept;
  bool FailsRegistration(std::string_view interfaceName,
                         std::string_view methodName) const noexcept;

 private:
  static constexpr std::size_t kKinds = static_cast<std::size_t>(KAPFault::kCount);
  static constexpr unsigned long kForever = ~0ul;
  static constexpr std::size_t kAnySize = ~std::size_t{0};

  // The first and the last call to fail; 0 for none.
  struct Rule {
    unsigned long fFirst = 0;
    unsigned long fLast = 0;
  };
  using Names = std::set<std::pair<std::string, std::string>>;

  void SetRule(KAPFault kind, Rule rule);
  void Arm();
  bool CountOne(KAPFault kind);
  static bool Contains(const Names& names, std::string_view first,
                       std::string_view second) noexcept;

  mutable std::mutex fMutex;
  std::array<Rule, kKinds> fRules;
  std::array<unsigned long, kKinds> fCalls{};
  std::size_t fLargestBlock = kAnySize;
  std::size_t fLargestRead = kAnySize;
  Names fHidden;  // with an empty method name: the whole interface
  Names fFailingRegistrations;
  mutable bool fFired = false;
};

}  // namespace KAPHost
