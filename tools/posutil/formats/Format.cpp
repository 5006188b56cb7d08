// SPDX-License-Identifier: MIT
#include "formats/Format.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <vector>

#include "files/InputFile.h"

namespace PosUtil {

namespace {

bool HasEnding(const std::string& fileName, std::string_view endings) {
  while (!endings.empty()) {
    const std::string_view ending = endings.substr(0, endings.find(' '));
    if (fileName.ends_with(ending)) return true;
    endings.remove_prefix(std::min(ending.size() + 1, endings.size()));
  }
  return false;
}

constexpr std::string_view kSpace = " \t\r\n";

struct Guess {
  const Reader* fReader = nullptr;
  Reader::Recognition fCertainty = Reader::Recognition::kNo;
};

// Asks the readers from the last to the first: the later a format, the fewer texts fit it.
Guess ForBeginning(std::string_view text, bool isAll) {
  const std::vector<Reader*> readers = Reader::All();
  for (auto reader = readers.rbegin(); reader != readers.rend(); ++reader) {
    const Reader::Recognition recognition = (*reader)->Recognize(text, isAll);
    if (recognition != Reader::Recognition::kNo) return {*reader, recognition};
  }
  return {};
}

// A pipe may deliver its first document long before the next bytes, so this reads no more than it
// needs.
const Reader* ForContent(const std::string& fileName) {
  constexpr std::size_t kMost = 64 * 1024;         // after white space
  constexpr std::size_t kMostSpace = 1024 * 1024;  // a file is read again each time
  for (std::size_t size = 1;;) {
    const std::string text = InputFile::Peek(fileName, size);
    const bool isAll = text.size() < size;
    const std::size_t begin = std::min(text.find_first_not_of(kSpace), text.size());
    const Guess guess = begin < text.size() ? ForBeginning(text, isAll) : Guess();
    const bool isEnough = isAll || text.size() - begin >= kMost || begin >= kMostSpace;
    if (isEnough || guess.fCertainty == Reader::Recognition::kYes) return guess.fReader;
    size = text.size() + 1;
  }
}

}  // namespace

const Reader* Reader::ForEnding(const std::string& fileName) {
  for (const Reader* reader : All()) {
    if (HasEnding(fileName, reader->kEndings)) return reader;
  }
  return nullptr;
}

bool Reader::IsBlank(const std::string& fileName) {
  constexpr std::size_t kSize = 4096;
  const std::string text = InputFile::Peek(fileName, kSize);
  return text.size() < kSize && text.find_first_not_of(kSpace) == std::string::npos;
}

const Reader* Reader::ForFile(const std::string& fileName) {
  if (const Reader* const reader = ForEnding(fileName)) return reader;
  static std::mutex mutex;
  static std::map<std::string, const Reader*> known;
  const std::lock_guard lock(mutex);
  const auto found = known.find(fileName);
  if (found != known.end()) return found->second;
  return known[fileName] = ForContent(fileName);
}

}  // namespace PosUtil
