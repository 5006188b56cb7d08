// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace PosUtil {

// A progress bar on standard error, for work that takes longer than a second. It appears only on a
// terminal, and not while results go to a terminal.
class Progress {
 public:
  Progress() = default;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { Erase(); }

  // Call it when the destination of the results is known; before that nothing appears.
  void Show(int resultDescriptor);
  bool IsShown() const { return fIsShown; }

  // Starts a piece of work. `total` is in bytes, 0 if it is not known.
  void Begin(const char* activity, std::size_t total);
  // Adds `bytes` to the bytes done.
  void Advance(std::size_t bytes) {
    if (!fIsShown) return;
    fDone += bytes;
    if (fDone >= fNextCheck) CheckClock();
  }
  // Removes the bar from the screen, so that a message can take its place.
  void Erase();

 private:
  using Clock = std::chrono::steady_clock;

  void CheckClock();
  std::string Bar() const;

  const Clock::time_point fStart = Clock::now();
  Clock::time_point fLastDrawn = fStart;
  bool fIsShown = false;
  bool fIsDrawn = false;
  const char* fActivity = "";
  std::size_t fTotal = 0;
  std::size_t fDone = 0;
  std::size_t fNextCheck = 0;  // value of fDone at which to read the clock again
};

}  // namespace PosUtil
