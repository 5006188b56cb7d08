// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>

#include "report/Results.h"

namespace KAPCheck {

// Runs the probe against a host, in a process of its own; after a failed check, a crash or the time
// limit, which holds for each check, the checks that are left run in another one. `plugin` is the
// path of the host's plug-in (kapcheck/HostPlugin.h), "" for the reference host. Throws
// PosUtil::Failure when the probe or the plug-in is not a library or does not export what it must.
Results CheckHost(const std::string& probe, const std::string& plugin,
                  std::chrono::milliseconds limit);

// Runs the checks from number `first` on in this process and sends the results. Does not return.
[[noreturn]] void RunProbe(const std::string& probe, const std::string& plugin, int first);

// The path of the probe: the installed one or that of a build. Throws PosUtil::Failure when there
// is none.
std::string LocateProbe();

}  // namespace KAPCheck
