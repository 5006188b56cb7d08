// SPDX-License-Identifier: MIT
#include <functional>

#include "component/ComponentTests.h"
#include "kap/KAPHostInterfaces.h"

// Hosts that lack something or fail. Whether the component can do without it is its own decision:
// it must survive, leave nothing, and initialise as soon as the host works again.

namespace KAPCheck {

namespace {

using namespace KAP_T_MT;
using Expected = Trial::Expected;

// Returns whether a call of the host or a look-up has failed. Throws TestFailure if a handle was
// misused.
bool StopFaults(Trial& trial, const std::string& when) {
  const bool hasFailed = trial.Host().Fired();
  trial.Host().StopFaults();
  const bool hasLookUpFailed = trial.Tap().StopLookUpFaults();
  trial.ExpectNoMisuse(when);
  return hasFailed || hasLookUpFailed;
}

std::string FailedCall(Trial& trial) {
  const std::string call = trial.Tap().TakeFailed();
  return call.empty() ? "" : " (" + call + ")";
}

enum class Use { kNone, kScenario };

// Initialises, perhaps uses and terminates while the host fails, then once more without a fault.
// Returns whether something of the host failed.
bool TryWith(Trial& trial, const std::string& how, const std::function<void()>& inject, Use use,
             Expected expected = Expected::kNothing) {
  trial.Step("initialises " + how);
  const Remains before = trial.TakeRemains();
  inject();
  if (trial.Initialize() && use == Use::kScenario && trial.HasScenario()) {
    trial.Step("runs the scenario " + how);
    trial.RunScenario();
  }
  trial.Step("terminates " + how);
  trial.Terminate();
  const std::string when = "after an initialisation " + how + FailedCall(trial);
  const bool hasFailed = StopFaults(trial, when);
  trial.ExpectNoMore(before, when, expected);
  trial.Step("initialises " + when);
  trial.MustInitialize(when);
  trial.Terminate();
  return hasFailed;
}

// Calls visit(interface, method, traits) for each procedure of the host.
template <class Visitor>
void ForEachProcedure(Visitor visit) {
  KAPHostInterfaceSet::ForEach([&]<class Interface>() {
    for (std::size_t slot = 0; slot < Interface::kCount; ++slot) {
      visit(Interface::kName, Interface::kEntries[slot].fMethodName, Interface::kTraits[slot]);
    }
  });
}

void* NoProcedure(const char*, const char*, const char*) { return nullptr; }

using Inject = std::function<void()>;

// Something of a host that fails.
struct Fault {
  const char* fWhat;
  Expected fExpected;
  void (*fInject)(Trial& trial, unsigned long n, bool andLater);
};

void FailCall(Trial& trial, unsigned long n, bool andLater) {
  andLater ? trial.Host().FailFrom(KAPFault::kAny, n) : trial.Host().FailCall(KAPFault::kAny, n);
}
void FailLookUp(Trial& trial, unsigned long n, bool andLater) {
  trial.Tap().FailLookUp(n, andLater);
}

constexpr Fault kFaults[] = {
    {"host call", Expected::kNothing, &FailCall},
    // Without a procedure that releases, nothing can be released.
    {"look-up", Expected::kAnything, &FailLookUp},
};

// Calls use(how, inject, expected) for the nth call or look-up failing, alone and with all later
// ones, until it returns that none has failed.
template <class Body>
void FailEach(Trial& trial, Body use) {
  for (const Fault& fault : kFaults) {
    for (const bool andLater : {false, true}) {
      const std::string which = andLater ? " and all later ones failing" : " failing";
      bool hasFailed = true;
      for (unsigned long n = 1; hasFailed; ++n) {
        const std::string how = std::string("with ") + fault.fWhat + ' ' + std::to_string(n);
        hasFailed = use(
            how + which, [&] { fault.fInject(trial, n, andLater); }, fault.fExpected);
      }
    }
  }
}

}  // namespace

void CheckExceptions(Trial& trial) {
  const Subject& subject = trial.Load();
  trial.Step("initialises without a callback");
  if (subject.Initialize(nullptr)) throw TestFailure("initialises without a callback");
  trial.Terminate();
  trial.Step("initialises with a host that has nothing");
  subject.Initialize(&NoProcedure);
  trial.Terminate();
  trial.Step("initialises with a host whose calls all fail");
  trial.Host().FailFrom(KAPFault::kAny, 1);
  trial.Initialize();
  trial.Terminate();
  trial.Host().StopFaults();
  trial.MustInitialize("after a host without anything");
  trial.Terminate();
}

void CheckMissingInterfaces(Trial& trial) {
  trial.Load();
  trial.TryPlainly(1);
  KAPHostInterfaceSet::ForEach([&]<class Interface>() {
    // Without the binder's procedures, nothing can be unregistered.
    const bool isBinder = std::is_same_v<Interface, KAPBinderInterface>;
    TryWith(
        trial, std::string("without ") + Interface::kName,
        [&] { trial.Host().HideInterface(Interface::kName); }, Use::kScenario,
        isBinder ? Expected::kNothingHeld : Expected::kNothing);
  });
}

void CheckMissingProcedures(Trial& trial) {
  trial.Load();
  trial.TryPlainly(1);
  ForEachProcedure([&](const char* interfaceName, const char* method, const KAPTraits& traits) {
    // What can be taken but not released without the procedure is not the component's fault.
    Expected expected = traits.fNoOpUnbound ? Expected::kNothingRegistered : Expected::kNothing;
    if (method == std::string("KAPUnregisterInterface")) expected = Expected::kNothingHeld;
    TryWith(
        trial, std::string("without ") + interfaceName + ", " + method,
        [&] { trial.Host().HideProcedure(interfaceName, method); }, Use::kScenario, expected);
  });
}

void CheckFailingCalls(Trial& trial) {
  trial.Load();
  trial.TryPlainly();
  FailEach(trial, [&](const std::string& how, const Inject& inject, Expected expected) {
    return TryWith(trial, how, inject, Use::kNone, expected);
  });
}

void CheckFailingRegistrations(Trial& trial) {
  trial.Load();
  trial.TryPlainly();
  for (const ProcNames& names : trial.Tap().Registrations()) {
    const std::string how = "when it cannot register " + names.fInterface + ", " + names.fMethod;
    trial.Step("initialises " + how);
    const Remains before = trial.TakeRemains();
    trial.Host().FailRegistration(names.fInterface.c_str(), names.fMethod.c_str());
    if (trial.Initialize()) throw TestFailure(trial.About().fName + "Initialize succeeds " + how);
    trial.Terminate();
    const std::string when = "after an initialisation " + how;
    StopFaults(trial, when);
    trial.ExpectNoMore(before, when);
    trial.MustInitialize(when);
    trial.Terminate();
  }
}

void CheckScenarioWithFailingCalls(Trial& trial) {
  trial.Load();
  trial.TryPlainly(2);
  FailEach(trial, [&](const std::string& how, const Inject& inject, Expected expected) {
    const Remains before = trial.TakeRemains();
    trial.MustInitialize();
    trial.Step("runs the scenario " + how);
    inject();
    trial.RunScenario();
    const std::string when = "after a scenario " + how + FailedCall(trial);
    const bool hasFailed = StopFaults(trial, when);
    trial.MustRunScenario(when);
    trial.Terminate();
    trial.ExpectNoMore(before, when, expected);
    return hasFailed;
  });
}

}  // namespace KAPCheck
