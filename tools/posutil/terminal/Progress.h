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
  void Hide() { fIsShown = false; }
  bool IsShown() const { return fIsShown; }

  // Says which one of several files the next pieces of work belong to. Files count from 1.
  void SetFile(std::size_t number, std::size_t count) {
    fFile = number;
    fFiles = count;
  }

  // Starts a piece of work. `total` is in bytes, or any other unit, 0 if it is not known.
  void Begin(const char* activity, std::size_t total);
  void Advance(std::size_t amount) {
    if (!fIsShown) return;
    fDone += amount;
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
  std::size_t fFile = 0;
  std::size_t fFiles = 0;
  std::size_t fNextCheck = 0;  // value of fDone at which to read the clock again
};

}  // namespace PosUtil
