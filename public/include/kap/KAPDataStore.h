#pragma once

#include <cstddef>

#include "kap/KAPContainer.h"
#include "kap/KAPDataBlock.h"
#include "kap/KAPMethodTable.h"
#include "kap/KAPStreamInterfaces.h"

// References to data stores and data-block streams, of whichever component. A component offers one
// by registering the interface and putting its object into a container.
// Ownership: each holds one reference, released on destruction; copies share the store.
// Errors: an error of the store is raised. CKAPError "invalid container" for a handle that does not
//   offer the methods, null included, and for calls on a reference that was moved from.
// Threads: one store is used by one thread at a time, unless it says otherwise.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The method tables of all implementations, emptied when the runtime unbinds itself.
class CKAPDataStoreTerminate : public TDelVTabList<KAPDataStoreInterface> {};
class CKAPSizedDataStoreTerminate : public TDelVTabList<KAPSizedDataStoreInterface> {};
class CKAPDataBlockStreamTerminate : public TDelVTabList<KAPDataBlockStreamInterface> {};

class CKAPDataStore : public KAPContainerBaseGeneric {
 public:
  explicit CKAPDataStore(KAPDataStore* handle);         // adds a reference
  CKAPDataStore(KAPDataStore* handle, KAPAdopt adopt);  // takes the reference over

  // The text from `offset` (in bytes) on, as far as the store keeps it in one piece.
  CKAPDataBlockPtr GetBlock(std::size_t offset);

 private:
  static constinit CKAPDataStoreTerminate fTerm;
};

class CKAPSizedDataStore : public CKAPDataStore {
 public:
  explicit CKAPSizedDataStore(KAPDataStore* handle);
  CKAPSizedDataStore(KAPDataStore* handle, KAPAdopt adopt);

  std::size_t GetSize();  // in bytes

 private:
  static constinit CKAPSizedDataStoreTerminate fSizedTerm;
};

class CKAPDataBlockStream : public KAPContainerBaseGeneric {
 public:
  explicit CKAPDataBlockStream(KAPDataBlockStream* handle);
  CKAPDataBlockStream(KAPDataBlockStream* handle, KAPAdopt adopt);

  CKAPDataBlockPtr GetNextBlock();  // without text at the end
  void Rewind();

 private:
  static constinit CKAPDataBlockStreamTerminate fTerm;
};

}  // namespace KAP_T_MT
