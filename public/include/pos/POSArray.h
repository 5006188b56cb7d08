// SPDX-License-Identifier: MIT
#pragma once

#include "pos/POSKind.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A reference to an array of property objects.
//
//   CPOSArray tags = CPOSArray::New();
//   tags.AppendOrThrow(CPOSString("red"));
//   tags.SetAtOrThrow(2, CPOSNumber(7));               // slot 1 stays empty
//   CPOSString first(tags[0]);                         // throws if it is not a string
//   CPOSObject none = tags.GetAt(1, true);             // an empty object
//
// See CPOSObject for ownership, errors and threads. A change that fails is reported to the binder
// and leaves the array as it was. That is all that SetAt and Append do about a failure;
// SetAtOrThrow and AppendOrThrow also check that the change happened and throw if it did not.
class CPOSArray : public TPOSKind<POSArrayInterface, "IsPOSArray",
                                  "downcast from CPOSObject to CPOSArray failed"> {
 public:
  using TPOSKind::TPOSKind;
  // A new array without slots (the default constructor makes an empty reference).
  [[nodiscard]] static CPOSArray New() { return CPOSArray(Call<"NewPOSArray">(), KAPAdopt()); }

  // The object in the slot. Past the end, or an empty slot: an empty object when `noThrow`, else
  // POSException "CPOSArray::GetAt subscript failed".
  CPOSObject GetAt(unsigned long index, bool noThrow = false) const;
  CPOSObject operator[](unsigned long index) const { return GetAt(index); }

  // How many slots there are, empty ones included.
  unsigned int Count() const { return Call<"Count">(Handle()); }

  // As SetAt and Append. POSException "CPOSArray::SetAt failed" when the slot does not hold the
  // object afterwards or cannot be read, and "CPOSArray::Append failed" when the array has not
  // grown by one. They cost a call of "GetAt", or two of "Count".
  void SetAtOrThrow(unsigned long index, const CPOSObject& object);
  void AppendOrThrow(const CPOSObject& object);

  // Past the end the array grows. An empty `object` is a failure: a slot cannot be emptied.
  void SetAt(unsigned long index, const CPOSObject& object) {
    Call<"SetAt">(Handle(), index, object.Handle());
  }
  void Append(const CPOSObject& object) { Call<"Append">(Handle(), object.Handle()); }

  // Later slots move down by one. No-op past the end.
  void Remove(unsigned long index) { Call<"Remove">(Handle(), index); }
};

}  // namespace KAP_T_MT
