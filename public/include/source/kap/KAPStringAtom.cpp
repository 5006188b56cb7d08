// SPDX-License-Identifier: MIT
#include "kap/KAPStringAtom.h"

#include <cstdint>
#include <cstring>

#include "kap/KAPError.h"
#include "kap/KAPMemory.h"
#include "kap/TOQException.h"

namespace KAP_T_MT {

namespace {

std::size_t LengthOf(const char* text) noexcept { return text ? std::strlen(text) : 0; }

}  // namespace

CKAPStringAtom::CKAPStringAtom(const char* text) : CKAPStringAtom() {
  if (text) fAtom = KAPStringClient::Call<"NewStringAtom">(text);
  if (!fAtom) [[unlikely]]
    ThrowBadAlloc();
  fText = KAPStringClient::Call<"GetCString">(fAtom);
}

CKAPStringAtom::CKAPStringAtom(std::string_view text)
    : CKAPStringAtom(KAPTerminatedText(text).Text()) {}

CKAPStringAtom::CKAPStringAtom(KAPStringAtom* atom, Ownership ownership) : CKAPStringAtom() {
  if (!atom) return;
  if (!ownership.fAdopts) KAPStringClient::Call<"AddRef">(atom);
  fAtom = atom;
  fText = KAPStringClient::Call<"GetCString">(atom);
}

CKAPStringAtom::CKAPStringAtom(const CKAPStringAtom& other) : CKAPStringAtom() {
  if (other.fAtom) KAPStringClient::Call<"AddRef">(other.fAtom);
  fAtom = other.fAtom;
  fText = other.fText;
}

CKAPStringAtom CKAPStringAtom::operator+(const CKAPStringAtom& other) const {
  const std::size_t length = LengthOf(fText);
  const std::size_t size = KAPCheckedSize(LengthOf(other.fText), 1, KAPCheckedSize(length, 1, 1));
  const TKAPBlock<char> joined = KAPNewBlock<char>(size);
  if (!fText || !other.fText) CKAPError::ThrowError("Memory Copy Error", "", 0);
  std::memcpy(joined.get(), fText, length);
  std::memcpy(joined.get() + length, other.fText, size - length);
  return CKAPStringAtom(joined.get());
}

CKAPStringAtom CKAPStringAtom::ToHex(const void* pointer) {
  char text[] = "0x0000000000000000";
  auto bits = reinterpret_cast<std::uintptr_t>(pointer);
  for (char* digit = text + sizeof text - 2; bits != 0; bits >>= 4)
    *digit-- = "0123456789abcdef"[bits & 15];
  return CKAPStringAtom(text);
}

void CKAPStringAtom::ThrowBadAlloc() { CKAPMemory::ThrowMemError(); }

void CKAPStringAtom::Close() noexcept { KAPStringClient::Replace<"DeleteStringAtom">(&NoOpDelete); }

void CKAPStringAtom::NoOpDelete(KAPStringAtom*) noexcept {}

}  // namespace KAP_T_MT
