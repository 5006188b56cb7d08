// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <vector>

namespace KAPProbe {

// A sentence of a contract and the code that tries it. `fContract` repeats the declaration word for
// word, as far as the check tries it; a test compares them.
struct Check {
  const char* fName;
  const char* fInterface;
  const char* fMethod;
  const char* fContract;
  // Throws Broken, NotOffered or Blocked (Services.h).
  void (*fRun)();
};

// All checks, simple interfaces before those that need them.
std::vector<Check> AllChecks();

// The checks of each family.
std::span<const Check> BinderChecks();
std::span<const Check> AtomChecks();
std::span<const Check> ErrorChecks();
std::span<const Check> MemoryChecks();
std::span<const Check> ContainerChecks();
std::span<const Check> StreamChecks();
std::span<const Check> ClientStreamChecks();
std::span<const Check> BufferChecks();
std::span<const Check> CacheChecks();
std::span<const Check> FilterChecks();
std::span<const Check> ProgressChecks();
std::span<const Check> ConventionChecks();
std::span<const Check> ThreadChecks();

}  // namespace KAPProbe
