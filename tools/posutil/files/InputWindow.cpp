// SPDX-License-Identifier: MIT
#include "files/InputWindow.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace PosUtil {

namespace {

constexpr std::string_view kSpace = " \t\r\n";
constexpr std::size_t kExcerpt = 64;  // on each side, more than an excerpt shows

}  // namespace

InputWindow::InputWindow(const std::string& fileName, Progress& progress,
                         std::function<void()> idle)
    : fFile(fileName),
      fProgress(progress),
      fIdle(std::move(idle)),
      fBuffer(new char[kFirstCapacity + kPadding]()) {
  fProgress.Begin("reading", fFile.Size());
}

InputWindow::InputWindow(std::string name, std::string_view text, Progress& progress)
    : fFile(std::move(name), text),
      fProgress(progress),
      fBuffer(new char[kFirstCapacity + kPadding]()) {}

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
  RememberTextEnd(count);
  fBefore.Add({fBuffer.get(), count});
  std::memmove(fBuffer.get(), fBuffer.get() + count, fSize - count);
  fDiscarded += count;
  fSize -= count;
}

// Before `count` bytes are discarded.
void InputWindow::RememberTextEnd(std::size_t count) {
  const std::string_view bytes(fBuffer.get(), fSize);
  const std::size_t end = bytes.substr(0, count).find_last_not_of(kSpace) + 1;
  if (end == 0) return;
  const std::size_t begin = end - std::min(end, kExcerpt);
  fBeforeTextEnd = fBefore;
  fBeforeTextEnd.Add(bytes.substr(0, begin));
  fAroundTextEnd = bytes.substr(begin, end - begin + kExcerpt);
  fTextEnd = end - begin;
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

SyntaxError InputWindow::ErrorAfterText(const std::string& message) const {
  const std::size_t end = std::string_view(fBuffer.get(), fSize).find_last_not_of(kSpace) + 1;
  if (end > 0 || fDiscarded == 0) return ErrorAt(end, message);
  return {fFile.Name(), {fBeforeTextEnd, fAroundTextEnd}, fTextEnd, message};
}

}  // namespace PosUtil
