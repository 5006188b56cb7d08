#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/TextPart.h"

namespace PosUtil {

// The bytes of a document and the name to call it by.
class Source {
 public:
  // Reads a file, or standard input when the name is "-". Throws Failure.
  static Source Read(const std::string& fileName);

  Source(std::string name, std::string_view bytes);

  const std::string& Name() const { return fName; }
  std::string_view Bytes() const { return {fBytes.get(), fSize}; }
  // Gives back the memory of what stands before `end`, except for what an excerpt may need. Those
  // bytes are zero from then on.
  void Forget(std::size_t end);
  // What has not been forgotten, and its place.
  TextPart Remembered() const { return {fBefore, Bytes().substr(fForgotten)}; }
  std::size_t Forgotten() const { return fForgotten; }
  // The bytes with a zero byte behind them.
  const char* Text() const { return fBytes.get(); }

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
  std::size_t fForgotten = 0;
  LineCounter fBefore;  // what is forgotten
};

}  // namespace PosUtil
