#include "kap/KAPClientBase.h"

namespace KAP_T_MT {

void KAPDeleteVirtualClientBase(void* instance) noexcept {
  delete static_cast<CKAPVirtualClientBase*>(instance);
}

}  // namespace KAP_T_MT
