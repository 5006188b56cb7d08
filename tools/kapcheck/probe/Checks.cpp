// SPDX-License-Identifier: MIT
#include "probe/Checks.h"

namespace KAPProbe {

std::vector<Check> AllChecks() {
  std::vector<Check> all;
  for (const auto& family :
       {BinderChecks(), AtomChecks(), ErrorChecks(), MemoryChecks(), ContainerChecks(),
        StreamChecks(), ClientStreamChecks(), BufferChecks(), CacheChecks(), FilterChecks(),
        ProgressChecks(), ConventionChecks(), ThreadChecks()}) {
    all.insert(all.end(), family.begin(), family.end());
  }
  return all;
}

}  // namespace KAPProbe
