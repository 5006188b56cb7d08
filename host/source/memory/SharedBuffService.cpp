// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <new>

#include "accounting/Accounting.h"
#include "base/RefCount.h"
#include "binder/Registration.h"
#include "quarantine/Quarantine.h"
#include "faults/Gate.h"
#include "kap/KAPSharedBuffInterface.h"

// The procedures of KAPSharedBuffInterface. Buffers keep their size: a growth procedure is accepted
// and never called, since no procedure of the interface resizes a buffer.

// A buffer record. Storage of the host follows it in the same allocation.
struct KAPSharedBuffer {
  KAPHost::RefCount fCount;
  std::size_t fSize;
  void* fData;
  KAPDeleteProc fDelete;
};

static_assert(sizeof(KAPSharedBuffer) % 16 == 0, "the storage is aligned as from malloc");

namespace KAPHost {

namespace {

KAPSharedBuffer* NewBuffer(std::size_t size, void* data, KAPDeleteProc deleteProc,
                           KAP_T_MT::KAPGrowProc, void*) noexcept {
  const std::size_t storage = data ? 0 : size;
  if (storage > ~std::size_t{0} - sizeof(KAPSharedBuffer)) return nullptr;
  void* const block = std::calloc(1, sizeof(KAPSharedBuffer) + storage);
  if (!block) return nullptr;
  Count(KAPResource::kBuffer, 1, static_cast<long>(size));
  if (!data) {
    void* const storageStart = static_cast<unsigned char*>(block) + sizeof(KAPSharedBuffer);
    return new (block) KAPSharedBuffer{{}, size, storageStart, nullptr};
  }
  return new (block) KAPSharedBuffer{{}, size, data, deleteProc};
}

void AddRef(KAPSharedBuffer* buffer) noexcept {
  if (buffer && !buffer->fCount.Add() && buffer->fCount.IsDead()) ReportDead(buffer, "AddRef");
}

void Destroy(KAPSharedBuffer* buffer) noexcept {
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
