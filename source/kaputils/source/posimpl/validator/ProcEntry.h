// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPMemory.h"
#include "pos/POSValidatorInterfaces.h"
#include "posimpl/base/redblack_tree.h"
#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

// The extra validation of a type, in host memory.
class ProcEntry : public NPOSImpl::redblack_node, public KAP_T_MT::KAPHostAllocated {
 public:
  ProcEntry(const KAP_T_MT::CKAPStringAtom& typeName, KAP_T_MT::POSExtraValidationProc callback,
            void* clientData)
      : fTypeName(typeName, TextPrefix(typeName.Text())),
        fCallback(callback),
        fClientData(clientData) {}

  const SortableStringAtom& GetKey() const noexcept { return fTypeName; }
  // Never null.
  KAP_T_MT::POSExtraValidationProc Callback() const noexcept { return fCallback; }
  void* ClientData() const noexcept { return fClientData; }

  template <class Key>
  static int Compare(const Key& key, const ProcEntry& entry) noexcept {
    return SortableStringAtom::Compare(key, entry.fTypeName);
  }

 private:
  const SortableStringAtom fTypeName;
  const KAP_T_MT::POSExtraValidationProc fCallback;
  void* const fClientData;
};

}  // namespace NPOSValidatorImpl
