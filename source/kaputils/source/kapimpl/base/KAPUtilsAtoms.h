#pragma once

#include "kap/KAPMemory.h"
#include "kap/KAPStringAtom.h"

// The names under which the library files its containers' instances. One object for the whole
// library, in host memory, from initialisation to termination; read by any thread.
class KAPUtilsAtoms : public KAP_T_MT::KAPHostAllocated {
 public:
  // The shared atoms; null while the library is not initialised.
  static const KAPUtilsAtoms* Find() noexcept { return fInstAtoms; }
  // The same; TOQException while the library is not initialised.
  static const KAPUtilsAtoms& Get() {
    if (!fInstAtoms) [[unlikely]]
      ThrowNotInitialized();
    return *fInstAtoms;
  }

  static void Create();            // keeps those that are there; raises what the host refuses
  static void Destroy() noexcept;  // in the reverse order of creation

  // In this order: members are made from first to last.
  const KAP_T_MT::CKAPStringAtom POSObjectImpl{"POSObjectImpl"};
  const KAP_T_MT::CKAPStringAtom POSObjectInterface{"POSObjectInterface"};
  const KAP_T_MT::CKAPStringAtom POSDictIteratorImpl{"POSDictIteratorImpl"};
  const KAP_T_MT::CKAPStringAtom POSDictIteratorInterface{"POSDictIteratorInterface"};
  const KAP_T_MT::CKAPStringAtom POSStreamerImpl{"POSStreamerImpl"};
  const KAP_T_MT::CKAPStringAtom POSStreamerInterface{"POSStreamerInterface"};
  const KAP_T_MT::CKAPStringAtom POSValidatorImpl{"POSValidatorImpl"};
  const KAP_T_MT::CKAPStringAtom POSValidatorInterface{"POSValidatorInterface"};
  const KAP_T_MT::CKAPStringAtom KAPUtilsDir{"KAPUtilsDir"};
  const KAP_T_MT::CKAPStringAtom KAPUtilsDirInterface{"KAPUtilsDirInterface"};

 private:
  KAPUtilsAtoms() = default;
  [[noreturn]] static void ThrowNotInitialized();

  static constinit KAPUtilsAtoms* fInstAtoms;  // null: none
};
