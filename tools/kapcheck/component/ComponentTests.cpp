// SPDX-License-Identifier: MIT
#include "component/ComponentTests.h"

namespace KAPCheck {

namespace {

constexpr ComponentTest kTests[] = {
    {"exports", "exports exactly the three entry points of its name", Needs::kNothing,
     &CheckExports},
    {"load", "can be loaded and unloaded 100 times", Needs::kNothing, &CheckLoading},
    {"initialise", "can be initialised, terminated and initialised again", Needs::kLoading,
     &CheckInitialising},
    {"output", "writes nothing to standard output in any of the tests", Needs::kInitialising,
     &CheckOutput},
    {"cycles", "can be loaded, initialised, used, terminated and unloaded 100 times",
     Needs::kInitialising, &CheckCycles},
    {"initialise-twice", "survives a second initialisation", Needs::kInitialising,
     &CheckTwoInitialisations},
    {"terminate-twice", "survives a termination out of turn", Needs::kInitialising,
     &CheckTwoTerminations},
    {"leaks", "releases all that it takes of the host", Needs::kInitialising, &CheckLeaks},
    {"registrations", "unregisters all that it registers", Needs::kInitialising,
     &CheckRegistrations},
    {"dead-handles", "uses no handle after its last release", Needs::kInitialising,
     &CheckDeadHandles, Watch::kMisuseWithStacks},
    {"after-termination", "calls nothing of the host after its termination", Needs::kInitialising,
     &CheckHostCallsAfterTermination},
    {"exit", "calls nothing of the host when the process exits without a termination",
     Needs::kInitialising, &CheckExit},
    {"threads", "leaves no thread and no process running", Needs::kInitialising, &CheckThreads,
     Watch::kCalls, true},
    {"process-state", "leaves open files, signals, locale, environment and folder as they were",
     Needs::kInitialising, &CheckProcessState},
    {"exceptions", "throws nothing across the boundary, without a host or with a failing one",
     Needs::kInitialising, &CheckExceptions},
    {"missing-interfaces", "survives a host without each of the interfaces", Needs::kInitialising,
     &CheckMissingInterfaces, Watch::kMisuse},
    {"missing-procedures", "survives a host without each of the procedures", Needs::kInitialising,
     &CheckMissingProcedures, Watch::kMisuse},
    {"refused-calls", "survives each failing host call and look-up of its initialisation",
     Needs::kInitialising, &CheckFailingCalls, Watch::kMisuse},
    {"refused-registrations", "fails to initialise when it cannot register a procedure",
     Needs::kInitialising, &CheckFailingRegistrations, Watch::kMisuse},
    {"counter", "looks procedures up again when the unregister counter moves", Needs::kInitialising,
     &CheckCounter},
    {"scenario", "the scenario succeeds, again and again", Needs::kScenario, &CheckScenario},
    {"refused-scenario", "survives each failing host call and look-up of the scenario",
     Needs::kGoodScenario, &CheckScenarioWithFailingCalls, Watch::kMisuse},
    {"random-calls", "survives random calls of its declared interfaces", Needs::kDeclarations,
     &CheckRandomCalls, Watch::kMisuse},
    {"concurrent-calls", "survives calls of its declared interfaces on several threads",
     Needs::kDeclarations, &CheckConcurrentCalls},
    {"late-calls", "survives calls of its declared interfaces after its termination",
     Needs::kDeclarations, &CheckCallsAfterTermination},
};

}  // namespace

std::span<const ComponentTest> ComponentTests() { return kTests; }

const ComponentTest* FindComponentTest(const std::string& name) {
  for (const ComponentTest& test : kTests) {
    if (test.fName == name) return &test;
  }
  return nullptr;
}

}  // namespace KAPCheck
