#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "kap/KAPInterface.h"

namespace KAPHost {

using KAP_T_MT::KAPResource;

// An amount of one thing. `fExtent` is the number of references; for blocks and buffers that of
// bytes, for cached items their cost, for open files and purges nothing. Of an atom only the
// references are counted, as `fNumber`.
struct Holding {
  long fNumber = 0;
  long fExtent = 0;

  friend bool operator==(const Holding&, const Holding&) = default;
};

// What components held of the host at one moment, by kind and name: atoms by text, errors by
// message, containers by signature (streams are containers), open files by path, the others all
// together. References that the host holds for purposes of its own are left out, also those of an
// error on its texts, of a container on its names and of a filter on its target. Of the containers,
// the host tells some hundred types apart in one process; further ones are counted together as "(other types)". A plain value. The difference of two moments is a
// snapshot too; what went away is negative in it.
class Snapshot {
 public:
  // No entry is made for a name of which there is nothing.
  void Add(KAPResource kind, std::string_view name, Holding holding);

  bool IsEmpty() const { return fHoldings.empty(); }
  Holding Of(KAPResource kind, std::string_view name) const;
  Holding Total(KAPResource kind) const;

  // One line for each holding, such as `container "POSObjectImpl": 2 (3 references)`; empty when
  // there is none.
  std::string Describe() const;

  Snapshot operator-(const Snapshot& other) const;
  friend bool operator==(const Snapshot&, const Snapshot&) = default;

 private:
  std::map<std::pair<KAPResource, std::string>, Holding> fHoldings;
};

// Writes the description, or "nothing".
std::ostream& operator<<(std::ostream& out, const Snapshot& snapshot);

}  // namespace KAPHost
