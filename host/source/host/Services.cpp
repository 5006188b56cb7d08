#include "binder/Services.h"

namespace KAPHost {

std::span<const Service* const> Services() {
  static constexpr const Service* kServices[] = {
      &kBinderService, &kStringService,     &kErrorService, &kMemoryService, &kContainerService,
      &kStreamService, &kSharedBuffService, &kCacheService, &kFilterService, &kProgressService};
  return kServices;
}

}  // namespace KAPHost
