// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace KAPCheck {

// What the process of a test sends to the process that started it: one JSON value in each line, at
// once, so that all of it arrives whatever happens next.

// Sends a message. Ignores a failure: without a verdict the test counts as failed.
void Send(const nlohmann::json& message);

// What the test does next. If the process crashes or hangs, the last step tells where.
void SendStep(const std::string& step);
// The verdicts of a test; the first one that arrives counts.
void SendPass();
void SendFailure(const std::string& reason);

// The messages that arrived whole.
std::vector<nlohmann::json> ParseMessages(const std::string& text);

}  // namespace KAPCheck
