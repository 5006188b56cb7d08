// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/SyntaxError.h"

namespace PosUtil {

// The bytes of a document, and its name in messages.
class Source {
 public:
  // Reads a file; "-" means standard input. Throws Failure.
  static Source Read(const std::string& fileName);

  Source(std::string name, std::string_view bytes);

  const std::string& Name() const { return fName; }
  std::string_view Bytes() const { return {fBytes.get(), fSize}; }
  // The bytes, with a zero byte after the last one.
  const char* Text() const { return fBytes.get(); }
  // The error at a byte.
  SyntaxError ErrorAt(std::size_t offset, const std::string& message) const;

 private:
  struct Free {
    void operator()(char* block) const noexcept;
  };
  using Block = std::unique_ptr<char, Free>;

  Source(std::string name, Block bytes, std::size_t size);
  static Block Resize(Block block, std::size_t size);

  std::string fName;
  Block fBytes;
  std::size_t fSize;
};

}  // namespace PosUtil
