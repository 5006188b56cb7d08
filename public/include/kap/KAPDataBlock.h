#pragma once

#include <cstddef>
#include <string_view>
#include <utility>

#include "kap/KAPTypes.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Owns a run of text that a data store lends, or none. A component that is a data store itself
// makes one of what it lends and hands it over with Detach.
// Ownership: its `release` is called once, on destruction or by whoever took the block over.
class CKAPDataBlockPtr {
 public:
  CKAPDataBlockPtr() noexcept = default;
  // Takes over a block that was received.
  explicit CKAPDataBlockPtr(const KAPDataBlock& block) noexcept : fBlock(block) {}
  // `release`, which may be null, must not throw.
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

  // Lives as long as the block.
  std::string_view Text() const noexcept {
    return fBlock.text ? std::string_view(fBlock.text, fBlock.size) : std::string_view();
  }

  // The block as it crosses; whoever receives it releases it.
  KAPDataBlock Detach() noexcept { return std::exchange(fBlock, KAPDataBlock()); }

 private:
  KAPDataBlock fBlock = {};
};

}  // namespace KAP_T_MT
