// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "files/Output.h"

namespace PosUtil {

// What each level of nested output adds to the start of a line.
struct Indent {
  char fCharacter = ' ';
  std::size_t fCount = 2;

  void Put(Output& out, std::size_t levels) const { out.PutRepeated(fCharacter, fCount * levels); }
};

// Line breaks and indentation of nested output. Containers deeper than a hundred levels stay on one
// line: the output would be mostly indentation. `onOneLine` extends this to every container.
class Layout {
 public:
  Layout(bool onOneLine, Indent indent) : fDeepest(onOneLine ? 0 : kDeepest), fIndent(indent) {}

  // Starts the line of an item at this depth. Returns false if the item stays on the current line.
  bool BeginItem(Output& out, std::size_t depth) const { return Begin(out, depth, depth); }
  // The same for the end of a container at this depth.
  bool BeginEnd(Output& out, std::size_t depth) const { return Begin(out, depth, depth + 1); }

 private:
  static constexpr std::size_t kDeepest = 100;

  bool Begin(Output& out, std::size_t depth, std::size_t itemDepth) const {
    if (itemDepth > fDeepest) return false;
    out.Put('\n');
    fIndent.Put(out, depth);
    return true;
  }

  std::size_t fDeepest;
  Indent fIndent;
};

}  // namespace PosUtil
