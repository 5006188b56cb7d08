// SPDX-License-Identifier: MIT
#include "checks/Ledger.h"

#include <algorithm>
#include <numeric>
#include <ostream>
#include <utility>

#include "accounting/Resources.h"
#include "atoms/Atom.h"
#include "base/Quoted.h"
#include "containers/Containers.h"
#include "errors/Errors.h"

namespace KAPHost {

Ledger::Holder& Ledger::HolderOf(Thing& thing, const char* component) {
  const auto same = [&](const Holder& holder) { return holder.fComponent == component; };
  const auto found = std::find_if(thing.fHolders.begin(), thing.fHolders.end(), same);
  return found != thing.fHolders.end() ? *found : thing.fHolders.emplace_back(Holder{component});
}

long Ledger::References(const Thing& thing) {
  return std::accumulate(thing.fHolders.begin(), thing.fHolders.end(), 0L,
                         [](long sum, const Holder& holder) { return sum + holder.fReferences; });
}

void Ledger::Take(KAPResource resource, const void* address, const char* component,
                  const std::string& what) {
  const Site here = Here();
  const std::lock_guard lock(fMutex);
  const auto [entry, isNew] = fThings.try_emplace(address);
  Thing& thing = entry->second;
  // The table of atoms keeps a text for a while after its last use, and the host for its own uses.
  const bool isReused = resource == KAPResource::kAtom && !isNew && References(thing) <= 0;
  if (isNew || thing.fIsDead || thing.fResource != resource || isReused) {
    thing = Thing{.fResource = resource, .fNumber = ++fLast, .fWhat = what, .fMade = here};
  }
  Holder& holder = HolderOf(thing, component);
  ++holder.fReferences;
  holder.fTaken = here;
}

bool Ledger::Release(const void* address, const char* component) {
  const std::lock_guard lock(fMutex);
  const auto entry = fThings.find(address);
  if (entry == fThings.end() || entry->second.fIsDead) return true;
  --HolderOf(entry->second, component).fReferences;
  return References(entry->second) >= 0;
}

void Ledger::ReleaseIfHeld(const void* address, const char* component) {
  const std::lock_guard lock(fMutex);
  const auto entry = fThings.find(address);
  if (entry == fThings.end() || entry->second.fIsDead) return;
  for (Holder& holder : entry->second.fHolders) {
    if (holder.fComponent == component && holder.fReferences > 0) --holder.fReferences;
  }
}

void Ledger::End(const void* address, const std::string& what, std::shared_ptr<const Stack> stack) {
  Site here = CurrentSite(false);
  here.fStack = std::move(stack);
  const std::lock_guard lock(fMutex);
  const auto entry = fThings.find(address);
  if (entry == fThings.end()) return;
  entry->second.fIsDead = true;
  entry->second.fWhat = what;
  entry->second.fEnded = std::move(here);
  entry->second.fHolders.clear();
}

void Ledger::Forget(const void* address) {
  const std::lock_guard lock(fMutex);
  fThings.erase(address);
}

Ledger::Found Ledger::Find(const void* address) const {
  const std::lock_guard lock(fMutex);
  const auto entry = fThings.find(address);
  if (entry == fThings.end()) return {};
  return {entry->second.fIsDead ? State::kDead : State::kAlive, entry->second.fResource};
}

std::string Ledger::Name(const Thing& thing, const void* address) {
  if (!thing.fWhat.empty()) return thing.fWhat;
  switch (thing.fResource) {
    case KAPResource::kAtom:
      return "atom " + Quoted(static_cast<const KAPStringAtom*>(address)->Text());
    case KAPResource::kError:
      return "error " + Quoted(MessageOf(*static_cast<const KAPError*>(address)));
    case KAPResource::kContainer: {
      const char* const signature = static_cast<const KAPContainer*>(address)->fSignature;
      return signature ? "container " + Quoted(signature) : "container";
    }
    default:
      return TextOf(thing.fResource).fNoun;
  }
}

std::string Ledger::NameOf(const void* address) const {
  const std::lock_guard lock(fMutex);
  const auto entry = fThings.find(address);
  return entry == fThings.end() ? "object" : Name(entry->second, address);
}

// Naming the frames of a stack takes the locks of the loader: without the ledger's.
std::string Ledger::History(const void* address) const {
  Site made;
  Site ended;
  {
    const std::lock_guard lock(fMutex);
    const auto entry = fThings.find(address);
    if (entry == fThings.end()) return "";
    made = entry->second.fMade;
    if (entry->second.fIsDead) ended = entry->second.fEnded;
  }
  std::string text = DescribeSite("made", made);
  if (ended.fCaller) text += DescribeSite("ended", ended);
  return text;
}

std::vector<LiveThing> Ledger::Live(unsigned long since) const {
  std::map<unsigned long, std::pair<LiveThing, Thing>> found;
  {
    const std::lock_guard lock(fMutex);
    for (const auto& [address, thing] : fThings) {
      const long references = References(thing);
      if (thing.fIsDead || thing.fNumber <= since || references <= 0) continue;
      LiveThing live{thing.fNumber, thing.fResource, Name(thing, address), references, "", "", ""};
      found.try_emplace(thing.fNumber, std::move(live), thing);
    }
  }
  std::vector<LiveThing> all;
  for (auto& [number, one] : found) {
    auto& [live, thing] = one;
    live.fMaker = thing.fMade.fCaller ? thing.fMade.fCaller : "host";
    live.fHistory = DescribeSite("made", thing.fMade);
    for (const Holder& holder : thing.fHolders) {
      if (holder.fReferences <= 0) continue;
      live.fHolders += (live.fHolders.empty() ? "" : ", ") + std::string(holder.fComponent);
      const bool isMaking = holder.fTaken.fStack == thing.fMade.fStack &&
                            holder.fTaken.fCaller == thing.fMade.fCaller &&
                            holder.fTaken.fMethod == thing.fMade.fMethod;
      if (!isMaking) live.fHistory += DescribeSite("last taken", holder.fTaken);
    }
    live.fHistory.erase(0, 1);
    all.push_back(std::move(live));
  }
  return all;
}

unsigned long Ledger::Last() const {
  const std::lock_guard lock(fMutex);
  return fLast;
}

std::vector<LiveThing> HeldMore(const std::vector<LiveThing>& before,
                                std::vector<LiveThing> after) {
  std::unordered_map<unsigned long, long> references;
  for (const LiveThing& thing : before) references[thing.fNumber] = thing.fReferences;
  for (LiveThing& thing : after) thing.fReferences -= references[thing.fNumber];
  std::erase_if(after, [](const LiveThing& thing) { return thing.fReferences <= 0; });
  return after;
}

std::ostream& operator<<(std::ostream& out, const LiveThing& thing) {
  out << thing.fName << ": ";
  if (thing.fResource != KAPResource::kBlock) {
    out << thing.fReferences << (thing.fReferences == 1 ? " reference" : " references") << " of ";
  }
  return out << thing.fHolders << '\n' << thing.fHistory << '\n';
}

}  // namespace KAPHost
