// SPDX-License-Identifier: MIT
#include "kap/KAPDataStore.h"

#include "kap/KAPError.h"

namespace KAP_T_MT {

constinit CKAPDataStoreTerminate CKAPDataStore::fTerm;
constinit CKAPSizedDataStoreTerminate CKAPSizedDataStore::fSizedTerm;
constinit CKAPDataBlockStreamTerminate CKAPDataBlockStream::fTerm;

namespace {

// A block that comes together with an error is ignored: the store has lent nothing.
template <class Proc, class... Args>
CKAPDataBlockPtr Receive(Proc proc, Args... args) {
  KAPDataBlock block = {};
  KAPCheck(proc(&block, args...));
  return CKAPDataBlockPtr(block);
}

}  // namespace

CKAPDataBlockPtr CKAPDataStore::GetBlock(std::size_t offset) {
  return Receive(fTerm.Method<"GetBlock">(Handle()), Handle(), offset);
}

std::size_t CKAPSizedDataStore::GetSize() {
  std::size_t size = 0;
  KAPCheck(fSizedTerm.Method<"GetSize">(Handle())(&size, Handle()));
  return size;
}

CKAPDataBlockPtr CKAPDataBlockStream::GetNextBlock() {
  return Receive(fTerm.Method<"GetNextBlock">(Handle()), Handle());
}

void CKAPDataBlockStream::Rewind() { KAPCheck(fTerm.Method<"Rewind">(Handle())(Handle())); }

}  // namespace KAP_T_MT
