// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace KAPHost {

// The messages that components report. Thread-safe.
class Reports {
 public:
  explicit Reports(std::function<void(const std::string&)> onReport)
      : fOnReport(std::move(onReport)) {}

  // A message for which there is no memory is lost.
  void Add(const char* message) noexcept;
  std::vector<std::string> All() const;
  std::vector<std::string> Take();

 private:
  std::function<void(const std::string&)> fOnReport;
  mutable std::mutex fMutex;
  std::vector<std::string> fMessages;
};

// Adds to the reports of the live host, if any.
void Report(const char* message) noexcept;

}  // namespace KAPHost
