// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace KAPCheck {

// What the process of a test sends to the process that started it: one JSON value in each line, at
// once, so that all of it arrives whatever happens next. process/Progress.h has the messages of
// the tests of components.

// Sends a message.
void Send(const nlohmann::json& message);

// The messages that arrived whole.
std::vector<nlohmann::json> ParseMessages(const std::string& text);

}  // namespace KAPCheck
