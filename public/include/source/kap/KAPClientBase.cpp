// SPDX-License-Identifier: MIT
#include "kap/KAPClientBase.h"

#include "kap/KAPBoundary.h"

namespace KAP_T_MT {

void KAPDeleteVirtualClientBase(void* instance) noexcept {
  KAPReportingError([=] { delete static_cast<CKAPVirtualClientBase*>(instance); });
}

}  // namespace KAP_T_MT
