#pragma once

#include "kap/KAPMemory.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Bases of the objects that a component puts into host containers. They live in host memory.
class CKAPClientBase : public KAPHostAllocated {
 protected:
  CKAPClientBase() = default;
  ~CKAPClientBase() = default;
};

class CKAPVirtualClientBase : public KAPHostAllocated {
 public:
  virtual ~CKAPVirtualClientBase() = default;

 protected:
  CKAPVirtualClientBase() = default;
  CKAPVirtualClientBase(const CKAPVirtualClientBase&) = default;
  CKAPVirtualClientBase& operator=(const CKAPVirtualClientBase&) = default;
};

// The deletion procedure of instances of CKAPVirtualClientBase; null is ignored.
void KAPDeleteVirtualClientBase(void* instance) noexcept;

}  // namespace KAP_T_MT
