#pragma once

#include <cstddef>
#include <type_traits>

#include "kap/KAPMemory.h"
#include "kap/KAPProcTable.h"
#include "kap/KAPReference.h"
#include "kap/KAPSharedBuffInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

using KAPSharedBuffClient = TKAPInterfaceClient<KAPSharedBuffInterface>;

// The host's shared buffers: reference-counted blocks of bytes that may cross the binder. Static
// only. Any thread.
class CKAPSharedBuff {
 public:
  // Loads the table if it is stale; CKAPError "Missing Interface" when it cannot be had. Optional:
  // the first use does the same.
  static void Init();
  // For the runtime when it unbinds itself: a buffer released from now on no longer reaches the
  // host.
  static void Close() noexcept;

  // A new buffer, one reference for the caller: over `data`, which `deleteProc` gives back in the
  // end, or with zeroed storage of the host when `data` is null. std::bad_alloc when the host
  // refuses. On any failure `data` has been handed to `deleteProc`, if there are both.
  static KAPSharedBuffer* NewBuffer(std::size_t size, void* data = nullptr,
                                    KAPDeleteProc deleteProc = nullptr,
                                    KAPGrowProc growProc = nullptr, void* clientData = nullptr);

  static unsigned char* GetBuffer(KAPSharedBuffer* buffer);
  static std::size_t GetSize(KAPSharedBuffer* buffer);  // in bytes
};

// Gives back buffer storage that came from the host's memory: a `deleteProc` for NewBuffer.
void KAPDeleteSharedBuff(void* storage) noexcept;

// A reference to a shared buffer of plain elements, or to none.
// Errors: what NewBuffer raises, and "Math overflow exception".
template <class T>
class TKAPSharedBuffer : public TKAPReference<KAPSharedBuffInterface, KAPSharedBuffer> {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  TKAPSharedBuffer() noexcept = default;
  using TKAPReference::TKAPReference;
  // Zeroed storage of the host for `count` elements.
  explicit TKAPSharedBuffer(std::size_t count)
      : TKAPReference(CKAPSharedBuff::NewBuffer(KAPCheckedSize(count, sizeof(T))), KAPAdopt()) {}

  // The elements and their number; null and 0 for no buffer.
  T* Data() const {
    return Handle() ? reinterpret_cast<T*>(CKAPSharedBuff::GetBuffer(Handle())) : nullptr;
  }
  std::size_t Size() const { return Handle() ? CKAPSharedBuff::GetSize(Handle()) / sizeof(T) : 0; }
};

}  // namespace KAP_T_MT
