// SPDX-License-Identifier: MIT
#include "files/InputWindow.h"

#include <cstring>
#include <utility>

namespace PosUtil {

InputWindow::InputWindow(const std::string& fileName, Progress& progress,
                         std::function<void()> idle)
    : fFile(fileName),
      fProgress(progress),
      fIdle(std::move(idle)),
      fBuffer(new char[kFirstCapacity + kPadding]()) {
  fProgress.Begin("reading", fFile.Size());
}

std::size_t InputWindow::Refill(std::size_t needed) {
  if (fIsAtEnd) return 0;
  if (fKeptFrom < fDiscarded + needed) needed = fKeptFrom - fDiscarded;
  const std::size_t discarded = needed > kKept && fSize == fCapacity ? needed - kKept : 0;
  Discard(discarded);
  if (fSize == fCapacity) Grow();
  if (fIdle && fFile.MayWait()) fIdle();
  const std::size_t count = fFile.Read(fBuffer.get() + fSize, fCapacity - fSize);
  fSize += count;
  std::memset(fBuffer.get() + fSize, 0, kPadding);
  fIsAtEnd = count == 0;
  fProgress.Advance(count);
  return discarded;
}

// Counts on from the last document: the window may hold millions of small ones.
void InputWindow::KeepFrom(std::size_t index) {
  if (fCountedKept < fDiscarded) {
    fBeforeKept = fBefore;
    fCountedKept = fDiscarded;
  }
  fKeptFrom = fDiscarded + index;
  fBeforeKept.Add({fBuffer.get() + (fCountedKept - fDiscarded), fKeptFrom - fCountedKept});
  fCountedKept = fKeptFrom;
}

void InputWindow::Discard(std::size_t count) {
  if (count == 0) return;
  fBefore.Add({fBuffer.get(), count});
  std::memmove(fBuffer.get(), fBuffer.get() + count, fSize - count);
  fDiscarded += count;
  fSize -= count;
}

void InputWindow::Grow() {
  std::unique_ptr<char[]> larger(new char[2 * fCapacity + kPadding]);
  std::memcpy(larger.get(), fBuffer.get(), fSize);
  fBuffer = std::move(larger);
  fCapacity *= 2;
}

std::string InputWindow::NameOf(std::size_t index) const {
  return NameOfPlace(fFile.Name(), PlaceIn(Part(), index));
}

SyntaxError InputWindow::ErrorAt(std::size_t index, const std::string& message) const {
  return {fFile.Name(), Part(), index, message};
}

}  // namespace PosUtil
