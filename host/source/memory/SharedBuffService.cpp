// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "accounting/Accounting.h"
#include "base/Current.h"
#include "base/RefCount.h"
#include "base/Reports.h"
#include "binder/Registration.h"
#include "faults/Gate.h"
#include "kap/KAPSharedBuffInterface.h"
#include "quarantine/Quarantine.h"

// The procedures of KAPSharedBuffInterface. Buffers keep their size: a growth procedure is accepted
// and never called, since no procedure of the interface resizes a buffer.

// A buffer record. Storage of the host follows it in the same allocation.
struct KAPSharedBuffer {
  KAPHost::RefCount fCount;
  bool fIsGuarded;  // guard bytes follow the storage
  std::size_t fSize;
  void* fData;
  KAPDeleteProc fDelete;
};

static_assert(sizeof(KAPSharedBuffer) % 16 == 0, "the storage is aligned as from malloc");

namespace KAPHost {

namespace {

constexpr std::size_t kGuardSize = 16;
constexpr unsigned char kGuard = 0xFB;

unsigned char* GuardOf(const KAPSharedBuffer& buffer) {
  return static_cast<unsigned char*>(buffer.fData) + buffer.fSize;
}

[[gnu::cold]] void CheckGuard(const KAPSharedBuffer& buffer) noexcept {
  const unsigned char* const guard = GuardOf(buffer);
  const HandleObserver* const observer = Current<HandleObserver>();
  const bool isIntact =
      std::all_of(guard, guard + kGuardSize, [](unsigned char byte) { return byte == kGuard; });
  if (isIntact || !observer) return;
  try {
    observer->Report(
        "a buffer of " + std::to_string(buffer.fSize) + " bytes was written past its end", &buffer);
  } catch (const std::bad_alloc&) {
    Report("KAP host: a buffer was written past its end");
  }
}

KAPSharedBuffer* NewBuffer(std::size_t size, void* data, KAPDeleteProc deleteProc,
                           KAP_T_MT::KAPGrowProc, void*) noexcept {
  const std::size_t storage = data ? 0 : size;
  const bool isGuarded = !data && HasGateBits(kGateChecking);
  if (storage > ~std::size_t{0} - sizeof(KAPSharedBuffer) - kGuardSize) return nullptr;
  void* const block =
      std::calloc(1, sizeof(KAPSharedBuffer) + storage + (isGuarded ? kGuardSize : 0));
  if (!block) return nullptr;
  Count(KAPResource::kBuffer, 1, static_cast<long>(size));
  if (!data) {
    void* const storageStart = static_cast<unsigned char*>(block) + sizeof(KAPSharedBuffer);
    auto* const buffer = new (block) KAPSharedBuffer{{}, isGuarded, size, storageStart, nullptr};
    if (isGuarded) std::memset(GuardOf(*buffer), kGuard, kGuardSize);
    return buffer;
  }
  return new (block) KAPSharedBuffer{{}, false, size, data, deleteProc};
}

void AddRef(KAPSharedBuffer* buffer) noexcept {
  if (buffer && !buffer->fCount.Add() && buffer->fCount.IsDead()) ReportDead(buffer, "AddRef");
}

void Destroy(KAPSharedBuffer* buffer) noexcept {
  if (buffer->fIsGuarded) CheckGuard(*buffer);
  if (buffer->fDelete) buffer->fDelete(buffer->fData);
  Count(KAPResource::kBuffer, -1, static_cast<long>(0 - buffer->fSize));
  // First kept, then marked: a release that sees the mark finds the record.
  if (KeepDead(buffer, &std::free, "buffer", nullptr)) {
    buffer->fCount.Bury();
  } else {
    std::free(buffer);
  }
}

// Without a host, the component whose procedure deletes the data may be unloaded as well.
void Release(KAPSharedBuffer* buffer) noexcept {
  if (!buffer) return;
  RefCount::Release found{};
  if (!HasGateBits(kGateClosed | kGateChecking)) {
    found = buffer->fCount.Drop();
  } else {
    if (IsClosed()) return;
    found = buffer->fCount.DropExactly();
  }
  if (found == RefCount::Release::kLast) Destroy(buffer);
  if (found == RefCount::Release::kDestroyed && buffer->fCount.IsDead()) {
    ReportDead(buffer, "release");
  }
}

// A buffer without references is already destroyed.
void DeleteUnowned(KAPSharedBuffer*) noexcept {}

unsigned char* GetBuffer(KAPSharedBuffer* buffer) noexcept {
  return buffer ? static_cast<unsigned char*>(buffer->fData) : nullptr;
}

std::size_t GetSize(KAPSharedBuffer* buffer) noexcept { return buffer ? buffer->fSize : 0; }

}  // namespace

template <>
void RegisterService<KAP_T_MT::KAPSharedBuffInterface>(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPSharedBuffInterface, &NewBuffer, &DeleteUnowned, &AddRef, &Release,
                &GetBuffer, &GetSize>(binder);
}

}  // namespace KAPHost
