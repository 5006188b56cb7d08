// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/SyntaxError.h"
#include "files/InputFile.h"
#include "terminal/Progress.h"

namespace PosUtil {

// A window over the bytes of a file, or of standard input, that were read last. The file need not
// be seekable, and its size does not matter for the memory.
// Errors: Failure when a read fails; the window then stays as it is.
class InputWindow {
 public:
  // Reading advances `progress`. `idle` may be empty; it is called before a read that may wait.
  InputWindow(const std::string& fileName, Progress& progress, std::function<void()> idle = {});

  // The window over a text in place of a file; `name` is its name in messages.
  InputWindow(std::string name, std::string_view text, Progress& progress);

  const InputFile& File() const { return fFile; }

  // The bytes, with kPadding zero bytes after the last one. A reader may change them for a moment:
  // messages show them. Refill moves them.
  static constexpr std::size_t kPadding = 16;
  char* Data() { return fBuffer.get(); }
  std::size_t Size() const { return fSize; }
  // The number of bytes before the window.
  std::size_t Discarded() const { return fDiscarded; }

  // Reads more bytes. Discards those before index `needed`, except for a few that messages show,
  // and returns how many it has discarded. IsAtEnd is true if there was nothing more to read.
  std::size_t Refill(std::size_t needed);
  bool IsAtEnd() const { return fIsAtEnd; }
  // From now on discards nothing from this byte on, until the next call.
  // The index must not be before that of an earlier call.
  void KeepFrom(std::size_t index);
  void KeepNothing() { fKeptFrom = SIZE_MAX; }
  // The bytes as a part of the input, and the index of the first kept one.
  TextPart Part() const { return {fBefore, {fBuffer.get(), fSize}}; }
  std::size_t KeptFrom() const { return fKeptFrom - fDiscarded; }
  // Counts the bytes before the first kept one.
  const LineCounter& BeforeKept() const { return fBeforeKept; }

  // FILE:LINE:COLUMN of a byte of the window, and the error there; past the last byte means the
  // end.
  std::string NameOf(std::size_t index) const;
  SyntaxError ErrorAt(std::size_t index, const std::string& message) const;
  // The error after the last byte that is not white space, which may be discarded.
  SyntaxError ErrorAfterText(const std::string& message) const;

 private:
  static constexpr std::size_t kFirstCapacity = 64 * 1024;
  static constexpr std::size_t kKept = 4 * 1024;  // for seeking back, and for excerpts

  void Discard(std::size_t count);
  void RememberTextEnd(std::size_t count);
  void Grow();

  InputFile fFile;
  Progress& fProgress;
  const std::function<void()> fIdle;
  std::size_t fCapacity = kFirstCapacity;  // without the padding
  std::unique_ptr<char[]> fBuffer;
  std::size_t fSize = 0;
  std::size_t fDiscarded = 0;
  std::size_t fKeptFrom = SIZE_MAX;  // counts from the start of the input
  LineCounter fBefore;               // of the discarded bytes
  LineCounter fBeforeKept;           // of the first fCountedKept bytes of the input
  std::size_t fCountedKept = 0;
  // The last discarded byte that is not white space: what an excerpt shows around it.
  LineCounter fBeforeTextEnd;
  std::string fAroundTextEnd;
  std::size_t fTextEnd = 0;  // index in fAroundTextEnd
  bool fIsAtEnd = false;
};

}  // namespace PosUtil
