#include <atomic>
#include <cstdlib>
#include <new>

#include "Counting.h"
#include "Gate.h"
#include "Services.h"
#include "Tally.h"

// The procedures of KAPSharedBuffInterface. Buffers keep their size: a procedure for growing is
// accepted and never called.

// A buffer record. The host's own storage lies behind it, in the same allocation.
struct KAPSharedBuffer {
  std::atomic<long> fCount;
  std::size_t fSize;
  void* fData;
  KAPDeleteProc fDelete;
};

static_assert(sizeof(KAPSharedBuffer) % 16 == 0, "the storage is aligned as from malloc");

namespace KAPHost {

namespace {

KAPSharedBuffer* NewBuffer(std::size_t size, void* data, KAPDeleteProc deleteProc,
                           KAP_T_MT::KAPGrowProc, void*) noexcept {
  if (Fails(KAPFault::kBuffer)) return nullptr;
  const std::size_t storage = data != nullptr ? 0 : size;
  if (storage > ~std::size_t{0} - sizeof(KAPSharedBuffer)) return nullptr;
  void* const block = std::calloc(1, sizeof(KAPSharedBuffer) + storage);
  if (block == nullptr) return nullptr;
  Count(kBufferSlot, 1, static_cast<long>(size));
  if (data == nullptr) {
    void* const behind = static_cast<unsigned char*>(block) + sizeof(KAPSharedBuffer);
    return new (block) KAPSharedBuffer{1, size, behind, nullptr};
  }
  return new (block) KAPSharedBuffer{1, size, data, deleteProc};
}

void AddRef(KAPSharedBuffer* buffer) noexcept {
  if (buffer != nullptr) Increment(buffer->fCount);
}

// Without a host the component whose procedure would delete the data may be gone as well.
void Release(KAPSharedBuffer* buffer) noexcept {
  if (buffer == nullptr || IsClosed() || Decrement(buffer->fCount) != 0) return;
  if (buffer->fDelete != nullptr) buffer->fDelete(buffer->fData);
  Count(kBufferSlot, -1, -static_cast<long>(buffer->fSize));
  std::free(buffer);
}

// A buffer without references is gone already.
void DeleteUnowned(KAPSharedBuffer*) noexcept {}

unsigned char* GetBuffer(KAPSharedBuffer* buffer) noexcept {
  return buffer != nullptr ? static_cast<unsigned char*>(buffer->fData) : nullptr;
}

std::size_t GetSize(KAPSharedBuffer* buffer) noexcept {
  return buffer != nullptr ? buffer->fSize : 0;
}

void RegisterBuffers(Binder& binder) {
  RegisterProcs<KAP_T_MT::KAPSharedBuffInterface>(binder, &NewBuffer, &DeleteUnowned, &AddRef,
                                                  &Release, &GetBuffer, &GetSize);
}

void CountBuffers(Snapshot& books) { books.Add(KAPResource::kBuffer, "", TallyTotal(kBufferSlot)); }

}  // namespace

const Service kSharedBuffService = {&RegisterBuffers, &CountBuffers};

}  // namespace KAPHost
