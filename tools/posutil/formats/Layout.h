#pragma once

#include <cstddef>

#include "files/Output.h"

namespace PosUtil {

// Where the lines of nested output begin: each level two columns further in. Below a hundred levels, and everywhere if
// so wished, what is in a container stays on the line of the container: deep documents would be mostly indentation.
class Layout {
 public:
  explicit Layout(bool onOneLine) : fDeepest(onOneLine ? 0 : kDeepest) {}

  // Begins a line for something of that depth in a container, unless it stays on the container's: then false.
  bool BeginItem(Output& out, std::size_t depth) const { return Begin(out, depth, depth); }
  // The same for what ends a container of that depth.
  bool BeginEnd(Output& out, std::size_t depth) const { return Begin(out, depth, depth + 1); }

 private:
  static constexpr std::size_t kDeepest = 100;

  bool Begin(Output& out, std::size_t depth, std::size_t itemDepth) const {
    if (itemDepth > fDeepest) return false;
    out.Put('\n');
    out.PutRepeated(' ', 2 * depth);
    return true;
  }

  std::size_t fDeepest;
};

}  // namespace PosUtil
