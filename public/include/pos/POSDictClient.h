// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "kap/KAPStringAtom.h"
#include "pos/POSArray.h"
#include "pos/POSBinData.h"
#include "pos/POSKind.h"
#include "pos/POSNumber.h"
#include "pos/POSRawPointer.h"
#include "pos/POSString.h"
#include "pos/POSUnicodeString.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to a dictionary of property objects. A path leads through dictionaries and arrays:
//
//   CPOSDict person = CPOSDict::New();
//   person.PutOrThrow("name", CPOSString("Ada"));
//   person.PutOrThrow("born", CPOSObject::CreateFromText("[10 December 1815]", nullptr));
//   person.DeepGetNumber("born[2]").Get();              // 1815
//   person.GetNumber("age", true).IsNull();             // true
//
// Keys and paths are texts, terminated or not, or atoms. An atom saves the look-up of the text in
// the host; a `std::string_view` is copied first.
//
// Errors of keys and paths: POSException "a key, path or type name is null"; what the constructor
//   of CKAPStringAtom throws.
// Errors of the getters: with `noThrow`, a value that is missing or of another kind is an empty
//   reference; if the library is no longer registered, they throw even then. Without `noThrow` a
//   missing key is POSException "CPOSDict::Get failed", a path that leads nowhere POSException
//   "CPOSArray::GetAt subscript failed" (deliberately the array's message), another kind the
//   downcast's message.
// Errors of changes: reported to the binder; the dictionary stays as it was. That is all that Put
//   does about a failure; PutOrThrow also checks that the change happened and throws if it did not.
// See CPOSObject for ownership and threads.
class CPOSDict : public TPOSKind<POSDictInterface, "IsPOSDict",
                                 "downcast from CPOSObject to CPOSDict failed"> {
 public:
  using TPOSKind::TPOSKind;
  // A new dictionary without entries (the default constructor makes an empty reference).
  [[nodiscard]] static CPOSDict New() { return CPOSDict(Call<"NewPOSDict">(), KAPAdopt()); }

  // The value of the key. operator[] throws when there is none.
  CPOSObject Get(const CKAPStringAtom& key, bool noThrow = false) const;
  CPOSObject Get(const char* key, bool noThrow = false) const {
    return Get(POSAtomOf(key), noThrow);
  }
  CPOSObject Get(std::string_view key, bool noThrow = false) const {
    return Get(CKAPStringAtom(key), noThrow);
  }
  CPOSObject operator[](const char* key) const { return Get(key); }
  CPOSObject operator[](std::string_view key) const { return Get(key); }
  CPOSObject operator[](const CKAPStringAtom& key) const { return Get(key); }

  // The value that the path leads to.
  CPOSObject DeepGet(const CKAPStringAtom& path, bool noThrow = false) const;
  CPOSObject DeepGet(const char* path, bool noThrow = false) const {
    return DeepGet(POSAtomOf(path), noThrow);
  }
  CPOSObject DeepGet(std::string_view path, bool noThrow = false) const {
    return DeepGet(CKAPStringAtom(path), noThrow);
  }

  // The value of the key as one of a kind. `Key` is a text or an atom.
  template <class Key>
  CPOSNumber GetNumber(const Key& key, bool noThrow = false) const {
    return {Get(key, noThrow), noThrow};
  }
  template <class Key>
  CPOSString GetString(const Key& key, bool noThrow = false) const {
    return {Get(key, noThrow), noThrow};
  }
  template <class Key>
  CPOSUnicodeString GetUnicodeString(const Key& key, bool noThrow = false) const {
    return {Get(key, noThrow), noThrow};
  }
  template <class Key>
  CPOSBinData GetBinData(const Key& key, bool noThrow = false) const {
    return {Get(key, noThrow), noThrow};
  }
  template <class Key>
  CPOSRawPointer GetRawPointer(const Key& key, bool noThrow = false) const {
    return {Get(key, noThrow), noThrow};
  }
  template <class Key>
  CPOSArray GetArray(const Key& key, bool noThrow = false) const {
    return {Get(key, noThrow), noThrow};
  }
  template <class Key>
  CPOSDict GetDict(const Key& key, bool noThrow = false) const {
    return {Get(key, noThrow), noThrow};
  }
  // An object reference, see CPOSRawPointer. For another kind the message is "downcast from
  // CPOSObject to CPOSKAPObjRef failed".
  template <class Key>
  CPOSRawPointer GetKAPObjRef(const Key& key, bool noThrow = false) const {
    return AsKAPObjRef(Get(key, noThrow), noThrow);
  }

  // The value that the path leads to, as one of a kind.
  template <class Key>
  CPOSNumber DeepGetNumber(const Key& path, bool noThrow = false) const {
    return {DeepGet(path, noThrow), noThrow};
  }
  template <class Key>
  CPOSString DeepGetString(const Key& path, bool noThrow = false) const {
    return {DeepGet(path, noThrow), noThrow};
  }
  template <class Key>
  CPOSUnicodeString DeepGetUnicodeString(const Key& path, bool noThrow = false) const {
    return {DeepGet(path, noThrow), noThrow};
  }
  template <class Key>
  CPOSBinData DeepGetBinData(const Key& path, bool noThrow = false) const {
    return {DeepGet(path, noThrow), noThrow};
  }
  template <class Key>
  CPOSRawPointer DeepGetRawPointer(const Key& path, bool noThrow = false) const {
    return {DeepGet(path, noThrow), noThrow};
  }
  template <class Key>
  CPOSArray DeepGetArray(const Key& path, bool noThrow = false) const {
    return {DeepGet(path, noThrow), noThrow};
  }
  template <class Key>
  CPOSDict DeepGetDict(const Key& path, bool noThrow = false) const {
    return {DeepGet(path, noThrow), noThrow};
  }
  template <class Key>
  CPOSRawPointer DeepGetKAPObjRef(const Key& path, bool noThrow = false) const {
    return AsKAPObjRef(DeepGet(path, noThrow), noThrow);
  }

  // Whether there is a value. Each "true" leaves one extra reference on the value, which is then
  // never destroyed; deliberate. Where that matters, call Get with `noThrow`.
  [[nodiscard]] bool HasKey(const CKAPStringAtom& key) const;
  [[nodiscard]] bool HasKey(const char* key) const { return HasKey(POSAtomOf(key)); }
  [[nodiscard]] bool HasKey(std::string_view key) const { return HasKey(CKAPStringAtom(key)); }
  [[nodiscard]] bool DeepHasKey(const CKAPStringAtom& path) const;
  [[nodiscard]] bool DeepHasKey(const char* path) const { return DeepHasKey(POSAtomOf(path)); }
  [[nodiscard]] bool DeepHasKey(std::string_view path) const {
    return DeepHasKey(CKAPStringAtom(path));
  }

  // As Put. POSException "CPOSDict::Put failed" when the key does not have the object afterwards or
  // cannot be read. It costs a call of "Get".
  void PutOrThrow(const CKAPStringAtom& key, const CPOSObject& object);
  void PutOrThrow(const char* key, const CPOSObject& object) { PutOrThrow(POSAtomOf(key), object); }
  void PutOrThrow(std::string_view key, const CPOSObject& object) {
    PutOrThrow(CKAPStringAtom(key), object);
  }

  // Sets the value of the key, in place of the one it had. An empty `object` is a failure: Remove
  // takes a key out.
  void Put(const CKAPStringAtom& key, const CPOSObject& object);
  void Put(const char* key, const CPOSObject& object) { Put(POSAtomOf(key), object); }
  void Put(std::string_view key, const CPOSObject& object) { Put(CKAPStringAtom(key), object); }
  // No-op for a key that is absent.
  void Remove(const CKAPStringAtom& key);
  void Remove(const char* key) { Remove(POSAtomOf(key)); }
  void Remove(std::string_view key) { Remove(CKAPStringAtom(key)); }

  // How many keys there are. Counts them one by one, in linear time.
  unsigned int NumKeys() const;

 private:
  static CPOSRawPointer AsKAPObjRef(const CPOSObject& object, bool noThrow);
};

}  // namespace KAP_T_MT
