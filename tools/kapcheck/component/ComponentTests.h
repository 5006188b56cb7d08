// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>

#include "component/Trial.h"

namespace KAPCheck {

// What a test needs before it makes sense to run it.
enum class Needs {
  kNothing,
  kLoading,       // the test "load" passes
  kInitialising,  // the test "initialise" passes
  kScenario,      // and there is a scenario
  kGoodScenario,  // and the test "scenario" passes
  kDeclarations,  // and there are declared interfaces; a scenario, if any, passes
};

// One property that every component should have. Throws TestFailure when the component does not
// have it. Tests look at one property each, so that a fault has one name.
struct ComponentTest {
  const char* fName;
  const char* fDescription;
  Needs fNeeds;
  void (*fRun)(Trial& trial);
  Watch fWatch = Watch::kCalls;
  bool fWatchesProcesses = false;  // leaving a process running is a failure
};

// All tests, in the order in which they run.
std::span<const ComponentTest> ComponentTests();
// Null when there is none of the name.
const ComponentTest* FindComponentTest(const std::string& name);

// The properties, by file.

void CheckExports(Trial& trial);
void CheckLoading(Trial& trial);
void CheckInitialising(Trial& trial);
void CheckCycles(Trial& trial);
void CheckTwoInitialisations(Trial& trial);
void CheckTwoTerminations(Trial& trial);
void CheckOutput(Trial& trial);

void CheckLeaks(Trial& trial);
void CheckRegistrations(Trial& trial);
void CheckDeadHandles(Trial& trial);
void CheckHostCallsAfterTermination(Trial& trial);
void CheckCallsAfterTermination(Trial& trial);
void CheckExit(Trial& trial);
void CheckThreads(Trial& trial);
void CheckProcessState(Trial& trial);

void CheckExceptions(Trial& trial);
void CheckMissingInterfaces(Trial& trial);
void CheckMissingProcedures(Trial& trial);
void CheckFailingCalls(Trial& trial);
void CheckFailingRegistrations(Trial& trial);
void CheckScenarioWithFailingCalls(Trial& trial);

void CheckScenario(Trial& trial);
void CheckCounter(Trial& trial);
void CheckRandomCalls(Trial& trial);
void CheckConcurrentCalls(Trial& trial);

}  // namespace KAPCheck
