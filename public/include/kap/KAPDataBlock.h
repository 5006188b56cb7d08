// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>
#include <utility>

#include "kap/KAPTypes.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Owns a run of text that a data store lends, or none. The text is not copied: the store keeps it
// in place until the block is released.
//
//   KAPError* GetBlock(KAPDataBlock* out, KAPDataStore*, std::size_t offset) noexcept {  // a store
//     *out = CKAPDataBlockPtr(text + offset, size - offset, page, &UnlockPage).Detach();
//     return nullptr;
//   }
//
// Ownership: calls the block's `release` once, on destruction, unless Detach passed the block on.
// Errors: nothing throws; `release` must not throw either.
// Threads: a plain value; `release` runs on the thread that destroys it.
class CKAPDataBlockPtr {
 public:
  CKAPDataBlockPtr() noexcept = default;
  // Takes over a received block.
  explicit CKAPDataBlockPtr(const KAPDataBlock& block) noexcept : fBlock(block) {}
  // A block to lend. `release` may be null; it receives `clientData`.
  CKAPDataBlockPtr(const char* text, std::size_t size, void* clientData,
                   KAPDeleteProc release) noexcept
      : fBlock{text, size, clientData, release} {}
  CKAPDataBlockPtr(CKAPDataBlockPtr&& other) noexcept : fBlock(other.Detach()) {}
  CKAPDataBlockPtr& operator=(CKAPDataBlockPtr other) noexcept {
    std::swap(fBlock, other.fBlock);
    return *this;
  }
  ~CKAPDataBlockPtr() {
    if (fBlock.release) fBlock.release(fBlock.clientData);
  }

  // The text, borrowed: it lives as long as the block. Empty for none.
  std::string_view Text() const noexcept {
    return fBlock.text ? std::string_view(fBlock.text, fBlock.size) : std::string_view();
  }

  // Passes the block on in the form that crosses the binder; the receiver releases it.
  [[nodiscard]] KAPDataBlock Detach() noexcept { return std::exchange(fBlock, KAPDataBlock()); }

 private:
  KAPDataBlock fBlock = {};
};

}  // namespace KAP_T_MT
