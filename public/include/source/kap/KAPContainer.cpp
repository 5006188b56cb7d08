// SPDX-License-Identifier: MIT
#include "kap/KAPContainer.h"

namespace KAP_T_MT {

constinit long CKAPContainer::fPrimaryOffset = 0;

// A guard that binding checks: 13 when the static objects of the runtime exist. All of them are
// initialised at compile time, so the guard holds from the start, in any link order. It says
// nothing of a component's own static objects.
constinit int CKAPContainer::fCPPCheck = 13;

bool CKAPContainer::Init() {
  if (fCPPCheck != 13) return false;
  KAPContainerClient::Refresh();
  fPrimaryOffset = KAPContainerClient::Call<"GetOffsetToPrimaryInstance">();
  return true;
}

void* CKAPContainer::BCGetInstance(KAPContainer* container, const CKAPStringAtom& signature) {
  void* instance = nullptr;
  KAPCheck(KAPContainerClient::Call<"NGetInstance">(&instance, container, signature.Handle()));
  return instance;
}

TKAPNewHandle<KAPContainer> CKAPContainer::NewFullContainer(void* instance,
                                                            const CKAPStringAtom& instanceName,
                                                            const CKAPStringAtom& interfaceName,
                                                            KAPDeleteProc deleteInstance) {
  KAPContainer* container = nullptr;
  KAPCheck(KAPContainerClient::Call<"NewFullContainer">(&container, instance, instanceName.Handle(),
                                                        interfaceName.Handle(), deleteInstance));
  if (!container) ThrowInvalidContainerException();
  return TKAPNewHandle(container);
}

void CKAPContainer::ThrowInvalidContainerException() {
  CKAPError::ThrowError("invalid container", "", 0);
}

void CKAPContainer::ThrowNoSignatureException() {
  CKAPError::ThrowError("couldn't get signature", "", 0);
}

void KAPContainerNoOpRelease(KAPContainer*) noexcept {}

KAPContainer* KAPContainerBaseGeneric::AddRefUnchecked(KAPContainer* container) {
  static_cast<void>(KAPContainerClient::Call<"AddRef">(container));
  return container;
}

namespace {

KAPContainer* NewEmptyContainer() {
  KAPContainer* container = nullptr;
  KAPCheck(KAPContainerClient::Call<"NewContainer">(&container));
  return container;
}

}  // namespace

CKAPContainerHolder::CKAPContainerHolder() : fContainer(NewEmptyContainer()) {}

CKAPContainerHolder CKAPContainerHolder::New() {
  return CKAPContainerHolder(NewEmptyContainer(), KAPAdopt());
}

}  // namespace KAP_T_MT
