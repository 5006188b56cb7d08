// SPDX-License-Identifier: MIT
#include "process/Messages.h"

#include <sstream>

#include "process/ChildProcess.h"
#include "process/Progress.h"

namespace KAPCheck {

namespace {

// The text of a member; "" when there is none.
std::string TextOf(const nlohmann::json& message, const char* name) {
  const auto member = message.find(name);
  return member != message.end() && member->is_string() ? member->get<std::string>() : "";
}

}  // namespace

void Send(const nlohmann::json& message) {
  // Strings of a component may be invalid UTF-8.
  WriteMessage(message.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

std::vector<nlohmann::json> ParseMessages(const std::string& text) {
  std::vector<nlohmann::json> messages;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    auto message = nlohmann::json::parse(line, nullptr, false);
    if (message.is_object()) messages.push_back(std::move(message));
  }
  return messages;
}

void SendStep(const std::string& step) { Send({{"step", step}}); }
void SendNote(const std::string& note) { Send({{"note", note}}); }
void SendPass() { Send({{"verdict", "passed"}}); }
void SendFailure(const std::string& reason) { Send({{"verdict", "failed"}, {"reason", reason}}); }

Progress ParseProgress(const std::string& text) {
  Progress progress;
  for (const nlohmann::json& message : ParseMessages(text)) {
    const std::string verdict = TextOf(message, "verdict");
    if (message.contains("step")) progress.fStep = TextOf(message, "step");
    if (message.contains("note")) progress.fNote = TextOf(message, "note");
    if (verdict.empty() || progress.fHasFailed) continue;
    progress.fHasPassed = true;
    progress.fHasFailed = verdict == "failed";
    progress.fReason = TextOf(message, "reason");
  }
  return progress;
}

}  // namespace KAPCheck
