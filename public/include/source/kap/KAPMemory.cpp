// SPDX-License-Identifier: MIT
#include "kap/KAPMemory.h"

#include <cstring>
#include <new>

#include "kap/KAPInterfaceClient.h"
#include "kap/KAPMemoryInterface.h"
#include "kap/TOQException.h"

namespace KAP_T_MT {

using KAPMemoryClient = TKAPInterfaceClient<KAPMemoryInterface>;

void CKAPMemory::Init() { KAPMemoryClient::Refresh(); }

void* CKAPMemory::Alloc(std::size_t size) {
  void* block = KAPMemoryClient::Call<"Alloc">(size);
  if (!block) [[unlikely]]
    ThrowMemError();
  return block;
}

void* CKAPMemory::Realloc(void* block, std::size_t size) {
  void* resized = KAPMemoryClient::Call<"Realloc">(block, size);
  if (!resized) [[unlikely]]
    ThrowMemError();
  return resized;
}

void CKAPMemory::Free(void* block) noexcept {
  if (block) KAPMemoryClient::CallReleasing<"Free">(block);
}

void CKAPMemory::ThrowMemError() { throw std::bad_alloc(); }

KAPTerminatedText::KAPTerminatedText(std::string_view text) {
  if (text.find('\0') != std::string_view::npos)
    throw TOQException("a text cannot hold a zero byte");
  if (text.size() >= sizeof fShort) fLong = KAPNewBlock<char>(KAPCheckedSize(text.size(), 1, 1));
  char* const copy = fLong ? fLong.get() : fShort;
  if (!text.empty()) std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
}

std::size_t KAPCheckedSize(std::size_t count, std::size_t size, std::size_t header) {
  std::size_t bytes = 0;
  if (__builtin_mul_overflow(count, size, &bytes) ||
      __builtin_add_overflow(bytes, header, &bytes)) {
    KAPThrowMathOverflow();
  }
  return bytes;
}

}  // namespace KAP_T_MT
