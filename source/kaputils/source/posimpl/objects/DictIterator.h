// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPClientBase.h"
#include "posimpl/objects/Dict.h"

namespace NPOSObjectImpl {

// A place in a dictionary's order. Holds no reference to the dictionary, which must outlive it.
class DictIterator final : public KAP_T_MT::CKAPClientBase {
 public:
  explicit DictIterator(const Dict& dict) noexcept
      : fTree(&dict.Entries()), fCurrent(fTree->First()) {}

  static POSDictIterator* NewContainer(const Dict& dict);
  // POSException "instance was not an POSDictIterator" for any other handle.
  static DictIterator& GetInstance(POSDictIterator* handle);

  void Begin() noexcept { fCurrent = fTree->First(); }
  void Next() noexcept {
    if (fCurrent) fCurrent = DictTree::Next(fCurrent);
  }
  bool IsDone() const noexcept { return !fCurrent; }
  const char* CurKey() const;  // POSException when done

 private:
  const DictTree* fTree;
  const DictEntry* fCurrent;  // null: done
};

}  // namespace NPOSObjectImpl
