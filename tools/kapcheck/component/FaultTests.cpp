// SPDX-License-Identifier: MIT
#include <functional>

#include "component/ComponentTests.h"
#include "kap/KAPHostInterfaces.h"

// Hosts that lack something or fail. Whether the component can do without it is its own affair: it
// must survive, leave nothing, and initialise as soon as the host works again.

namespace KAPCheck {

namespace {

using namespace KAP_T_MT;
using Expected = Trial::Expected;

// Returns whether a call of the host has failed.
bool StopFaults(Trial& trial) {
  const bool hasFailed = trial.Host().Fired();
  trial.Host().StopFaults();
  trial.Host().TakeReports();
  return hasFailed;
}

std::string FailedCall(Trial& trial) {
  const std::string call = trial.Tap().TakeFailed();
  return call.empty() ? "" : " (" + call + ")";
}

// Initialises and terminates while the host fails, then once more without a fault. Returns whether
// a call of the host failed.
bool Endure(Trial& trial, const std::string& how, const std::function<void()>& inject,
            Expected expected = Expected::kNothing) {
  trial.Step("initialises " + how);
  const Remains before = trial.TakeRemains();
  inject();
  trial.Initialize();
  trial.Step("terminates " + how);
  trial.Terminate();
  const bool hasFailed = StopFaults(trial);
  const std::string when = "after an initialisation " + how + FailedCall(trial);
  trial.ExpectNoMore(before, when, expected);
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

// Calls use(how, inject) for the nth call failing, alone and with all later calls, until it returns
// that no call has failed.
void FailEach(Trial& trial, const std::function<bool(const std::string&, const Inject&)>& use) {
  for (const bool andLater : {false, true}) {
    const std::string which = andLater ? " and all later ones failing" : " failing";
    bool hasFailed = true;
    for (unsigned long n = 1; hasFailed; ++n) {
      hasFailed = use("with host call " + std::to_string(n) + which, [&] {
        andLater ? trial.Host().FailFrom(KAPFault::kAny, n)
                 : trial.Host().FailCall(KAPFault::kAny, n);
      });
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
  trial.TryPlainly();
  KAPHostInterfaceSet::ForEach([&]<class Interface>() {
    // Without the binder's procedures, nothing can be unregistered.
    const bool isBinder = std::is_same_v<Interface, KAPBinderInterface>;
    Endure(
        trial, std::string("without ") + Interface::kName,
        [&] { trial.Host().HideInterface(Interface::kName); },
        isBinder ? Expected::kNothingHeld : Expected::kNothing);
  });
}

void CheckMissingProcedures(Trial& trial) {
  trial.Load();
  trial.TryPlainly();
  ForEachProcedure([&](const char* interfaceName, const char* method, const KAPTraits& traits) {
    // What can be taken but not released without the procedure is not the component's fault.
    Expected expected = traits.fNoOpUnbound ? Expected::kNothingRegistered : Expected::kNothing;
    if (method == std::string("KAPUnregisterInterface")) expected = Expected::kNothingHeld;
    Endure(
        trial, std::string("without ") + interfaceName + ", " + method,
        [&] { trial.Host().HideProcedure(interfaceName, method); }, expected);
  });
}

void CheckRefusedCalls(Trial& trial) {
  trial.Load();
  trial.TryPlainly();
  FailEach(trial, [&](const std::string& how, const Inject& inject) {
    return Endure(trial, how, inject);
  });
}

void CheckRefusedRegistrations(Trial& trial) {
  trial.Load();
  trial.TryPlainly();
  const std::vector<ProcNames> all = trial.Tap().Registrations();
  for (const ProcNames& names : std::set<ProcNames>(all.begin(), all.end())) {
    const std::string how = "when it cannot register " + names.fInterface + ", " + names.fMethod;
    trial.Step("initialises " + how);
    const Remains before = trial.TakeRemains();
    trial.Host().FailRegistration(names.fInterface.c_str(), names.fMethod.c_str());
    if (trial.Initialize()) throw TestFailure(trial.About().fName + "Initialize succeeds " + how);
    trial.Terminate();
    StopFaults(trial);
    trial.ExpectNoMore(before, "after an initialisation " + how);
    trial.MustInitialize("after an initialisation " + how);
    trial.Terminate();
  }
}

void CheckScenarioWithRefusedCalls(Trial& trial) {
  trial.Load();
  trial.TryPlainly();
  FailEach(trial, [&](const std::string& how, const Inject& inject) {
    const Remains before = trial.TakeRemains();
    trial.MustInitialize();
    trial.Step("runs the scenario " + how);
    inject();
    trial.RunScenario();
    const bool hasFailed = StopFaults(trial);
    const std::string when = "after a scenario " + how + FailedCall(trial);
    trial.MustRunScenario(when);
    trial.Terminate();
    trial.ExpectNoMore(before, when);
    return hasFailed;
  });
}

}  // namespace KAPCheck
