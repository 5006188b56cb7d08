// SPDX-License-Identifier: MIT
#include "kapcheck/Probe.h"

#include "probe/Checks.h"
#include "probe/Services.h"

// The component: three entry points and the one procedure that runs the checks.

namespace KAPProbe {

namespace {

KAPProbeOutcome Try(const Check& check, std::string& detail) {
  try {
    SetSubject(check.fInterface, check.fMethod);
    check.fRun();
    return kKAPProbePassed;
  } catch (const NotOffered& missing) {
    detail = missing.what();
    return kKAPProbeNotOffered;
  } catch (const Blocked& blocked) {
    detail = blocked.what();
    return kKAPProbeBlocked;
  } catch (const std::exception& error) {  // Broken, or what the host throws
    detail = error.what();
  } catch (...) {
    detail = "an exception leaves a procedure of the host";
  }
  return kKAPProbeFailed;
}

// A check that leaves the host without one of its procedures fails as well.
KAPProbeOutcome TryAndLook(const Check& check, std::string& detail) {
  const KAPProbeOutcome outcome = Try(check, detail);
  if (outcome == kKAPProbeFailed) return outcome;
  const std::string missing = MissingProcedure();
  if (missing.empty()) return outcome;
  detail = "the host no longer finds " + missing;
  return kKAPProbeFailed;
}

int Run(int first, KAPProbeReportProc report, void* context) {
  const std::vector<Check> checks = AllChecks();
  int failed = 0;
  for (int i = std::max(first, 0); i < static_cast<int>(checks.size()); ++i) {
    const Check& check = checks[static_cast<std::size_t>(i)];
    KAPProbeResult result{
        i, check.fName, check.fInterface, check.fMethod, check.fContract, kKAPProbeBegins, ""};
    report(context, &result);
    std::string detail;
    result.fOutcome = TryAndLook(check, detail);
    result.fDetail = detail.c_str();
    report(context, &result);
    failed += result.fOutcome == kKAPProbeFailed;
  }
  return failed;
}

int RunProc(int first, KAPProbeReportProc report, void* context) noexcept {
  if (!report) return -1;
  try {
    return Run(first, report, context);
  } catch (...) {  // no memory for a text
    return -1;
  }
}

// Null procedures do without: the host may lack any of them.
template <TKAPName Method, class... Args>
int CallBinder(Args... args) {
  constexpr auto entry = KAPBinderInterface::kEntries[KAPBinderInterface::kSlot<Method>];
  const auto proc = reinterpret_cast<KAPBinderInterface::Proc<Method>>(
      Find(KAPBinderInterface::kName, entry.fMethodName, entry.fProcName));
  if (!proc) return 0;
  if constexpr (std::is_void_v<decltype(proc(args...))>) {
    proc(args...);
    return 1;
  } else {
    return proc(args...);
  }
}

bool gIsInitialised = false;

}  // namespace

}  // namespace KAPProbe

extern "C" {

[[gnu::visibility("default")]] int kapprobeInitialize(KAPGetProcAddressProc getProcAddress) {
  using namespace KAPProbe;
  if (gIsInitialised || !getProcAddress) return 0;
  SetHost(getProcAddress);
  const auto entries = KAPProbeInterface::Registration(&RunProc);
  gIsInitialised =
      CallBinder<"KAPRegisterProcAddress">(KAPProbeInterface::kName, entries[0].fMethodName,
                                           entries[0].fProcName, entries[0].fProc) != 0;
  return gIsInitialised;
}

[[gnu::visibility("default")]] void kapprobeTerminate() {
  using namespace KAPProbe;
  if (gIsInitialised) CallBinder<"KAPUnregisterInterface">(KAPProbeInterface::kName);
  gIsInitialised = false;
  SetHost(nullptr);
}

[[gnu::visibility("default")]] int kapprobeGetVersion() { return 1; }

}  // extern "C"
