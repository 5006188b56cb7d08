// SPDX-License-Identifier: MIT
#include "kaphost/Snapshot.h"

#include <ostream>

#include "accounting/Resources.h"

namespace KAPHost {

namespace {

void Add(Holding& sum, Holding holding) {
  sum.fNumber = WrappingSum(sum.fNumber, holding.fNumber);
  sum.fExtent = WrappingSum(sum.fExtent, holding.fExtent);
}

Holding operator-(Holding holding) {
  return {WrappingSum(~holding.fNumber, 1), WrappingSum(~holding.fExtent, 1)};
}

std::string Amount(long amount, const char* unit) {
  return std::to_string(amount) + ' ' + unit + (amount == 1 ? "" : "s");
}

std::string Line(KAPResource resource, const std::string& name, Holding holding) {
  const ResourceText& text = TextOf(resource);
  const std::string label =
      text.fIsNamed ? text.fLabel + (" \"" + name + "\": ") : std::string(text.fLabel) + ": ";
  if (resource == KAPResource::kAtom) return label + Amount(holding.fNumber, "reference");
  const std::string number = std::to_string(holding.fNumber);
  switch (text.fExtent) {
    case Extent::kNone:
      return label + number;
    case Extent::kReferences:
      return label + number + " (" + Amount(holding.fExtent, "reference") + ')';
    case Extent::kBytes:
      return label + number + " (" + Amount(holding.fExtent, "byte") + ')';
    case Extent::kCost:
      return label + number + " (cost " + std::to_string(holding.fExtent) + ')';
  }
  return {};
}

}  // namespace

void Snapshot::Add(KAPResource resource, std::string_view name, Holding holding) {
  const auto entry = fHoldings.try_emplace({resource, std::string(name)}).first;
  KAPHost::Add(entry->second, holding);
  if (entry->second == Holding()) fHoldings.erase(entry);
}

Holding Snapshot::Of(KAPResource resource, std::string_view name) const {
  const auto entry = fHoldings.find({resource, std::string(name)});
  return entry == fHoldings.end() ? Holding() : entry->second;
}

Holding Snapshot::Total(KAPResource resource) const {
  Holding total;
  for (const auto& [key, holding] : fHoldings) {
    if (key.first != resource) continue;
    KAPHost::Add(total, holding);
  }
  return total;
}

Snapshot Snapshot::Gained() const {
  Snapshot gained = *this;
  std::erase_if(gained.fHoldings, [](const auto& entry) {
    return entry.second.fNumber < 0 || entry.second.fExtent < 0;
  });
  return gained;
}

std::string Snapshot::Describe() const {
  std::string text;
  for (const auto& [key, holding] : fHoldings) text += Line(key.first, key.second, holding) + '\n';
  return text;
}

Snapshot Snapshot::operator-(const Snapshot& other) const {
  Snapshot difference = *this;
  for (const auto& [key, holding] : other.fHoldings) {
    difference.Add(key.first, key.second, -holding);
  }
  return difference;
}

std::ostream& operator<<(std::ostream& out, const Snapshot& snapshot) {
  return out << (snapshot.IsEmpty() ? "nothing" : snapshot.Describe());
}

}  // namespace KAPHost
