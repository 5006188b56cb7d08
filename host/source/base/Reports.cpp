// SPDX-License-Identifier: MIT
#include "base/Reports.h"

#include <new>
#include <utility>

#include "base/Current.h"

namespace KAPHost {

void Reports::Add(const char* message) noexcept {
  try {
    const std::string text(message);
    {
      const std::lock_guard lock(fMutex);
      fMessages.push_back(text);
    }
    if (fOnReport) fOnReport(text);  // without the lock: it may ask for the reports
  } catch (const std::bad_alloc&) {
  }
}

std::vector<std::string> Reports::All() const {
  const std::lock_guard lock(fMutex);
  return fMessages;
}

std::vector<std::string> Reports::Take() {
  const std::lock_guard lock(fMutex);
  return std::exchange(fMessages, {});
}

void Report(const char* message) noexcept {
  if (Reports* reports = Current<Reports>()) reports->Add(message);
}

}  // namespace KAPHost
