// SPDX-License-Identifier: MIT
#include "host/HostCheck.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>

#include "base/Failure.h"
#include "base/Printable.h"
#include "component/Exports.h"
#include "component/Subject.h"
#include "kapcheck/HostPlugin.h"
#include "kapcheck/Probe.h"
#include "kaphost/KAPHost.h"
#include "process/ChildProcess.h"
#include "process/Folder.h"
#include "process/Messages.h"
#include "process/Verdict.h"

namespace KAPCheck {

namespace {

constexpr char kProbeName[] = "kapprobe";
constexpr char kProbeFile[] = "libkapprobe.so";
constexpr char kHostFunction[] = "KAPCheckHost";

// Where the probe is, relative to this program: the installed plug-ins, then the places of a build.
constexpr const char* kProbeFolders[] = {KAP_PLUGIN_FOLDER, "../lib", "."};

// Stands before what a check writes to standard error.
constexpr char kErrorMark = '\x1e';

std::string TextOf(const nlohmann::json& message, const char* key) {
  const auto found = message.find(key);
  return found != message.end() && found->is_string() ? found->get<std::string>() : "";
}

double NumberOf(const nlohmann::json& message, const char* key) {
  const auto found = message.find(key);
  return found != message.end() && found->is_number() ? found->get<double>() : 0;
}

Result ProbeResult(const std::string& reason) {
  Result result;
  result.fName = "probe";
  result.fOutcome = Outcome::kFailed;
  result.fDescription = "The probe runs to its end.";
  result.fReason = reason;
  return result;
}

// Collects the results of one host over all processes.
class HostCheck {
 public:
  HostCheck(const std::string& probe, const std::string& plugin, std::chrono::milliseconds limit)
      : fProbe(probe), fPlugin(plugin), fLimit(limit) {}

  std::vector<Result> Run() {
    while (!fIsOver) RunFrom(fNext);
    CheckBlocks();
    CheckOffer();
    AddAccounting();
    AddOutput();
    return std::move(fResults);
  }

 private:
  void RunFrom(int first) {
    const Folder folder;
    const Ending ending = RunAgain(
        {"kapcheck", "run-probe", fProbe, std::to_string(first), fPlugin}, folder.Path(), fLimit);
    fBegun.reset();
    fGoesOn = false;
    fOutput += ending.fOutput;
    const std::size_t before = fResults.size();
    for (const nlohmann::json& message : ParseMessages(ending.fMessages)) Take(message);
    const std::string end = Misbehaviour(ending, std::chrono::duration<double>(fLimit).count());
    if (fBegun) {
      fBegun->fSeconds = std::max(0.0, ending.fSeconds - fBegunAt);
      Fail(std::move(*fBegun), end.empty() ? "ends the process with status 0" : end);
    } else if (!end.empty() || (!fIsOver && !(fGoesOn && fNext > first))) {
      // A probe that ends between checks, or after the last, has no check to continue with.
      Fail(ProbeResult(""), end.empty() ? "ends the process with status 0" : end);
      fIsOver = true;
    }
    // The process ends with a failed check.
    if (fResults.size() > before && fResults.back().fOutcome == Outcome::kFailed) {
      fResults.back().fErrors = ending.fErrors.substr(ending.fErrors.rfind(kErrorMark) + 1);
    }
  }

  void Take(const nlohmann::json& message) {
    if (message.contains("over")) fIsOver = true;
    if (message.contains("goes on")) fGoesOn = true;
    if (message.contains("accounted")) fIsAccounted = true;
    if (fHeld.empty()) fHeld = TextOf(message, "held");
    if (message.contains("failure")) fResults.push_back(ProbeResult(TextOf(message, "failure")));
    if (!message.contains("check")) return;
    Result result;
    result.fName = TextOf(message, "check");
    result.fDescription = TextOf(message, "contract");
    result.fReason = TextOf(message, "detail");
    result.fProcedure = TextOf(message, "procedure");
    result.fSeconds = NumberOf(message, "seconds");
    const int outcome = static_cast<int>(NumberOf(message, "outcome"));
    if (outcome == kKAPProbeBegins) {
      fNext = static_cast<int>(NumberOf(message, "index")) + 1;
      fBegunAt = result.fSeconds;
      fBegun = std::move(result);
      return;
    }
    fBegun.reset();
    if (outcome == kKAPProbeFailed) result.fOutcome = Outcome::kFailed;
    if (outcome == kKAPProbeNotOffered) result.fOutcome = Outcome::kNotRun;
    if (outcome == kKAPProbeBlocked) result.fOutcome = Outcome::kBlocked;
    fResults.push_back(std::move(result));
  }

  void Fail(Result result, const std::string& reason) {
    result.fOutcome = Outcome::kFailed;
    result.fReason = reason;
    fResults.push_back(std::move(result));
  }

  bool HasFailed(const std::string& reason) const {
    return std::any_of(fResults.begin(), fResults.end(), [&](const Result& result) {
      return result.fOutcome == Outcome::kFailed && !result.fProcedure.empty() &&
             reason.starts_with(result.fProcedure + ' ');
    });
  }

  // A procedure that blocks a check and passes its own fails in a way that only this check sees.
  void CheckBlocks() {
    std::vector<Result*> unexplained;
    for (Result& result : fResults) {
      if (result.fOutcome == Outcome::kBlocked && !HasFailed(result.fReason)) {
        unexplained.push_back(&result);
      }
    }
    for (Result* result : unexplained) result->fOutcome = Outcome::kFailed;
  }

  // A host without interfaces has no faults either.
  void CheckOffer() {
    const bool isHost = std::any_of(fResults.begin(), fResults.end(), [](const Result& result) {
      return result.fOutcome == Outcome::kFailed ||
             (result.fOutcome == Outcome::kPassed && !result.fProcedure.starts_with("KAP, "));
    });
    if (!isHost) fResults.push_back(ProbeResult("the host offers nothing but the binder"));
  }

  void AddAccounting() {
    Result result;
    result.fName = "accounting";
    result.fProcedure = "all interfaces";
    result.fDescription = "What the probe has released, the host no longer holds.";
    if (!fIsAccounted) {
      result.fOutcome = Outcome::kNotRun;
      result.fReason = "what the host holds: only the reference host says so";
    } else if (!fHeld.empty()) {
      result.fOutcome = Outcome::kFailed;
      result.fReason = fHeld;
    }
    fResults.push_back(std::move(result));
  }

  // The standard output of its process is a host's own. The user should know all the same.
  void AddOutput() {
    if (fOutput.empty()) return;
    Result result;
    result.fName = "output";
    result.fDescription =
        "writes to standard output: " +
        PosUtil::Printable(fOutput.substr(0, std::min(fOutput.find('\n'), kLine)));
    fResults.push_back(std::move(result));
  }

  static constexpr std::size_t kLine = 60;

  std::string fProbe, fPlugin;
  std::chrono::milliseconds fLimit;
  int fNext = 0;
  bool fIsOver = false;       // the last check has run
  bool fGoesOn = false;       // they are left to another process
  bool fIsAccounted = false;  // the reference host's accounting is looked at
  std::string fHeld, fOutput;
  std::optional<Result> fBegun;
  double fBegunAt = 0;
  std::vector<Result> fResults;
};

// ---- In the process that runs the checks ----

KAPGetProcAddressProc gReference = nullptr;
bool gUsesReference = false;

// What plug-ins get as the reference host.
void* FindInReference(const char* interfaceName, const char* methodName, const char* procName) {
  gUsesReference = true;
  return gReference(interfaceName, methodName, procName);
}

// Reports the checks that run in this process. A failed check ends the process: its leftovers
// must not fail later checks.
class Reporter {
 public:
  explicit Reporter(KAPHost::Host& reference) : fReference(reference) {}

  static void Report(void* context, const KAPProbeResult* result) {
    static_cast<Reporter*>(context)->Take(*result);
  }

 private:
  void Take(const KAPProbeResult& result) {
    const double now = Seconds(fStart);
    const bool begins = result.fOutcome == kKAPProbeBegins;
    if (begins) {
      fBegun = now;
      std::cerr << kErrorMark << std::flush;
    }
    Send({{"index", result.fIndex},
          {"check", result.fCheck},
          {"procedure", std::string(result.fInterface) + ", " + result.fMethod},
          {"contract", result.fContract},
          {"outcome", result.fOutcome},
          {"detail", result.fDetail},
          {"seconds", begins ? now : now - fBegun}});
    if (result.fOutcome == kKAPProbeFailed) {
      Send({{"goes on", true}});
      ::_exit(0);
    }
    // A blocked check may not have released everything.
    if (result.fOutcome == kKAPProbeBlocked) fIsClean = false;
    if (!begins) LookAtAccounting(result.fCheck);
  }

  // The reference host knows what is still held when a check has released all.
  void LookAtAccounting(const char* check) {
    if (!gUsesReference || !fIsClean) return;
    const KAPHost::Snapshot held = fReference.TakeSnapshot();
    fIsClean = held.IsEmpty();
    if (fIsClean) return Send({{"accounted", true}});
    std::string text = held.Describe();
    while (!text.empty() && text.back() == '\n') text.pop_back();
    Send({{"accounted", true}, {"held", std::string("still held after ") + check + ": " + text}});
  }

  using Clock = std::chrono::steady_clock;
  static double Seconds(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
  }

  KAPHost::Host& fReference;
  const Clock::time_point fStart = Clock::now();
  double fBegun = 0;
  bool fIsClean = true;
};

KAPGetProcAddressProc HostOf(const std::string& plugin) {
  if (plugin.empty()) return &FindInReference;
  void* const library = ::dlopen(plugin.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) throw TestFailure(std::string("the host cannot be loaded: ") + ::dlerror());
  const auto make = reinterpret_cast<KAPCheckHostProc>(::dlsym(library, kHostFunction));
  if (!make) throw TestFailure(plugin + " does not export " + kHostFunction);
  const KAPGetProcAddressProc host = make(&FindInReference);
  if (!host) throw TestFailure(std::string(kHostFunction) + " returns null");
  return host;
}

void RunAll(const std::string& path, const std::string& plugin, int first) {
  KAPHost::HostOptions options;
  options.fOnLeak = [](const KAPHost::Snapshot&) {};
  KAPHost::Host reference(options);
  gReference = reference.GetProcAddress();
  const KAPGetProcAddressProc host = HostOf(plugin);
  const Subject probe(path, kProbeName);
  if (!probe.Initialize(host)) throw TestFailure("the host cannot register the probe's procedure");
  constexpr auto entry = KAPProbeInterface::kEntries[0];
  const auto run = reinterpret_cast<KAPProbeInterface::Proc<"Run">>(
      host(KAPProbeInterface::kName, entry.fMethodName, entry.fProcName));
  if (!run) throw TestFailure("the host does not find the probe's procedure");
  Reporter reporter(reference);
  run(first, &Reporter::Report, &reporter);
  probe.Terminate();
}

// The library must export the function.
void MustExport(const std::string& path, const std::string& function) {
  const std::vector<std::string> exports = ExportsOf(path);
  if (std::binary_search(exports.begin(), exports.end(), function)) return;
  throw PosUtil::Failure(path + ": does not export " + function);
}

}  // namespace

Results CheckHost(const std::string& probe, const std::string& plugin,
                  std::chrono::milliseconds limit) {
  MustExport(probe, std::string(kProbeName) + "Initialize");
  Results results;
  results.fSubject = "the reference host";
  if (!plugin.empty()) {
    MustExport(plugin, kHostFunction);
    results.fSubject = std::filesystem::path(plugin).filename().string();
  }
  results.fNotRun = "not offered";
  results.fResults = HostCheck(probe, plugin, limit).Run();
  return results;
}

void RunProbe(const std::string& probe, const std::string& plugin, int first) {
  try {
    RunAll(probe, plugin, first);
  } catch (const std::exception& error) {
    Send({{"failure", error.what()}});
  }
  Send({{"over", true}});
  ::_exit(0);
}

std::string LocateProbe() {
  std::error_code error;
  const std::filesystem::path folder =
      std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  for (const char* const place : kProbeFolders) {
    const auto candidate = (folder / place / kProbeFile).lexically_normal();
    if (::access(candidate.c_str(), R_OK) == 0) return candidate.string();
  }
  throw PosUtil::Failure(std::string("there is no ") + kProbeFile + "; use --probe");
}

}  // namespace KAPCheck
