#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace PosUtil {

// A bar on standard error for work that takes longer than a second. Shown on a terminal only, and
// not while results go to one.
class Progress {
 public:
  Progress() = default;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { Erase(); }

  // To be called once it is known where the results go.
  void Show(int resultDescriptor);
  bool IsShown() const { return fIsShown; }

  // Begins a piece of work; `total` is 0 when nobody knows it.
  void Begin(const char* activity, std::size_t total);
  // So many more bytes are done.
  void Advance(std::size_t bytes) {
    if (!fIsShown) return;
    fDone += bytes;
    if (fDone >= fNextLook) Look();
  }
  void Erase();

 private:
  using Clock = std::chrono::steady_clock;

  void Look();
  std::string Bar() const;

  const Clock::time_point fStart = Clock::now();
  Clock::time_point fLatest = fStart;  // drawing
  bool fIsShown = false;
  bool fIsDrawn = false;
  const char* fActivity = "";
  std::size_t fTotal = 0;
  std::size_t fDone = 0;
  std::size_t fNextLook = 0;  // at the clock
};

}  // namespace PosUtil
