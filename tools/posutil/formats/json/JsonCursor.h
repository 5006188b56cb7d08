#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "files/Source.h"
#include "terminal/Progress.h"

namespace PosUtil {

// Advances the progress bar and frees memory while a parser moves through a source.
class ReadingMonitor {
 public:
  ReadingMonitor(Source& source, Progress& progress)
      : fSource(source), fProgress(progress), fNext(After(source.Text())) {}

  void At(const char* place) {
    if (place == fNext) [[unlikely]]
      Step();
  }

 private:
  static constexpr std::size_t kStep = 256 * 1024;

  void Step() {
    fProgress.Advance(kStep);
    fSource.Forget(static_cast<std::size_t>(fNext - fSource.Text()));
    fNext = After(fNext);
  }
  // At most the end of the text.
  const char* After(const char* place) const {
    const char* const end = fSource.Text() + fSource.Bytes().size();
    return place + std::min<std::size_t>(kStep, static_cast<std::size_t>(end - place));
  }

  Source& fSource;
  Progress& fProgress;
  const char* fNext;
};

// An input iterator over the text for the parser.
class JsonCursor {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  JsonCursor(const char* place, ReadingMonitor& monitor) : fPlace(place), fMonitor(&monitor) {}

  const char& operator*() const { return *fPlace; }
  JsonCursor& operator++() {
    fMonitor->At(++fPlace);
    return *this;
  }
  friend bool operator==(const JsonCursor& a, const JsonCursor& b) { return a.fPlace == b.fPlace; }

 private:
  const char* fPlace;
  ReadingMonitor* fMonitor;
};

}  // namespace PosUtil
