// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPMemory.h"
#include "kap/KAPStringAtom.h"

// The instance and interface names of the library's containers, as atoms. One object for the whole
// library, in host memory, from initialisation to termination: making a container and checking a
// handle then need no look-up of a string.
// Threads: any may read; Create and Destroy belong to the thread that initialises the library.
class KAPUtilsAtoms : public KAP_T_MT::KAPHostAllocated {
 public:
  // The atoms; null while the library is not initialised.
  static const KAPUtilsAtoms* Find() noexcept { return fInstAtoms; }
  // The atoms; TOQException while the library is not initialised.
  static const KAPUtilsAtoms& Get() {
    if (!fInstAtoms) [[unlikely]]
      ThrowNotInitialized();
    return *fInstAtoms;
  }

  // Makes the atoms unless they exist. All or nothing; throws std::bad_alloc when the host has no
  // memory.
  static void Create();
  static void Destroy() noexcept;

  // Made in this order, released in the reverse order; hosts can observe both.
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

  static constinit KAPUtilsAtoms* fInstAtoms;
};
