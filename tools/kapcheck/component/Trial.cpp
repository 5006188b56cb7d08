// SPDX-License-Identifier: MIT
#include "component/Trial.h"

#include <algorithm>

namespace KAPCheck {

namespace {

KAPHost::HostOptions Quietly(bool withChecks) {
  KAPHost::HostOptions options;
  options.fOnLeak = [](const KAPHost::Snapshot&) {};  // tests look for themselves
  options.fChecks = withChecks;
  return options;
}

std::string WithoutEnd(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  for (char& character : text) character = character == '\n' ? ';' : character;
  return text;
}

}  // namespace

bool IsMore(const KAPHost::Snapshot& held, const KAPHost::Snapshot& allowed) {
  for (int i = 0; i < static_cast<int>(KAPHost::KAPResource::kCount); ++i) {
    const auto resource = static_cast<KAPHost::KAPResource>(i);
    const KAPHost::Holding now = held.Total(resource);
    if (now.fNumber > std::max(allowed.Total(resource).fNumber, 0L)) return true;
    if (allowed.IsEmpty() && now.fExtent > 0) return true;
  }
  return false;
}

Trial::Trial(const Target& target, bool withChecks)
    : fTarget(target), fHost(Quietly(withChecks)), fTap(fHost) {
  if (!target.fScenario.empty()) fScenario.emplace(target.fScenario);
}

bool Trial::Initialize() { return fSubject->Initialize(fTap.GetProcAddress()); }

void Trial::MustInitialize(const std::string& when) {
  if (Initialize()) return;
  const std::vector<std::string> reports = fHost.TakeReports();
  throw TestFailure(fTarget.fName + "Initialize fails" + (when.empty() ? "" : " " + when) +
                    (reports.empty() ? ", without a report" : "; it reports: " + reports.back()));
}

void Trial::Terminate() { fSubject->Terminate(); }

bool Trial::RunScenario() { return fScenario->Run(fTap.GetProcAddress()); }

void Trial::MustRunScenario(const std::string& when) {
  if (!fScenario) return;
  Step("runs the scenario" + (when.empty() ? "" : " " + when));
  if (RunScenario()) return;
  const std::vector<std::string> reports = fHost.TakeReports();
  throw TestFailure("the scenario fails" + (when.empty() ? "" : " " + when) +
                    (reports.empty() ? "" : "; reported: " + reports.back()));
}

Remains Trial::TakeRemains() const {
  Remains remains{fHost.TakeSnapshot(), {}};
  for (const ProcNames& names : fTap.Registrations()) {
    if (fHost.Find(names.fInterface.c_str(), names.fMethod.c_str(), names.fProc.c_str())) {
      remains.fRegistered.insert(names);
    }
  }
  return remains;
}

const Remains& Trial::PlainRemains() {
  if (!fPlain) {
    const Remains before = TakeRemains();
    Step("initialises and terminates");
    MustInitialize();
    Terminate();
    fPlain = TakeRemains();
    fPlain->fHeld = fPlain->fHeld - before.fHeld;
  }
  return *fPlain;
}

void Trial::ExpectNoMore(const Remains& before, const std::string& when, Expected expected) {
  if (expected != Expected::kNothingRegistered) {
    const KAPHost::Snapshot held = TakeRemains().fHeld - before.fHeld;
    if (IsMore(held, PlainRemains().fHeld)) ThrowHeld(held, when);
  }
  if (expected != Expected::kNothingHeld) {
    std::set<ProcNames> registered = TakeRemains().fRegistered;
    for (const Remains* known : {&before, &PlainRemains()}) {
      for (const ProcNames& names : known->fRegistered) registered.erase(names);
    }
    if (!registered.empty()) ThrowRegistered(registered, when);
  }
}

void ThrowHeld(const KAPHost::Snapshot& held, const std::string& when) {
  throw TestFailure("holds " + when + ": " + WithoutEnd(held.Describe()));
}

void ThrowRegistered(const std::set<ProcNames>& registered, const std::string& when) {
  const ProcNames& first = *registered.begin();
  const std::string others =
      registered.size() > 1 ? " and " + std::to_string(registered.size() - 1) + " more" : "";
  throw TestFailure("leaves procedures registered " + when + ": " + first.fInterface + ", " +
                    first.fMethod + others);
}

}  // namespace KAPCheck
