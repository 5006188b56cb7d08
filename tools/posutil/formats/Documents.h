#pragma once

#include "pos/POSObject.h"

namespace PosUtil {

// The documents of one input, read one after the other.
class Documents {
 public:
  Documents() = default;
  Documents(const Documents&) = delete;
  Documents& operator=(const Documents&) = delete;
  virtual ~Documents() = default;

  // The next one; empty behind the last, never for the first. Throws SyntaxError, or another
  // Failure; the caller asks for reports.
  virtual KAP_T_MT::CPOSObject Next() = 0;
};

}  // namespace PosUtil
