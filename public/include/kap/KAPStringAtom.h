#pragma once

#include <utility>

#include "kap/KAPHostInterfaces.h"
#include "kap/KAPProcTable.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

using KAPStringClient = TKAPInterfaceClient<KAPStringInterface>;

// One reference to an interned 8-bit text of the host, or to none. Equal texts share one atom, so
// two atoms are equal exactly when their text pointers are. Ownership: holds one reference,
// released on destruction; the text lives as long as the atom. Errors: std::bad_alloc when the host
// refuses an atom. Destruction never throws. Threads: as a plain value; the atom behind it may be
// shared.
class CKAPStringAtom {
 public:
  CKAPStringAtom() noexcept : fAtom(nullptr), fText(nullptr) {}
  // Leaves both fields unset: only for those who write them next.
  explicit CKAPStringAtom(bool) noexcept {}   // NOLINT(cppcoreguidelines-pro-type-member-init)
  explicit CKAPStringAtom(const char* text);  // null counts as refused
  // With `adopt` the reference passes over, else one is added. Null gives an atom without a text.
  CKAPStringAtom(KAPStringAtom* atom, bool adopt);
  CKAPStringAtom(const CKAPStringAtom& other);
  CKAPStringAtom(CKAPStringAtom&& other) noexcept
      : fAtom(std::exchange(other.fAtom, nullptr)), fText(std::exchange(other.fText, nullptr)) {}
  CKAPStringAtom& operator=(const CKAPStringAtom& other) { return *this = CKAPStringAtom(other); }
  CKAPStringAtom& operator=(CKAPStringAtom&& other) noexcept {
    CKAPStringAtom released(std::move(other));
    swap(*this, released);
    return *this;
  }
  ~CKAPStringAtom() {
    if (fAtom) KAPStringClient::CallOrStandBy<"DeleteStringAtom">(fAtom);
  }

  KAPStringAtom* Handle() const noexcept { return fAtom; }  // borrowed
  const char* Text() const noexcept { return fText; }       // null for no atom
  KAPStringAtom* Detach() noexcept {                        // the reference passes to the caller
    fText = nullptr;
    return std::exchange(fAtom, nullptr);
  }

  // The joined text. CKAPError "Memory Copy Error" when a side has no text, deliberately, even
  // where the other would do.
  CKAPStringAtom operator+(const CKAPStringAtom& other) const;

  // "0x" and the pointer's 64 bits as 16 lower-case hexadecimal digits.
  static CKAPStringAtom ToHex(const void* pointer);

  [[noreturn]] static void ThrowBadAlloc();

  // From now on releasing an atom does not reach the host any more.
  static void Close() noexcept;
  static void NoOpDelete(KAPStringAtom*) noexcept;  // does nothing, for Close

  friend void swap(CKAPStringAtom& a, CKAPStringAtom& b) noexcept {
    std::swap(a.fAtom, b.fAtom);
    std::swap(a.fText, b.fText);
  }

 private:
  KAPStringAtom* fAtom;
  const char* fText;
};

}  // namespace KAP_T_MT
