// SPDX-License-Identifier: MIT
// A program with a class of its own around the host, and a plug-in for kapcheck: quiet with the
// flags of the module kaphost alone.

#include <memory>

#include "kapcheck/HostPlugin.h"
#include "kapcheck/Probe.h"
#include "kapcheck/Scenario.h"
#include "kaphost/KAPHost.h"

struct Application {
  KAPHost::Host fHost;
  std::unique_ptr<KAPHost::Component> fComponent;
};

int Run(Application& application);
int Run(Application& application) { return application.fComponent->Version(); }

KAP_CHECK_EXPORT int KAPCheckScenario(KAPGetProcAddressProc getProc) { return getProc != nullptr; }
KAP_CHECK_DECLARE(KAPProbeInterface)
