#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "formats/Handles.h"

namespace PosUtil {

// A JSON object that stands for a value that JSON does not have (see JsonForms.h), while its members come in.
// Errors: ValueError for members and values that do not belong in one.
class TaggedJson {
 public:
  // An object whose member "base64" came first, with this value.
  static TaggedJson WithBase64(std::string_view text);

  void Key(std::string_view key);
  void String(std::string_view text);  // the value of the latest key
  [[noreturn]] void RefuseValue() const;

  Handle Make() const;

 private:
  Handle MakeBinData() const;

  std::optional<std::string> fUnicode;
  std::optional<std::string> fBinaryType;
  std::optional<std::string> fBase64;
  std::optional<std::string>* fMember = nullptr;
};

}  // namespace PosUtil
