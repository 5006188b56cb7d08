#pragma once

#include "pos/POSKind.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to an array of property objects. See CPOSObject for ownership, errors and threads.
class CPOSArray : public TPOSKind<POSArrayInterface, "IsPOSArray",
                                  "downcast from CPOSObject to CPOSArray failed"> {
 public:
  using TPOSKind::TPOSKind;
  // A new, empty array (the default constructor makes an empty reference).
  static CPOSArray New() { return CPOSArray(Call<"NewPOSArray">(), KAPAdopt()); }

  // The element. Behind the end, or an empty slot: an empty object when `noThrow`, else
  // POSException "CPOSArray::GetAt subscript failed".
  CPOSObject GetAt(unsigned long index, bool noThrow = false) const;
  CPOSObject operator[](unsigned long index) const { return GetAt(index); }

  unsigned int Count() const { return Call<"Count">(Handle()); }
  void SetAt(unsigned long index, const CPOSObject& object) {
    Call<"SetAt">(Handle(), index, object.Handle());
  }
  void Append(const CPOSObject& object) { Call<"Append">(Handle(), object.Handle()); }
  void Remove(unsigned long index) { Call<"Remove">(Handle(), index); }
};

}  // namespace KAP_T_MT
