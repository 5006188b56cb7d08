#pragma once

#include <utility>

#include "kap/KAPInterfaceClient.h"
#include "kap/KAPStringInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

using KAPStringClient = TKAPInterfaceClient<KAPStringInterface>;

// A reference to an interned 8-bit text of the host, or to none. Equal texts share one atom, so two
// atoms are equal exactly when their text pointers are.
// Ownership: holds one reference, released on destruction; the text lives as long as the atom.
// Errors: throws std::bad_alloc when the host makes no atom. Destruction never throws.
// Threads: as a plain value; several references may share one atom.
class CKAPStringAtom {
 public:
  CKAPStringAtom() noexcept : fAtom(nullptr), fText(nullptr) {}
  // Leaves both fields unset: only where they are written next.
  explicit CKAPStringAtom(bool) noexcept {}   // NOLINT(cppcoreguidelines-pro-type-member-init)
  explicit CKAPStringAtom(const char* text);  // null: std::bad_alloc, as without memory
  // Takes the reference over if `adopt`, else adds one. Null gives an atom without a text.
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
    if (fAtom) KAPStringClient::CallReleasing<"DeleteStringAtom">(fAtom);
  }

  KAPStringAtom* Handle() const noexcept { return fAtom; }  // borrowed
  const char* Text() const noexcept { return fText; }       // null for no atom
  // The reference passes to the caller.
  KAPStringAtom* Detach() noexcept {
    fText = nullptr;
    return std::exchange(fAtom, nullptr);
  }

  // The joined text. CKAPError "Memory Copy Error" when a side has no text: deliberate, even where
  // the other side would do.
  CKAPStringAtom operator+(const CKAPStringAtom& other) const;

  // "0x" and the pointer's 64 bits as 16 lower-case hexadecimal digits.
  static CKAPStringAtom ToHex(const void* pointer);

  [[noreturn]] static void ThrowBadAlloc();

  // Ends the release of atoms: from now on a released atom no longer reaches the host. The end of
  // the binding does the same.
  static void Close() noexcept;
  static void NoOpDelete(KAPStringAtom*) noexcept;  // a deliberate no-op, for Close

  friend void swap(CKAPStringAtom& a, CKAPStringAtom& b) noexcept {
    std::swap(a.fAtom, b.fAtom);
    std::swap(a.fText, b.fText);
  }

 private:
  KAPStringAtom* fAtom;
  const char* fText;
};

}  // namespace KAP_T_MT
