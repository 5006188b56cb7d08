#pragma once

#include "kap/KAPContainer.h"
#include "pos/POSInterfaces.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

class CPOSDict;

// Walks a dictionary in the byte order of its keys:
//
//   for (CPOSDictIterator i(dict); !i.IsDone(); i.Next()) Use(i.CurKey());
//
// Ownership: owns the iterator, holds no reference to the dictionary, which must outlive it.
// Errors: CKAPError "invalid container" when the iterator cannot be made.
class CPOSDictIterator {
 public:
  explicit CPOSDictIterator(const CPOSDict& dict);  // stands on the first entry

  void Begin() { Client::Call<"Begin">(fIterator.Handle()); }
  void Next() { Client::Call<"Next">(fIterator.Handle()); }
  bool IsDone() const { return Client::Call<"IsDone">(fIterator.Handle()); }
  const char* CurKey() const {
    return Client::Call<"CurKey">(fIterator.Handle());
  }  // lives with the entry

 private:
  using Client = TKAPInterfaceClient<POSDictIteratorInterface>;

  KAPContainerBaseGeneric fIterator;
};

}  // namespace KAP_T_MT
