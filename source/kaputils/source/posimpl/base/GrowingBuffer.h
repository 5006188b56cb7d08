// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>

#include "kap/KAPMemory.h"

namespace NPOSObjectImpl {

// Collects elements when their number is not known in advance, in host memory that starts at 32
// bytes and doubles. A declared length is not trusted and reserves no memory.
template <class T>
class GrowingBuffer {
 public:
  void Clear() noexcept { CutTo(0); }
  void Append(T element) {
    if (fSize == fCapacity) Reserve(1);
    fElements[fSize++] = element;
  }
  void Append(const T* elements, std::size_t count) {
    if (count > fCapacity - fSize) Reserve(count);
    std::copy_n(elements, count, fElements.get() + fSize);
    fSize += count;
  }

  void CutTo(std::size_t size) noexcept { fSize = size; }

  T* Data() noexcept { return fElements.get(); }
  const T* Data() const noexcept { return fElements.get(); }
  std::size_t Size() const noexcept { return fSize; }

 private:
  static constexpr std::size_t kFirstCapacity = 32 / sizeof(T);

  void Reserve(std::size_t count) {
    const std::size_t doubled =
        fCapacity == 0 ? kFirstCapacity : KAP_T_MT::KAPCheckedSize(fCapacity, 2);
    const std::size_t capacity = std::max(doubled, KAP_T_MT::KAPCheckedSize(fSize, 1, count));
    auto elements = KAP_T_MT::KAPNewBlock<T>(capacity);
    std::copy_n(fElements.get(), fSize, elements.get());
    fElements = std::move(elements);
    fCapacity = capacity;
  }

  KAP_T_MT::TKAPBlock<T> fElements;
  std::size_t fCapacity = 0;
  std::size_t fSize = 0;
};

}  // namespace NPOSObjectImpl
