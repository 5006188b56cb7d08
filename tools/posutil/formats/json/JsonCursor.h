#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "files/Source.h"
#include "terminal/Progress.h"

namespace PosUtil {

// What happens now and then while a text is read.
class ReadingWatch {
 public:
  ReadingWatch(Source& source, Progress& progress)
      : fSource(source), fProgress(progress), fNext(Behind(source.Text())) {}

  void At(const char* place) {
    if (place == fNext) [[unlikely]]
      Look();
  }

 private:
  static constexpr std::size_t kStep = 256 * 1024;

  void Look() {
    fProgress.Advance(kStep);
    fSource.Forget(static_cast<std::size_t>(fNext - fSource.Text()));
    fNext = Behind(fNext);
  }
  // The end of the text is the last place to look at.
  const char* Behind(const char* place) const {
    const char* const end = fSource.Text() + fSource.Bytes().size();
    return place + std::min<std::size_t>(kStep, static_cast<std::size_t>(end - place));
  }

  Source& fSource;
  Progress& fProgress;
  const char* fNext;
};

// An iterator over a text that is read once.
class JsonCursor {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  JsonCursor(const char* place, ReadingWatch& watch) : fPlace(place), fWatch(&watch) {}

  const char& operator*() const { return *fPlace; }
  JsonCursor& operator++() {
    fWatch->At(++fPlace);
    return *this;
  }
  friend bool operator==(const JsonCursor& a, const JsonCursor& b) { return a.fPlace == b.fPlace; }

 private:
  const char* fPlace;
  ReadingWatch* fWatch;
};

}  // namespace PosUtil
