// SPDX-License-Identifier: MIT
#include "terminal/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace PosUtil {

namespace {

constexpr auto kPatience = std::chrono::seconds(1);
constexpr auto kBetweenDrawings = std::chrono::milliseconds(100);
constexpr std::size_t kMostBetweenChecks = 64 * 1024;  // reading the clock costs time
constexpr std::size_t kChecks = 1000;                  // of a total that is known
constexpr std::size_t kWidth = 40;

// An error is ignored: standard error is where it would be reported.
void PutToTerminal(std::string_view text) {
  static_cast<void>(!::write(STDERR_FILENO, text.data(), text.size()));
}

}  // namespace

void Progress::Show(int resultDescriptor) {
  const char* const terminal = std::getenv("TERM");
  fIsShown = terminal && std::string_view(terminal) != "dumb" && ::isatty(STDERR_FILENO) &&
             !::isatty(resultDescriptor);
}

void Progress::Begin(const char* activity, std::size_t total) {
  fActivity = activity;
  fTotal = total;
  fDone = 0;
  fNextCheck = 0;
}

void Progress::CheckClock() {
  fNextCheck =
      fDone + (fTotal == 0 ? kMostBetweenChecks
                           : std::clamp<std::size_t>(fTotal / kChecks, 1, kMostBetweenChecks));
  const Clock::time_point now = Clock::now();
  if (now - fStart < kPatience || now - fLastDrawn < kBetweenDrawings) return;
  fLastDrawn = now;
  fIsDrawn = true;
  const std::string file =
      fFiles > 1 ? std::to_string(fFile) + "/" + std::to_string(fFiles) + " " : "";
  PutToTerminal("\r\033[K" + file + fActivity + " " + Bar());
}

std::string Progress::Bar() const {
  if (fTotal == 0) return std::to_string(fDone >> 20) + " MiB";
  const std::size_t done = std::min(fDone, fTotal);
  std::string bar(kWidth, ' ');
  std::fill_n(bar.begin(), done * kWidth / fTotal, '#');
  return "[" + bar + "] " + std::to_string(done * 100 / fTotal) + " %";
}

void Progress::Erase() {
  if (!fIsDrawn) return;
  fIsDrawn = false;
  PutToTerminal("\r\033[K");
}

}  // namespace PosUtil
