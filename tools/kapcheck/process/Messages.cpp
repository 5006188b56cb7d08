// SPDX-License-Identifier: MIT
#include "process/Messages.h"

#include <unistd.h>

#include <mutex>
#include <sstream>

#include "process/ChildProcess.h"

namespace KAPCheck {

void Send(const nlohmann::json& message) {
  static std::mutex mutex;
  // Strings of a component may be invalid UTF-8.
  std::string line = message.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
  const std::lock_guard lock(mutex);
  for (std::size_t sent = 0; sent < line.size();) {
    const ssize_t count = ::write(kMessageDescriptor, line.data() + sent, line.size() - sent);
    if (count <= 0) return;
    sent += static_cast<std::size_t>(count);
  }
}

void SendStep(const std::string& step) { Send({{"step", step}}); }
void SendPass() { Send({{"verdict", "passed"}}); }
void SendFailure(const std::string& reason) { Send({{"verdict", "failed"}, {"reason", reason}}); }

std::vector<nlohmann::json> ParseMessages(const std::string& text) {
  std::vector<nlohmann::json> messages;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    auto message = nlohmann::json::parse(line, nullptr, false);
    if (message.is_object()) messages.push_back(std::move(message));
  }
  return messages;
}

}  // namespace KAPCheck
