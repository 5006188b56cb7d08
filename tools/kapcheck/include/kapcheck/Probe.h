// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

// The interface of the probe, libkapprobe.so: a component that checks the host that loads it. Any
// host can run it:
//
//   1. Load the library and call kapprobeInitialize with the callback for components.
//   2. Look up "KAPProbeInterface", "Run", "KAPProbeRunProc", and call it.
//   3. Call kapprobeTerminate.

// What became of a check.
enum KAPProbeOutcome : int {
  kKAPProbePassed = 0,
  kKAPProbeFailed = 1,      // the host breaks the contract
  kKAPProbeNotOffered = 2,  // the host lacks a procedure that the check needs
  kKAPProbeBegins = 3,      // the check is about to run
  kKAPProbeBlocked = 4,     // another procedure, which the check needs, does not do its part
};

// The strings live until the probe is terminated, except `fDetail`, which lives during the call.
struct KAPProbeResult {
  int fIndex;              // the number of the check, from 0
  const char* fCheck;      // its name, such as "atoms.interned"
  const char* fInterface;  // the procedure that it is about: its interface
  const char* fMethod;     // and its method
  const char* fContract;   // the sentence of the procedure's contract that it checks
  int fOutcome;            // a KAPProbeOutcome
  // What the host did instead, or what it lacks, or which procedure blocks the check; else "".
  const char* fDetail;
};

// Receives the outcome of a check, and the `context` that was passed to "Run".
using KAPProbeReportProc = void (*)(void* context, const KAPProbeResult* result);

// The one interface of the probe.
struct [[gnu::visibility("hidden")]] KAPProbeInterface
    : KAP_T_MT::TKAPInterface<
          "KAPProbeInterface",
          // Runs the checks from number `first` on, and calls `report` twice for each: before it
          // begins, and with its outcome. A host that crashes in a check thus knows where to go on
          // in another process. The leftovers of a failed check may fail later checks, so a
          // host that wants exact results goes on in another process then, too. Returns the number
          // of checks that failed. Failure: -1 when `report` is null. [binding thread]
          KAP_T_MT::TKAPMethod<"Run", "KAPProbeRunProc",
                               int(int first, KAPProbeReportProc report, void* context)>>{};
