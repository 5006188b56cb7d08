// SPDX-License-Identifier: MIT
#include "report/Results.h"

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>

#include "base/Printable.h"

namespace KAPCheck {

namespace {

using PosUtil::Printable;

// A sanitizer's report begins with what matters.
constexpr int kMostErrorLines = 12;

constexpr char kIndent[] = "          ";

std::string WordOf(const Results& results, Outcome outcome) {
  if (outcome == Outcome::kPassed) return "passed";
  if (outcome == Outcome::kBlocked) return "blocked";
  return outcome == Outcome::kFailed ? "FAILED" : results.fNotRun;
}

void Pad(std::ostream& out, const std::string& text, std::size_t width) {
  out << text << std::string(width - std::min(width, text.size()), ' ');
}

void PrintFailure(std::ostream& out, const Result& result) {
  // Lines after the first one are a report.
  std::istringstream reason(result.fReason);
  std::string line;
  std::getline(reason, line);
  out << kIndent << "reason: " << Printable(line) << '\n';
  while (std::getline(reason, line)) out << kIndent << "| " << Printable(line) << '\n';
  if (!result.fStep.empty()) out << kIndent << "step: " << Printable(result.fStep) << '\n';
  std::istringstream lines(result.fErrors);
  for (int i = 0; i < kMostErrorLines && std::getline(lines, line); ++i) {
    out << kIndent << "| " << Printable(line) << '\n';
  }
}

nlohmann::json ToJson(const Results& results, const Result& result) {
  nlohmann::json json = {{"name", result.fName},
                         {"result", WordOf(results, result.fOutcome)},
                         {"description", result.fDescription},
                         {"seconds", result.fSeconds}};
  if (result.fOutcome == Outcome::kFailed) json["result"] = "failed";
  const std::pair<const char*, const std::string*> texts[] = {{"reason", &result.fReason},
                                                              {"step", &result.fStep},
                                                              {"procedure", &result.fProcedure},
                                                              {"stderr", &result.fErrors}};
  for (const auto& [name, text] : texts) {
    if (!text->empty()) json[name] = *text;
  }
  return json;
}

std::size_t NameWidth(const Results& results) {
  std::size_t width = 0;
  for (const Result& result : results.fResults) width = std::max(width, result.fName.size());
  return width;
}

// What a component writes may be invalid UTF-8.
void Print(std::ostream& out, const nlohmann::json& json) {
  out << json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

}  // namespace

std::size_t Results::Count(Outcome outcome) const {
  return static_cast<std::size_t>(
      std::count_if(fResults.begin(), fResults.end(),
                    [=](const Result& result) { return result.fOutcome == outcome; }));
}

void PrintText(std::ostream& out, const Results& results) {
  const std::size_t wordWidth = results.fNotRun.size(), nameWidth = NameWidth(results);
  out << Printable(results.fSubject);
  if (results.fSeed != 0) out << ", seed " << results.fSeed;
  out << '\n';
  for (const Result& result : results.fResults) {
    Pad(out, WordOf(results, result.fOutcome), wordWidth + 2);
    Pad(out, result.fName, nameWidth + 2);
    const bool isTried = result.fOutcome == Outcome::kPassed || result.fOutcome == Outcome::kFailed;
    out << (isTried ? result.fDescription : Printable(result.fReason)) << '\n';
    if (result.fOutcome == Outcome::kFailed) PrintFailure(out, result);
  }
  out << results.Count(Outcome::kPassed) << " passed, " << results.Count(Outcome::kFailed)
      << " failed, " << results.Count(Outcome::kNotRun) << ' ' << results.fNotRun;
  const std::size_t blocked = results.Count(Outcome::kBlocked);
  if (blocked != 0) out << ", " << blocked << " blocked";
  out << '\n';
  if (results.fSignal != 0) out << "interrupted: " << ::strsignal(results.fSignal) << '\n';
}

void PrintJson(std::ostream& out, const Results& results) {
  nlohmann::json tests = nlohmann::json::array();
  for (const Result& result : results.fResults) tests.push_back(ToJson(results, result));
  nlohmann::json json = {{"subject", results.fSubject},
                         {"passed", results.Count(Outcome::kPassed)},
                         {"failed", results.Count(Outcome::kFailed)},
                         {"others", results.Count(Outcome::kNotRun)},
                         {"tests", std::move(tests)}};
  if (results.fSeed != 0) json["seed"] = results.fSeed;
  const std::size_t blocked = results.Count(Outcome::kBlocked);
  if (blocked != 0) json["blocked"] = blocked;
  if (results.fSignal != 0) json["interrupted"] = ::strsignal(results.fSignal);
  for (const auto& [name, value] : results.fFacts) json[name] = value;
  Print(out, json);
}

void ListText(std::ostream& out, const Results& results) {
  for (const Result& result : results.fResults) {
    Pad(out, result.fName, NameWidth(results) + 2);
    out << result.fDescription << '\n';
  }
}

void ListJson(std::ostream& out, const Results& results) {
  nlohmann::json tests = nlohmann::json::array();
  for (const Result& result : results.fResults) {
    tests.push_back({{"name", result.fName}, {"description", result.fDescription}});
  }
  Print(out, {{"tests", std::move(tests)}});
}

}  // namespace KAPCheck
