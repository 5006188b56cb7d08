// SPDX-License-Identifier: MIT
#include "component/Trial.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "component/Crossings.h"
#include "process/Progress.h"

namespace KAPCheck {

namespace {

KAPHost::HostOptions OptionsFor(Watch watch) {
  KAPHost::HostOptions options;
  options.fOnLeak = [](const KAPHost::Snapshot&) {};  // tests look for themselves
  options.fChecks = watch != Watch::kCalls;
  options.fDebug.fStacks = watch == Watch::kMisuseWithStacks;
  return options;
}

std::string OnOneLine(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  for (char& character : text) character = character == '\n' ? ';' : character;
  return text;
}

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

}  // namespace

std::ptrdiff_t CountThreads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return std::distance(begin(tasks), end(tasks));
}

// A thread that has been joined may still be listed for a moment.
std::ptrdiff_t ThreadsBeyond(std::ptrdiff_t expected) {
  using namespace std::chrono_literals;
  for (int attempt = 0; attempt < 100; ++attempt) {
    if (CountThreads() <= expected) return 0;
    std::this_thread::sleep_for(10ms);
  }
  return CountThreads() - expected;
}

bool IsMore(const KAPHost::Snapshot& held, const KAPHost::Snapshot& allowed) {
  const KAPHost::Snapshot gained = held.Gained(), known = allowed.Gained();
  for (int i = 0; i < static_cast<int>(KAPHost::KAPResource::kCount); ++i) {
    const auto resource = static_cast<KAPHost::KAPResource>(i);
    const KAPHost::Holding now = gained.Total(resource);
    if (now.fNumber > known.Total(resource).fNumber) return true;
    if (known.IsEmpty() && now.fExtent > 0) return true;
  }
  return false;
}

Trial::Trial(const Target& target, Watch watch) : fTarget(target), fHost(OptionsFor(watch)) {
  if (watch != Watch::kMisuseWithStacks) fTap.emplace(fHost);
  if (target.fScenario.empty()) return;
  Step("loads the scenario");
  fScenario.emplace(target.fScenario);
}

void Trial::Step(const std::string& step) { SendStep(step); }

Subject& Trial::Load() {
  fSubject.emplace(fTarget.fPath, fTarget.fName);
  fThreads = CountThreads();
  if (HasScenario() && !fScenario->MayThrow()) {
    WatchCrossings(fSubject->Code(), fScenario->Code());
  }
  return *fSubject;
}

void Trial::Unload() {
  WatchCrossings(nullptr, nullptr);
  fSubject.reset();
}

std::ptrdiff_t Trial::LeftThreads() const { return ThreadsBeyond(fThreads); }

bool Trial::Initialize() {
  return fSubject->Initialize(fTap ? fTap->GetProcAddress() : fHost.GetProcAddress());
}

void Trial::MustInitialize(const std::string& when) {
  if (Initialize()) return;
  const std::vector<std::string> reports = fHost.TakeReports();
  throw TestFailure(fTarget.fName + "Initialize fails" + (when.empty() ? "" : " " + when) +
                    (reports.empty() ? ", without a report" : "; it reports: " + reports.back()));
}

void Trial::Terminate() { fSubject->Terminate(); }

bool Trial::RunScenario() {
  const bool isDone = fScenario->Run(fTap ? fTap->GetProcAddress() : fHost.GetProcAddress());
  const std::string crossing = TakeCrossing();
  if (!crossing.empty()) {
    throw TestFailure("an exception leaves the component and gets into the scenario: " + crossing);
  }
  return isDone;
}

void Trial::MustRunScenario(const std::string& when) {
  if (!HasScenario()) return;
  Step("runs the scenario" + (when.empty() ? "" : " " + when));
  if (RunScenario()) return;
  const std::vector<std::string> reports = fHost.TakeReports();
  throw TestFailure("the scenario fails" + (when.empty() ? "" : " " + when) +
                    (reports.empty() ? "" : "; reported: " + reports.back()));
}

Remains Trial::TakeRemains() const {
  Remains remains{fHost.TakeSnapshot(), {}};
  for (const ProcNames& names : fTap ? fTap->Registrations() : std::set<ProcNames>()) {
    if (fHost.Find(names.fInterface.c_str(), names.fMethod.c_str(), names.fProc.c_str())) {
      remains.fRegistered.insert(names);
    }
  }
  return remains;
}

void Trial::TryPlainly(int scenarioRuns) {
  const Remains before = TakeRemains();
  Step("initialises and terminates");
  MustInitialize();
  for (int run = 1; run <= scenarioRuns; ++run) MustRunScenario("in run " + std::to_string(run));
  Terminate();
  fPlain = TakeRemains();
  fPlain.fHeld = fPlain.fHeld - before.fHeld;
  for (const std::string& misuse : TakeMisuse()) fPlainMisuse.insert(FirstLine(misuse));
}

void Trial::ExpectNoMore(const Remains& before, const std::string& when, Expected expected) {
  if (expected == Expected::kAnything) return;
  const Remains now = TakeRemains();
  if (expected != Expected::kNothingRegistered) {
    const KAPHost::Snapshot held = now.fHeld - before.fHeld;
    if (IsMore(held, fPlain.fHeld)) ThrowHeld(held, when);
  }
  if (expected != Expected::kNothingHeld) {
    std::set<ProcNames> registered = now.fRegistered;
    for (const Remains* known : {&before, static_cast<const Remains*>(&fPlain)}) {
      for (const ProcNames& names : known->fRegistered) registered.erase(names);
    }
    if (!registered.empty()) ThrowRegistered(registered, when);
  }
}

std::vector<std::string> Trial::TakeMisuse() {
  // The host's own reports start like this; a component's are not about misuse.
  static const std::string kOwn = "KAP host: ";
  std::vector<std::string> misuse;
  for (const std::string& report : fHost.TakeReports()) {
    if (report.starts_with(kOwn)) misuse.push_back(report.substr(kOwn.size()));
  }
  return misuse;
}

void Trial::ExpectNoMisuse(const std::string& when) {
  for (const std::string& misuse : TakeMisuse()) {
    const std::string line = FirstLine(misuse);
    if (fPlainMisuse.contains(line)) continue;
    throw TestFailure(std::string("misuses a handle ").append(when).append(": ").append(line));
  }
}

void ThrowHeld(const KAPHost::Snapshot& held, const std::string& when) {
  throw TestFailure("holds " + when + ": " + OnOneLine(held.Describe()));
}

void ThrowRegistered(const std::set<ProcNames>& registered, const std::string& when) {
  const ProcNames& first = *registered.begin();
  const std::string others =
      registered.size() > 1 ? " and " + std::to_string(registered.size() - 1) + " more" : "";
  throw TestFailure("leaves procedures registered " + when + ": " + first.fInterface + ", " +
                    first.fMethod + others);
}

}  // namespace KAPCheck
