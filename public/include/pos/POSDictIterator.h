// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPContainer.h"
#include "pos/POSInterfaces.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

class CPOSDict;

// Walks a dictionary in the byte order of its keys:
//
//   for (CPOSDictIterator i(dict); !i.IsDone(); i.Next()) Use(i.CurKey(), dict[i.CurKey()]);
//
// Ownership: holds one reference to the iterator, released on destruction; copies share it, so
//   moving one moves all of them. Holds no reference to the dictionary, which must outlive the
//   iterator. Entries may come and go during the walk, but the current entry of the iterator must
//   not be removed.
// Errors: CKAPError "invalid container", with a report, when the iterator cannot be made; the other
//   calls report to the binder, and IsDone is true then, so that a loop ends. When the interface is
//   gone, every call throws the CKAPError with the empty message (kap/KAPInterfaceClient.h), and
//   there is no report.
// Threads: an iterator belongs to one thread at a time; several may walk one dictionary that
//   nothing changes.
class CPOSDictIterator {
 public:
  explicit CPOSDictIterator(const CPOSDict& dict);  // on the first entry

  // Moves to the first entry; to the next one; whether it is past the last.
  void Begin() { Client::Call<"Begin">(fIterator.Handle()); }
  void Next() { Client::Call<"Next">(fIterator.Handle()); }
  bool IsDone() const { return Client::Call<"IsDone">(fIterator.Handle()); }

  // The key, borrowed: it lives as long as the entry. A call when done is a failure: null, with a
  // report.
  const char* CurKey() const { return Client::Call<"CurKey">(fIterator.Handle()); }

 private:
  using Client = TKAPInterfaceClient<POSDictIteratorInterface>;

  KAPContainerBaseGeneric fIterator;
};

}  // namespace KAP_T_MT
