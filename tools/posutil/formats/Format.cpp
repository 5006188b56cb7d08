// SPDX-License-Identifier: MIT
#include "formats/Format.h"

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

}  // namespace

const Reader* Reader::ForFile(const std::string& fileName) {
  for (const Reader* reader : All()) {
    if (HasEnding(fileName, reader->kEndings)) return reader;
  }
  return nullptr;
}

}  // namespace PosUtil
