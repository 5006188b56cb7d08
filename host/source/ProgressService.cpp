#include <atomic>
#include <new>

#include "Counting.h"
#include "Errors.h"
#include "Gate.h"
#include "Services.h"
#include "Tally.h"

// The procedures of KAPProgressInterface.

// A progress object. Without procedures nobody watches it.
struct KAPProgress {
  void* const fClient = nullptr;
  const KAP_T_MT::KAPProgressUpdateProc fUpdate = nullptr;
  const KAP_T_MT::KAPProgressDeleteProc fDelete = nullptr;
  std::atomic<long> fCount{1};
};

namespace KAPHost {

namespace {

using KAP_T_MT::KAPProgressDeleteProc;
using KAP_T_MT::KAPProgressUpdateProc;

KAPProgress* New(void* client, KAPProgressUpdateProc update,
                 KAPProgressDeleteProc deleteClient) noexcept {
  if (Fails(KAPFault::kProgress)) return nullptr;
  auto* const progress = new (std::nothrow) KAPProgress{client, update, deleteClient};
  if (progress != nullptr) Count(kProgressSlot, 1, 1);
  return progress;
}

KAPProgress* NewNullProgress() noexcept { return New(nullptr, nullptr, nullptr); }

KAPProgress* NewClientProgress(void* client, KAPProgressUpdateProc update,
                               KAPProgressDeleteProc deleteClient) noexcept {
  if (client == nullptr || update == nullptr || deleteClient == nullptr) return nullptr;
  return New(client, update, deleteClient);
}

void AddRef(KAPProgress* progress) noexcept {
  if (progress == nullptr) return;
  Increment(progress->fCount);
  Count(kProgressSlot, 0, 1);
}

// Without a host the component whose procedure would delete the object may be gone as well.
void Release(KAPProgress* progress) noexcept {
  if (progress == nullptr || IsClosed()) return;
  Count(kProgressSlot, 0, -1);
  if (Decrement(progress->fCount) != 0) return;
  Count(kProgressSlot, -1, 0);
  if (progress->fDelete != nullptr) ReportError(progress->fDelete(progress->fClient));
  delete progress;
}

KAPError* Update(KAPProgress* progress, float fraction, const char* text, int flag) noexcept {
  if (progress == nullptr) return InvalidArgument();
  if (progress->fUpdate == nullptr) return nullptr;
  return progress->fUpdate(progress->fClient, fraction, text, flag);
}

void RegisterProgress(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPProgressInterface>(binder, &NewNullProgress, &NewClientProgress,
                                                &AddRef, &Release, &Update);
}

void CountProgress(Snapshot& books) {
  books.Add(KAPResource::kProgress, "", TallyTotal(kProgressSlot));
}

}  // namespace

const Service kProgressService = {&RegisterProgress, &CountProgress};

}  // namespace KAPHost
