// SPDX-License-Identifier: MIT
#include "host/HostCheck.h"

#include <dlfcn.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "base/Failure.h"
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

// Where the probe is, relative to this program: the installed plug-ins, then the places of a build.
constexpr const char* kProbeFolders[] = {KAP_PLUGIN_FOLDER, "../lib", "."};

// Collects the results of one host over all processes.
class HostCheck {
 public:
  HostCheck(const std::string& probe, const std::string& plugin, std::chrono::milliseconds limit)
      : fProbe(probe), fPlugin(plugin), fLimit(limit) {}

  std::vector<Result> Run() {
    while (!fIsOver) RunFrom(fNext);
    return std::move(fResults);
  }

 private:
  void RunFrom(int first) {
    const Folder folder;
    const Ending ending = RunAgain(
        {"kapcheck", "run-probe", fProbe, std::to_string(first), fPlugin}, folder.Path(), fLimit);
    fBegun.reset();
    for (const nlohmann::json& message : ParseMessages(ending.fMessages)) Take(message);
    const std::string end = Misbehaviour(ending, std::chrono::duration<double>(fLimit).count());
    if (fBegun) {
      Fail(*fBegun, end.empty() ? "ends the process with status 0" : end, ending);
    } else {
      // A probe that ends between checks, or after the last, has no check to continue with.
      if (!fIsOver || !end.empty()) {
        Fail({"probe", Outcome::kFailed, "The probe runs to its end.", {}, {}, {}, {}, 0},
             end.empty() ? "ends the process with status 0" : end, ending);
      }
      fIsOver = true;
    }
  }

  void Take(const nlohmann::json& message) {
    if (message.contains("over")) fIsOver = true;
    if (message.contains("failure")) {
      fResults.push_back({"probe",
                          Outcome::kFailed,
                          "The probe runs to its end.",
                          message["failure"],
                          {},
                          {},
                          {},
                          0});
    }
    if (!message.contains("check")) return;
    Result result{message["check"],
                  Outcome::kPassed,
                  message["contract"],
                  message["detail"],
                  {},
                  message["procedure"],
                  {},
                  0};
    const int outcome = message["outcome"];
    if (outcome == kKAPProbeBegins) {
      fNext = message["index"].get<int>() + 1;
      fBegun = std::move(result);
      return;
    }
    fBegun.reset();
    if (outcome == kKAPProbeFailed) result.fOutcome = Outcome::kFailed;
    if (outcome == kKAPProbeNotOffered) result.fOutcome = Outcome::kNotRun;
    fResults.push_back(std::move(result));
  }

  void Fail(Result result, const std::string& reason, const Ending& ending) {
    result.fOutcome = Outcome::kFailed;
    result.fReason = reason;
    result.fErrors = ending.fErrors;
    fResults.push_back(std::move(result));
  }

  std::string fProbe, fPlugin;
  std::chrono::milliseconds fLimit;
  int fNext = 0;
  bool fIsOver = false;
  std::optional<Result> fBegun;
  std::vector<Result> fResults;
};

void Report(void*, const KAPProbeResult* result) {
  Send({{"index", result->fIndex},
        {"check", result->fCheck},
        {"procedure", std::string(result->fInterface) + ", " + result->fMethod},
        {"contract", result->fContract},
        {"outcome", result->fOutcome},
        {"detail", result->fDetail}});
}

KAPGetProcAddressProc HostOf(const std::string& plugin, KAPGetProcAddressProc reference) {
  if (plugin.empty()) return reference;
  void* const library = ::dlopen(plugin.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) throw TestFailure(std::string("the host cannot be loaded: ") + ::dlerror());
  const auto make = reinterpret_cast<KAPCheckHostProc>(::dlsym(library, "KAPCheckHost"));
  if (!make) throw TestFailure(plugin + " does not export KAPCheckHost");
  const KAPGetProcAddressProc host = make(reference);
  if (!host) throw TestFailure("KAPCheckHost returns null");
  return host;
}

// The reference host knows what is still held when the probe has released all.
void SendAccounting(const KAPHost::Snapshot& held) {
  std::string detail = held.Describe();
  while (!detail.empty() && detail.back() == '\n') detail.pop_back();
  Send({{"index", 1'000'000},
        {"check", "accounting"},
        {"procedure", "all interfaces"},
        {"contract", "What the probe has released, the host no longer holds."},
        {"outcome", held.IsEmpty() ? kKAPProbePassed : kKAPProbeFailed},
        {"detail", detail.empty() ? "" : "still held: " + detail}});
}

void RunAll(const std::string& path, const std::string& plugin, int first) {
  KAPHost::HostOptions options;
  options.fOnLeak = [](const KAPHost::Snapshot&) {};
  KAPHost::Host reference(options);
  const KAPGetProcAddressProc host = HostOf(plugin, reference.GetProcAddress());
  const Subject probe(path, kProbeName);
  if (!probe.Initialize(host)) throw TestFailure("the host cannot register the probe's procedure");
  constexpr auto entry = KAPProbeInterface::kEntries[0];
  const auto run = reinterpret_cast<KAPProbeInterface::Proc<"Run">>(
      host(KAPProbeInterface::kName, entry.fMethodName, entry.fProcName));
  if (!run) throw TestFailure("the host does not find the probe's procedure");
  const int failed = run(first, &Report, nullptr);
  probe.Terminate();
  // Checks that failed may not have released what they took.
  if (failed == 0) SendAccounting(reference.TakeSnapshot());
}

}  // namespace

Results CheckHost(const std::string& probe, const std::string& plugin,
                  std::chrono::milliseconds limit) {
  ExportsOf(probe);
  Results results;
  results.fSubject = "the reference host";
  if (!plugin.empty()) {
    ExportsOf(plugin);
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
