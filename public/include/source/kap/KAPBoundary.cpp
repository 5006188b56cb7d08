// SPDX-License-Identifier: MIT
#include "kap/KAPBoundary.h"

#include "kap/KAPBinder.h"
#include "kap/KAPError.h"

namespace KAP_T_MT {

void KAPReportCurrentException() noexcept {
  try {
    throw;
  } catch (const std::exception& exception) {
    KAPReportError(exception.what());
  } catch (...) {
    KAPReportError(nullptr);
  }
}

KAPError* KAPCurrentExceptionAsError() noexcept { return CKAPError::ForCaller(); }

}  // namespace KAP_T_MT
