// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "component/HostTap.h"
#include "component/ScenarioPlugin.h"
#include "component/Subject.h"
#include "component/Target.h"
#include "kaphost/KAPHost.h"

namespace KAPCheck {

// What of a component stays after its termination.
struct Remains {
  KAPHost::Snapshot fHeld;
  std::set<ProcNames> fRegistered;
};

// How the host and kapcheck watch the component.
enum class Watch {
  kCalls,            // through a tap
  kMisuse,           // and the host checks handles
  kMisuseWithStacks  // no tap, which would be the caller in all reports
};

// One test at work, in a process of its own: a host, the component, and what a test does with them.
// Members that find a fault throw TestFailure.
class Trial {
 public:
  // The component is not loaded yet.
  explicit Trial(const Target& target, Watch watch = Watch::kCalls);

  const Target& About() const { return fTarget; }
  KAPHost::Host& Host() { return fHost; }
  // Not with Watch::kMisuseWithStacks.
  HostTap& Tap() { return *fTap; }
  const ScenarioPlugin* Scenario() const { return fScenario ? &*fScenario : nullptr; }
  bool HasScenario() const { return fScenario && fScenario->CanRun(); }

  Subject& Load();
  void Unload();
  // Waits for threads to end that the component is ending. Returns how many more there are than
  // when it was loaded. Unloading a component crashes if its threads run.
  std::ptrdiff_t LeftThreads() const;

  void Step(const std::string& step);
  bool Initialize();
  // Throws TestFailure if the component does not initialise.
  void MustInitialize(const std::string& when = "");
  void Terminate();
  // Whether all of the scenario, which there is, succeeds. Throws TestFailure if an exception of
  // the component gets into it.
  bool RunScenario();
  // Runs the scenario, if there is one. Throws TestFailure if it does not succeed.
  void MustRunScenario(const std::string& when = "");

  Remains TakeRemains() const;
  // Uses the component without a fault and remembers what that leaves, which other tests are about:
  // initialises it, runs the scenario some times, terminates it.
  void TryPlainly(int scenarioRuns = 0);
  // Throws TestFailure if more remains than `before` and than TryPlainly left. `when` is a phrase
  // such as "after two initialisations".
  enum class Expected { kNothing, kNothingHeld, kNothingRegistered, kAnything };
  void ExpectNoMore(const Remains& before, const std::string& when,
                    Expected expected = Expected::kNothing);

  // The host's reports about misuse since the last call.
  std::vector<std::string> TakeMisuse();
  // Throws TestFailure if there is misuse that TryPlainly did not show.
  void ExpectNoMisuse(const std::string& when);

 private:
  Target fTarget;
  KAPHost::Host fHost;
  std::optional<HostTap> fTap;
  std::optional<ScenarioPlugin> fScenario;
  std::optional<Subject> fSubject;
  std::ptrdiff_t fThreads = 0;  // when the component was loaded
  Remains fPlain;
  std::set<std::string> fPlainMisuse;  // first lines
};

// The threads of this process.
std::ptrdiff_t CountThreads();
// Returns how many more there are, after it has waited for them to end.
std::ptrdiff_t ThreadsBeyond(std::ptrdiff_t expected);

// Whether there is more of some resource than `allowed`. What was released once too often counts
// below zero and does not make up for what is held: that is for the test of dead handles.
bool IsMore(const KAPHost::Snapshot& held, const KAPHost::Snapshot& allowed = {});

[[noreturn]] void ThrowHeld(const KAPHost::Snapshot& held, const std::string& when);
[[noreturn]] void ThrowRegistered(const std::set<ProcNames>& registered, const std::string& when);

}  // namespace KAPCheck
