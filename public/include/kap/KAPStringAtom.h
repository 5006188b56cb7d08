// SPDX-License-Identifier: MIT
#pragma once

#include <concepts>
#include <string_view>
#include <utility>

#include "kap/KAPAdopt.h"
#include "kap/KAPInterfaceClient.h"
#include "kap/KAPStringInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Typed calls of the host's string atoms.
using KAPStringClient = TKAPInterfaceClient<KAPStringInterface>;

// The types accepted as the text of a new atom: `const char*`, std::string and std::string_view,
// literals included.
template <class Text>
concept KAPText = std::convertible_to<const Text&, std::string_view>;

// A reference to a string atom, an interned 8-bit string of the host; or to none. Equal strings
// share one atom, so two atoms are equal exactly when their text pointers are.
//
//   const CKAPStringAtom key("born"), path = CKAPStringAtom("window.") + key;
//   if (key == other) ...                    // one comparison, whatever the length
//
// Ownership: holds one reference, released on destruction. The text is borrowed from the host and
//   lives as long as the atom.
// Errors: std::bad_alloc when the host makes no atom; a table that cannot be loaded throws as
//   KAPInterfaceClient.h says. Destruction never throws, and does nothing after the binding.
// Threads: a plain value: one thread at a time per reference, any number of references per atom.
class CKAPStringAtom {
 public:
  // Without atom and text.
  CKAPStringAtom() noexcept : fAtom(nullptr), fText(nullptr) {}
  // Leaves both fields unset. Only for code that writes them before anything reads them: neither
  // reading nor destroying such an object is defined. Exactly `bool`, or any pointer would do.
  template <std::same_as<bool> Unset>
  explicit CKAPStringAtom(Unset) noexcept {}  // NOLINT(cppcoreguidelines-pro-type-member-init)
  explicit CKAPStringAtom(const char* text);  // null: std::bad_alloc, as without memory
  // The same for a text without a terminator. TOQException "a text cannot hold a zero byte".
  // A long text is copied through host memory.
  explicit CKAPStringAtom(std::string_view text);
  // Adds a reference; adopts it; adopts the one that comes with a new handle. Null makes an object
  // without atom and text. Exactly a handle, so that `nullptr` stays a null text.
  template <std::same_as<KAPStringAtom*> Handle>
  explicit CKAPStringAtom(Handle atom) : CKAPStringAtom(atom, Ownership{false}) {}
  CKAPStringAtom(KAPStringAtom* atom, KAPAdopt) : CKAPStringAtom(atom, Ownership{true}) {}
  explicit CKAPStringAtom(TKAPNewHandle<KAPStringAtom> made)
      : CKAPStringAtom(std::move(made), KAPAdopt()) {}
  // The deprecated form: adopts the reference if `adopt`, else adds one. Exactly a `bool`. The
  // reference of a new handle is adopted in any case, because nothing else could release it.
  KAP_DEPRECATED("use KAPAdopt() for true, and leave false out")
  CKAPStringAtom(KAPStringAtom* atom, bool adopt) : CKAPStringAtom(atom, Ownership{adopt}) {}
  KAP_DEPRECATED("leave the bool out")
  CKAPStringAtom(TKAPNewHandle<KAPStringAtom> made, bool)
      : CKAPStringAtom(std::move(made), KAPAdopt()) {}
  template <class Other>
  CKAPStringAtom(KAPStringAtom* atom, Other) = delete;
  // A copy adds a reference; a move leaves the other one without atom and text.
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
  // Passes the reference to the caller; the object is without atom and text afterwards.
  [[nodiscard]] KAPStringAtom* Detach() noexcept {
    fText = nullptr;
    return std::exchange(fAtom, nullptr);
  }

  // Whether both are the same atom, which is whether the texts are equal; also when both are empty.
  friend bool operator==(const CKAPStringAtom& a, const CKAPStringAtom& b) noexcept {
    return a.fText == b.fText;
  }

  // The concatenation. Deliberate: CKAPError "Memory Copy Error" when a side has no text, even if
  // the other operand has text (test: StringAtomTest.Join). TOQException "Math overflow exception"
  // when the lengths do not add up.
  CKAPStringAtom operator+(const CKAPStringAtom& other) const;

  // "0x" and the pointer's 64 bits as 16 lower-case hexadecimal digits.
  static CKAPStringAtom ToHex(const void* pointer);

  [[noreturn]] static void ThrowBadAlloc();  // throws std::bad_alloc

  // Makes the release of atoms a no-op until the string table is loaded again. The end of the
  // binding does the same. After the next load a release reaches the host again, whichever host
  // made the atom (KAPClientTerminate). [binding thread]
  static void Close() noexcept;
  // A deliberate no-op, for components that install it as the release of atoms.
  static void NoOpDelete(KAPStringAtom*) noexcept;

  // Exchanges the atoms, without a host call.
  friend void swap(CKAPStringAtom& a, CKAPStringAtom& b) noexcept {
    std::swap(a.fAtom, b.fAtom);
    std::swap(a.fText, b.fText);
  }

 private:
  struct Ownership {
    bool fAdopts;
  };
  CKAPStringAtom(KAPStringAtom* atom, Ownership ownership);

  KAPStringAtom* fAtom;
  const char* fText;
};

}  // namespace KAP_T_MT
