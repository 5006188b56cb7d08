// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "component/HostTap.h"
#include "component/ScenarioPlugin.h"
#include "component/Subject.h"
#include "kaphost/KAPHost.h"
#include "process/Messages.h"

namespace KAPCheck {

// What the tests of a component are about.
struct Target {
  std::string fPath;      // of the library
  std::string fName;      // of the component
  std::string fScenario;  // the path of the plug-in; "" for none
  unsigned long fSeed = 1;
};

// What of a component stays after its termination.
struct Remains {
  KAPHost::Snapshot fHeld;
  std::set<ProcNames> fRegistered;
};

// One test at work, in a process of its own: a host, the component, and what a test does with them.
// Members that find a fault throw TestFailure.
class Trial {
 public:
  // The component is not loaded yet.
  explicit Trial(const Target& target, bool withChecks = false);

  const Target& About() const { return fTarget; }
  KAPHost::Host& Host() { return fHost; }
  HostTap& Tap() { return fTap; }
  const ScenarioPlugin* Scenario() const { return fScenario ? &*fScenario : nullptr; }

  Subject& Load() { return fSubject.emplace(fTarget.fPath, fTarget.fName); }
  void Unload() { fSubject.reset(); }

  void Step(const std::string& step) { SendStep(step); }
  bool Initialize();
  // Throws TestFailure if the component does not initialise.
  void MustInitialize(const std::string& when = "");
  void Terminate();
  // Whether all of the scenario, which there is, succeeds.
  bool RunScenario();
  // Runs the scenario, if there is one. Throws TestFailure if it does not succeed.
  void MustRunScenario(const std::string& when = "");

  Remains TakeRemains() const;
  // Makes PlainRemains known. A sweep calls it before it makes the host fail.
  void TryPlainly() { PlainRemains(); }
  // Throws TestFailure if more remains than `before` and than plain use of the component leaves,
  // which other tests are about. `when` is a phrase such as "after two initialisations".
  enum class Expected { kNothing, kNothingHeld, kNothingRegistered };
  void ExpectNoMore(const Remains& before, const std::string& when,
                    Expected expected = Expected::kNothing);

 private:
  // What initialising and terminating leave each time.
  const Remains& PlainRemains();

  Target fTarget;
  KAPHost::Host fHost;
  HostTap fTap;
  std::optional<ScenarioPlugin> fScenario;
  std::optional<Subject> fSubject;
  std::optional<Remains> fPlain;
};

// Whether there is more of some resource than `allowed`. What was released once too often counts
// below zero; that is for the test of dead handles, not for those of leaks.
bool IsMore(const KAPHost::Snapshot& held, const KAPHost::Snapshot& allowed = {});

[[noreturn]] void ThrowHeld(const KAPHost::Snapshot& held, const std::string& when);
[[noreturn]] void ThrowRegistered(const std::set<ProcNames>& registered, const std::string& when);

}  // namespace KAPCheck
