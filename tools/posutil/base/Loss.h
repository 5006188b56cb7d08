// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace PosUtil {

// What to do with a JSON value that a property object cannot hold.
enum class LossMode {
  kWarn,   // read it as nearly as possible and print a warning
  kError,  // reject the document
  kKeep,   // read it as a dictionary with its JSON text, from which the writer restores it
};

enum class LossKind { kTruth, kNull, kRepeated, kInteger, kSmall, kDigits };

// Counts the losses of one input by their kind, and remembers the first of each kind.
class Losses {
 public:
  // `describe` returns the place and the loss; the call comes only for the first of a kind.
  template <class Describe>
  void Add(LossKind kind, Describe describe) {
    Entry& entry = fEntries[static_cast<std::size_t>(kind)];
    if (entry.fCount++ == 0) entry.fFirst = describe();
  }

  struct First {
    std::string fPlace;  // FILE:LINE:COLUMN
    std::string fText;
  };

  // Returns a line for each kind, in the order of LossKind, and forgets the losses. `severity`
  // follows the place: "warning: ".
  std::vector<std::string> TakeLines(const char* severity);

 private:
  struct Entry {
    First fFirst;
    std::size_t fCount = 0;
  };

  std::array<Entry, 6> fEntries;
};

}  // namespace PosUtil
