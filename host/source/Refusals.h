#pragma once

#include <array>
#include <cstddef>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "kaphost/Refusal.h"

namespace KAPHost {

// The rules by which calls are refused, and the calls counted. Thread-safe. The gate is armed while
// there are any rules.
class Refusals {
 public:
  void Refuse(Call kind, unsigned long n) { SetRule(kind, {n, n}); }
  void RefuseFrom(Call kind, unsigned long n) { SetRule(kind, {n, kForever}); }
  void CountCalls();
  void RefuseBlocksAbove(std::size_t size);
  void LimitReads(std::size_t size);
  void HideProcedure(std::string_view interfaceName, std::string_view methodName);
  void HideInterface(std::string_view interfaceName);
  void RefuseRegistration(std::string_view interfaceName, std::string_view methodName);
  void Stop();

  bool Fired() const;
  unsigned long CallCount(Call kind) const;

  // Asked by the procedures; they count the call.
  bool IsRefused(Call kind, std::size_t blockSize) noexcept;
  std::size_t ReadLimit() const noexcept;
  bool IsHidden(std::string_view interfaceName, std::string_view methodName) const noexcept;
  bool IsRegistrationRefused(std::string_view interfaceName,
                             std::string_view methodName) const noexcept;

 private:
  static constexpr unsigned long kForever = ~0ul;
  static constexpr std::size_t kAnySize = ~std::size_t{0};

  // The first and the last call to refuse; 0 for none.
  struct Rule {
    unsigned long fFirst = 0;
    unsigned long fLast = 0;
  };
  using Names = std::set<std::pair<std::string, std::string>>;

  void SetRule(Call kind, Rule rule);
  void Arm();
  bool CountOne(Call kind);
  static bool Contains(const Names& names, std::string_view first,
                       std::string_view second) noexcept;

  mutable std::mutex fMutex;
  std::array<Rule, kCallKinds> fRules;
  std::array<unsigned long, kCallKinds> fCalls{};
  std::size_t fLargestBlock = kAnySize;
  std::size_t fLargestRead = kAnySize;
  Names fHidden;  // with an empty method name: the whole interface
  Names fUnregistrable;
  mutable bool fFired = false;
};

}  // namespace KAPHost
