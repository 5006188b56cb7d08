// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPContainer.h"
#include "kap/KAPDataBlock.h"
#include "kap/KAPMethodTable.h"
#include "kap/KAPStreamInterfaces.h"

// References to data stores and data-block streams, which lend text instead of copying it. Any
// component may provide one.
//
//   CKAPDataStore store(handle);
//   for (std::size_t offset = 0;;) {
//     const CKAPDataBlockPtr block = store.GetBlock(offset);
//     if (block.Text().empty()) break;
//     Parse(block.Text());
//     offset += block.Text().size();
//   }
//
// To provide a store, register its methods under an interface name of the component's own and put
// that name into the container:
//
//   if (!KAPRegisterMethods<KAPDataStoreInterface>("TotalsStoreInterface", &GetBlock)) return 0;
//   ...
//   const CKAPStringAtom impl("TotalsStoreImpl"), interface("TotalsStoreInterface");
//   CKAPDataStore store(CKAPContainer::NewFullContainer(object, impl, interface, &Delete));
//
// KAPRegisterMethods says why the name must be the component's own. A sized store registers both
// interfaces' methods under the one name. The same holds for data-block streams and for streams
// that a component provides without the host's factory.
//
// Ownership: a reference holds one reference to the container, released on destruction; copies
//   share the store.
// Errors: throws the error that the store returns. At construction, CKAPError "invalid container"
//   for null or a container without the methods, and "couldn't get signature" for a container
//   without a primary instance. "invalid container" for calls on a reference that was moved from. A
//   constructor that throws releases the reference it added or adopted.
// Threads: one thread at a time per store, unless the store says otherwise.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The method tables of all implementations of data stores and their streams, deleted when the
// runtime is unbound. They hold no objects: each reference releases its own, a no-op once the
// runtime is unbound.
class CKAPDataStoreTerminate : public TDelVTabList<KAPDataStoreInterface> {};
class CKAPSizedDataStoreTerminate : public TDelVTabList<KAPSizedDataStoreInterface> {};
class CKAPDataBlockStreamTerminate : public TDelVTabList<KAPDataBlockStreamInterface> {};

// A reference to a store that can be read at any offset.
class CKAPDataStore : public TKAPTypedContainer<CKAPDataStore, KAPContainerBaseGeneric> {
 public:
  using TKAPTypedContainer::TKAPTypedContainer;

  // The text from `offset` (in bytes) on, as far as the store keeps it in one piece. The store
  // decides whether an offset past the end is an error.
  [[nodiscard]] CKAPDataBlockPtr GetBlock(std::size_t offset);

  // Throws as the constructors do unless the container has the methods.
  static void CheckMethods(KAPDataStore* handle) { fTerm.InitVTab(handle); }

 private:
  static constinit CKAPDataStoreTerminate fTerm;
};

// A reference to a store that also knows its size.
class CKAPSizedDataStore : public TKAPTypedContainer<CKAPSizedDataStore, CKAPDataStore> {
 public:
  using TKAPTypedContainer::TKAPTypedContainer;

  [[nodiscard]] std::size_t GetSize();  // in bytes

  // Throws as the constructors do unless the container has the methods.
  static void CheckMethods(KAPDataStore* handle) { fSizedTerm.InitVTab(handle); }

 private:
  static constinit CKAPSizedDataStoreTerminate fSizedTerm;
};

// A reference to a sequence of blocks.
class CKAPDataBlockStream
    : public TKAPTypedContainer<CKAPDataBlockStream, KAPContainerBaseGeneric> {
 public:
  using TKAPTypedContainer::TKAPTypedContainer;

  [[nodiscard]] CKAPDataBlockPtr GetNextBlock();  // an empty block at the end
  void Rewind();                                  // the first block is next

  // Throws as the constructors do unless the container has the methods.
  static void CheckMethods(KAPDataBlockStream* handle) { fTerm.InitVTab(handle); }

 private:
  static constinit CKAPDataBlockStreamTerminate fTerm;
};

}  // namespace KAP_T_MT
