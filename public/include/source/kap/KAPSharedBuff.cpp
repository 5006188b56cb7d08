// SPDX-License-Identifier: MIT
#include "kap/KAPSharedBuff.h"

#include <memory>

namespace KAP_T_MT {

void CKAPSharedBuff::Init() { KAPSharedBuffClient::Refresh(); }

void CKAPSharedBuff::Close() noexcept { KAPSharedBuffClient::Drop(); }

TKAPNewHandle<KAPSharedBuffer> CKAPSharedBuff::NewBuffer(std::size_t size, void* data,
                                                         KAPDeleteProc deleteProc,
                                                         KAPGrowProc growProc, void* clientData) {
  const auto giveBack = [=](void* storage) {
    if (deleteProc) deleteProc(storage);
  };
  std::unique_ptr<void, decltype(giveBack)> storage(data, giveBack);
  KAPSharedBuffer* buffer =
      KAPSharedBuffClient::Call<"NewBuffer">(size, data, deleteProc, growProc, clientData);
  if (!buffer) CKAPMemory::ThrowMemError();
  static_cast<void>(storage.release());  // the buffer owns it now
  return TKAPNewHandle(buffer);
}

unsigned char* CKAPSharedBuff::GetBuffer(KAPSharedBuffer* buffer) {
  return KAPSharedBuffClient::Call<"GetBuffer">(buffer);
}

std::size_t CKAPSharedBuff::GetSize(KAPSharedBuffer* buffer) {
  return KAPSharedBuffClient::Call<"GetSize">(buffer);
}

void KAPDeleteSharedBuff(void* storage) noexcept { CKAPMemory::Free(storage); }

}  // namespace KAP_T_MT
