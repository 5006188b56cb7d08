// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <vector>

#include "Harness.h"

// What a check of an object or a schema leads to.
struct Outcome {
  static constexpr std::size_t kMaxMessages = 200'000;

  bool fIsValid = false;
  std::vector<std::string> fMessages;
  std::vector<std::string> fReports;  // an exception counts as one

  friend bool operator==(const Outcome&, const Outcome&) = default;

  // The outcome of `check`, which passes its messages to Receive.
  template <class Check>
  static Outcome Of(Harness& harness, Check check) {
    Outcome outcome;
    gMessages.clear();
    std::vector<std::string> thrown;
    try {
      outcome.fIsValid = check();
    } catch (const std::exception& error) {
      thrown.emplace_back(error.what());
    }
    outcome.fMessages = gMessages;
    outcome.fReports = harness.TakeReports();
    outcome.fReports.insert(outcome.fReports.end(), thrown.begin(), thrown.end());
    // The converse does not hold: an empty union accepts nothing and has no message.
    Expect(!outcome.fIsValid || (outcome.fMessages.empty() && outcome.fReports.empty()),
           "what is valid has no message and no report");
    return outcome;
  }

  static void Receive(const char* message) {
    gMessages.emplace_back(message);
    Expect(gMessages.size() <= kMaxMessages, "a check ends");
  }

 private:
  static inline std::vector<std::string> gMessages;
};
