// SPDX-License-Identifier: MIT
#include "kap/KAPProgress.h"

#include <utility>

#include "kap/KAPClientProcs.h"
#include "kap/KAPError.h"
#include "source/kap/KAPHandOver.h"

namespace KAP_T_MT {

namespace {

using KAPProgressClient = TKAPInterfaceClient<KAPProgressInterface>;

constexpr KAPProgressUpdateProc MyProgressUpdate =
    &TKAPClientProc<&KAPClientProgress::Update>::Call;
constexpr KAPProgressDeleteProc MyProgressDelete = &KAPDeleteClientProc;

}  // namespace

CKAPProgress CKAPProgress::New() {
  return CKAPProgress(KAPProgressClient::Call<"NewNullProgress">(), KAPAdopt());
}

CKAPProgress::CKAPProgress(TKAPClientObject<KAPClientProgress> client)
    : CKAPProgress(
          KAPMade<KAPProgressInterface, KAPProgress>(_NewClientProgress(std::move(client))),
          KAPAdopt()) {}

void CKAPProgress::FinishConstruct() const {
  if (IsNull()) CKAPError::ThrowError("couldn't construct CKAPProgress", "", 0);
}

TKAPNewHandle<KAPProgress> CKAPProgress::_NewClientProgress(
    TKAPClientObject<KAPClientProgress> client) {
  return TKAPNewHandle(KAPHandOver<KAPProgressInterface>(std::move(client), [](void* object) {
    return KAPProgressClient::CallLoaded<"NewClientProgress">(object, MyProgressUpdate,
                                                              MyProgressDelete);
  }));
}

void CKAPProgress::Update(float fraction, const char* text, int flag) {
  KAPCheck(KAPProgressClient::Call<"Update">(Handle(), fraction, text, flag));
}

}  // namespace KAP_T_MT
