// SPDX-License-Identifier: MIT
#include <new>

#include "accounting/Accounting.h"
#include "base/RefCount.h"
#include "binder/Registration.h"
#include "errors/Errors.h"
#include "faults/Gate.h"
#include "kap/KAPProgressInterface.h"

// The procedures of KAPProgressInterface.

// A progress object. One without procedures ignores its updates.
struct KAPProgress {
  void* const fClient = nullptr;
  const KAP_T_MT::KAPProgressUpdateProc fUpdate = nullptr;
  const KAP_T_MT::KAPProgressDeleteProc fDelete = nullptr;
  KAPHost::RefCount fCount = {};
};

namespace KAPHost {

namespace {

using KAP_T_MT::KAPProgressDeleteProc;
using KAP_T_MT::KAPProgressUpdateProc;

KAPProgress* New(void* client, KAPProgressUpdateProc update,
                 KAPProgressDeleteProc deleteClient) noexcept {
  auto* const progress = new (std::nothrow) KAPProgress{client, update, deleteClient};
  if (progress) Count(KAPResource::kProgress, 1, 1);
  return progress;
}

KAPProgress* NewNullProgress() noexcept { return New(nullptr, nullptr, nullptr); }

KAPProgress* NewClientProgress(void* client, KAPProgressUpdateProc update,
                               KAPProgressDeleteProc deleteClient) noexcept {
  if (!client || !update || !deleteClient) return nullptr;
  return New(client, update, deleteClient);
}

void AddRef(KAPProgress* progress) noexcept {
  if (progress && progress->fCount.Add()) Count(KAPResource::kProgress, 0, 1);
}

// Without a host, the component whose procedure deletes the object may be unloaded as well.
void Release(KAPProgress* progress) noexcept {
  if (!progress || IsClosed()) return;
  const RefCount::Release found = progress->fCount.Drop();
  if (found == RefCount::Release::kReleased) Count(KAPResource::kProgress, 0, -1);
  if (found != RefCount::Release::kLast) return;
  Count(KAPResource::kProgress, -1, -1);
  if (progress->fDelete) ReportError(CallComponent(progress->fDelete, progress->fClient));
  delete progress;
}

KAPError* UpdateProgress(KAPProgress* progress, float fraction, const char* text,
                         int flag) noexcept {
  if (!progress) return InvalidArgument();
  if (IsClosed()) return MemoryError();
  if (!progress->fUpdate) return nullptr;
  return CallComponent(progress->fUpdate, progress->fClient, fraction, text, flag);
}

}  // namespace

template <>
void RegisterService<KAP_T_MT::KAPProgressInterface>(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPProgressInterface, &NewNullProgress, &NewClientProgress, &AddRef,
                &Release, &UpdateProgress>(binder);
}

}  // namespace KAPHost
