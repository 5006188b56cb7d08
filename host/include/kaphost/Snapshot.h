// SPDX-License-Identifier: MIT
#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "kap/KAPInterface.h"

// What components hold of a host, at one moment or between two.
//
//   const KAPHost::Snapshot before = host.TakeSnapshot();
//   ...
//   const KAPHost::Snapshot held = host.TakeSnapshot() - before;
//   if (!held.IsEmpty()) std::cerr << held;  // container "POSObjectImpl": 2 (3 references)

namespace KAPHost {

using KAP_T_MT::KAPResource;

// An amount of one thing.
struct Holding {
  // How many. Atoms are counted by reference instead.
  long fNumber = 0;
  // The number of references; of blocks and buffers the size in bytes, of cached items the cost. 0
  // for atoms, open files and cache purges.
  long fExtent = 0;

  // Whether both numbers are equal.
  friend bool operator==(const Holding&, const Holding&) = default;
};

// What components hold, by resource and name: atoms by text, errors by message, containers by
// signature (streams are containers), open files by path. The other resources have no names; each
// is one holding under the empty name.
//
// References that the host holds for its own purposes are left out, as are those of an error to its
// texts, of a container to its names and of a filter to its target. A process distinguishes about a
// hundred types of containers; the others are counted together as "(other types)".
//
// A plain value. The difference of two snapshots is a snapshot with negative numbers for what was
// released.
class Snapshot {
 public:
  // Adds to a holding; an entry that becomes zero disappears. Throws std::bad_alloc.
  void Add(KAPResource resource, std::string_view name, Holding holding);

  // Whether nothing is held.
  bool IsEmpty() const { return fHoldings.empty(); }
  // Zero when there is none.
  Holding Of(KAPResource resource, std::string_view name) const;
  // The sum over all names.
  Holding Total(KAPResource resource) const;

  // Without the negative entries of a difference. Throws std::bad_alloc.
  Snapshot Gained() const;

  // One line for each holding, such as `container "POSObjectImpl": 2 (3 references)`; empty when
  // there is none. Throws std::bad_alloc.
  std::string Describe() const;

  // What is held now and was not in `other`; negative for what was released. Throws std::bad_alloc.
  Snapshot operator-(const Snapshot& other) const;
  // Whether the same is held under the same names.
  friend bool operator==(const Snapshot&, const Snapshot&) = default;

 private:
  std::map<std::pair<KAPResource, std::string>, Holding> fHoldings;
};

// Writes the description, or "nothing".
std::ostream& operator<<(std::ostream& out, const Snapshot& snapshot);

}  // namespace KAPHost
