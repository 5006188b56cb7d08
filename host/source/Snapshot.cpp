#include "kaphost/Snapshot.h"

#include <ostream>

namespace KAPHost {

namespace {

std::string Amount(long amount, const char* unit) {
  return std::to_string(amount) + ' ' + unit + (amount == 1 ? "" : "s");
}

std::string Line(KAPResource kind, const std::string& name, Holding holding) {
  const std::string quoted = " \"" + name + "\": ";
  const std::string number = std::to_string(holding.fNumber);
  const auto with = [&](const char* unit) {
    return number + " (" + Amount(holding.fExtent, unit) + ')';
  };
  switch (kind) {
    case KAPResource::kAtom:
      return "atom" + quoted + Amount(holding.fNumber, "reference");
    case KAPResource::kError:
      return "error" + quoted + with("reference");
    case KAPResource::kContainer:
      return "container" + quoted + with("reference");
    case KAPResource::kBlock:
      return "blocks: " + with("byte");
    case KAPResource::kBuffer:
      return "shared buffers: " + with("byte");
    case KAPResource::kFile:
      return "open file" + quoted + number;
    case KAPResource::kCacheID:
      return "cache identities: " + with("reference");
    case KAPResource::kCacheItem:
      return "cached items: " + number + " (cost " + std::to_string(holding.fExtent) + ')';
    case KAPResource::kCacheSet:
      return "cache sets: " + with("reference");
    case KAPResource::kCachePurge:
      return "cache purges: " + number;
    case KAPResource::kSink:
      return "data sinks: " + with("reference");
    case KAPResource::kProgress:
      return "progress objects: " + with("reference");
    case KAPResource::kNothing:
    case KAPResource::kCount:
      break;
  }
  return {};
}

}  // namespace

void Snapshot::Add(KAPResource kind, std::string_view name, Holding holding) {
  const auto entry = fHoldings.try_emplace({kind, std::string(name)}).first;
  entry->second.fNumber += holding.fNumber;
  entry->second.fExtent += holding.fExtent;
  if (entry->second == Holding()) fHoldings.erase(entry);
}

Holding Snapshot::Of(KAPResource kind, std::string_view name) const {
  const auto entry = fHoldings.find({kind, std::string(name)});
  return entry == fHoldings.end() ? Holding() : entry->second;
}

Holding Snapshot::Total(KAPResource kind) const {
  Holding total;
  for (const auto& [key, holding] : fHoldings) {
    if (key.first != kind) continue;
    total.fNumber += holding.fNumber;
    total.fExtent += holding.fExtent;
  }
  return total;
}

std::string Snapshot::Describe() const {
  std::string text;
  for (const auto& [key, holding] : fHoldings) text += Line(key.first, key.second, holding) + '\n';
  return text;
}

Snapshot Snapshot::operator-(const Snapshot& other) const {
  Snapshot difference = *this;
  for (const auto& [key, holding] : other.fHoldings) {
    difference.Add(key.first, key.second, {-holding.fNumber, -holding.fExtent});
  }
  return difference;
}

std::ostream& operator<<(std::ostream& out, const Snapshot& snapshot) {
  return out << (snapshot.IsEmpty() ? "nothing" : snapshot.Describe());
}

}  // namespace KAPHost
