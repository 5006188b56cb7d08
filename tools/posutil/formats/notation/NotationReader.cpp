// SPDX-License-Identifier: MIT
// The library does the work, but does not say what is wrong.

#include "formats/notation/NotationReader.h"

#include <cstring>

#include "formats/SourceReader.h"
#include "formats/notation/NotationText.h"

namespace PosUtil {

KAP_T_MT::CPOSObject ReadNotation(const Source& source) {
  const std::string_view bytes = source.Bytes();
  const char* end = nullptr;
  KAP_T_MT::CPOSObject object = KAP_T_MT::CPOSObject::CreateFromText(source.Text(), &end);
  // A zero byte is the end of the text to the library.
  const std::size_t length = std::strlen(source.Text());
  const std::size_t stop = end ? static_cast<std::size_t>(end - source.Text()) : length;
  if (stop == length && length < bytes.size()) {
    throw source.ErrorAt(length, "a zero character in the text");
  }
  if (object.IsNull()) {
    const NotationFault fault = FindNotationFault(bytes, stop);
    throw source.ErrorAt(fault.fOffset, fault.fMessage);
  }
  return object;
}

namespace {

class NotationReader final : public SourceReader {
 public:
  NotationReader() : SourceReader(1, "text", ".txt .text .pos") {}

 private:
  KAP_T_MT::CPOSObject Read(const Source& source) const override { return ReadNotation(source); }

  Recognition Recognize(std::string_view text, bool /*isAll*/) const override {
    return StartsNotation(text[Skip(text, 0, " \t\r\n")]) ? Recognition::kYes : Recognition::kNo;
  }

  Token NextToken(std::string_view text, std::size_t at) const override {
    return NextNotationToken(text, at);
  }
  std::string KeyOf(std::string_view token) const override { return NotationKey(token); }
} gNotationReader;

}  // namespace

}  // namespace PosUtil
