// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "kap/KAPInterface.h"
#include "kaphost/Live.h"
#include "sites/Site.h"

namespace KAPHost {

using KAP_T_MT::KAPResource;

// What components hold: each atom, error, container, buffer and block by its address, who made it
// and who took references to it. Built from the calls that the host observes, so that handles need
// no room of their own for it.
//
// References move: a component that returns a handle gives a reference to its caller. So the
// references of a component are those that it took and was given, less those that it released and
// gave away. The sum over all components is exact. Whose the last reference is may be wrong where a
// procedure returns a handle without a reference, as its contract may say.
//
// Thread-safe.
class Ledger {
 public:
  explicit Ledger(bool stacks) : fStacks(stacks) {}
  Ledger(const Ledger&) = delete;
  Ledger& operator=(const Ledger&) = delete;

  // `component` has one reference more to a thing, which is new if the ledger does not know it.
  // `what` describes a thing that does not tell its name itself.
  void Take(KAPResource resource, const void* address, const char* component,
            const std::string& what = {});
  // A component has one reference less. False when components have fewer than none together: the
  // host holds what they release.
  bool Release(const void* address, const char* component);
  // The same if it has any.
  void ReleaseIfHeld(const void* address, const char* component);
  // The thing ends now. `what` describes it in reports: `container "Name"`.
  void End(const void* address, const std::string& what, std::shared_ptr<const Stack> stack);

  // The address means nothing from now on.
  void Forget(const void* address);

  enum class State { kUnknown, kAlive, kDead };
  struct Found {
    State fState = State::kUnknown;
    KAPResource fResource = KAPResource::kNothing;
  };
  Found Find(const void* address) const;

  // `container "Name"`.
  std::string NameOf(const void* address) const;
  // Where it was made and, if it is dead, where it ended, as lines of a report; "" if unknown.
  std::string History(const void* address) const;

  // What is held and was made after the thing of that number, in the order of making.
  std::vector<LiveThing> Live(unsigned long since) const;
  // The number of the thing made last.
  unsigned long Last() const;

  Site Here() const noexcept { return CurrentSite(fStacks); }
  bool HasStacks() const noexcept { return fStacks; }

 private:
  struct Holder {
    const char* fComponent;
    long fReferences = 0;
    Site fTaken = {};  // the last time
  };
  struct Thing {
    KAPResource fResource = KAPResource::kNothing;
    unsigned long fNumber = 0;
    bool fIsDead = false;
    std::string fWhat = {};  // of a block, and once dead
    Site fMade = {};
    Site fEnded = {};
    std::vector<Holder> fHolders = {};
  };

  static Holder& HolderOf(Thing& thing, const char* component);
  static long References(const Thing& thing);
  static std::string Name(const Thing& thing, const void* address);

  const bool fStacks;
  mutable std::mutex fMutex;
  std::unordered_map<const void*, Thing> fThings;
  unsigned long fLast = 0;
};

}  // namespace KAPHost
