// SPDX-License-Identifier: MIT
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "kap/KAPInterface.h"

namespace KAPHost {

// A thing that components hold, and where it comes from; see Host::LiveThings. A plain value.
struct LiveThing {
  unsigned long fNumber = 0;                                          // grows with each thing made
  KAP_T_MT::KAPResource fResource = KAP_T_MT::KAPResource::kNothing;  // its kind
  std::string fName;     // `container "POSObjectImpl"`, `atom "key"`, `block of 16 bytes`
  long fReferences = 0;  // of all components; 1 for a block
  std::string fMaker;    // the component that made it
  std::string fHolders;  // the components that have references, separated by ", "
  std::string fHistory;  // lines, each indented by two spaces or more: where it was made and taken
};

// What is held more at the end of a time than at its begin, from the lists of Host::LiveThings: the
// things made since, and those to which components have more references, with the difference as
// `fReferences`. So a component that takes a text's atom again and again is found.
std::vector<LiveThing> HeldMore(const std::vector<LiveThing>& before, std::vector<LiveThing> after);

// Writes `container "POSObjectImpl": 1 reference of Totals` and the history.
std::ostream& operator<<(std::ostream& out, const LiveThing& thing);

}  // namespace KAPHost
