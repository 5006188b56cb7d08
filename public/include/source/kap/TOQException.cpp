#include "kap/TOQException.h"

namespace KAP_T_MT {

void KAPThrowMathOverflow() { throw TOQException("Math overflow exception"); }

}  // namespace KAP_T_MT
