#pragma once

#include <cstddef>
#include <type_traits>

#include "kap/KAPInterfaceClient.h"
#include "kap/KAPMemory.h"
#include "kap/KAPReference.h"
#include "kap/KAPSharedBuffInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

using KAPSharedBuffClient = TKAPInterfaceClient<KAPSharedBuffInterface>;

// The host's shared buffers: reference-counted blocks of bytes that may cross the binder. Static
// only. Any thread.
class CKAPSharedBuff {
 public:
  // Loads the table if it is stale; throws as any use of it (KAPInterfaceClient.h). Optional: the
  // first use does the same.
  static void Init();
  // Drops the table: a buffer released from now on makes no host call, until the next use of the
  // table loads it again. The end of the binding does the same.
  static void Close() noexcept;

  // A new buffer: one reference for the caller. It takes `data` over and hands it to `deleteProc` at
  // its end; with null `data` it has zeroed storage of the host. Throws std::bad_alloc when the host
  // makes none. After any failure `data` has been handed to `deleteProc`, if there are both.
  static KAPSharedBuffer* NewBuffer(std::size_t size, void* data = nullptr,
                                    KAPDeleteProc deleteProc = nullptr,
                                    KAPGrowProc growProc = nullptr, void* clientData = nullptr);

  static unsigned char* GetBuffer(KAPSharedBuffer* buffer);
  static std::size_t GetSize(KAPSharedBuffer* buffer);  // in bytes
};

// Frees buffer storage that came from the host's memory: a `deleteProc` for NewBuffer.
void KAPDeleteSharedBuff(void* storage) noexcept;

// A reference to a shared buffer of plain elements, or to none.
// Errors: what NewBuffer throws, and TOQException "Math overflow exception".
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
