// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "files/Output.h"
#include "terminal/Style.h"

namespace PosUtil {

// The colours of a writer, as a template argument. A test of a flag for each token would cost time
// even where there are no colours; the visitor without them has no such code.
class NoPaint {
 public:
  explicit NoPaint(const Style&) {}

  template <class Write>
  void In(const char* Style::*, Output&, Write write) const {
    write();
  }
};

class Paint {
 public:
  explicit Paint(const Style& style) : fStyle(style) {}

  // Calls `write`, which writes to `out`, and colours what it writes.
  template <class Write>
  void In(const char* Style::*colour, Output& out, Write write) const {
    out.Put(fStyle.*colour);
    write();
    out.Put(fStyle.fPlain);
  }

 private:
  const Style fStyle;
};

// Calls `write` with the paint for the style.
template <class Write>
void WithPaint(const Style& style, Write write) {
  if (style.HasColours()) {
    write(Paint(style));
  } else {
    write(NoPaint(style));
  }
}

}  // namespace PosUtil
