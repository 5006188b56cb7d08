// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/Loss.h"
#include "files/InputWindow.h"
#include "formats/json/JsonBuilder.h"

namespace PosUtil {

enum class Nulls { kByLoss, kMarked };  // what null becomes; kMarked is not for LossMode::kKeep

// Reads the documents of a JSON text from a window, with a stack of its own. The next document may
// follow at once.
//
// Boost.JSON's basic_parser is not used: it recurses, with 80 bytes of stack for a level, so a
// million levels crash it; and it does not know the place of a container or of a string with
// escapes, which messages need.
// Errors: SyntaxError at the first byte of the token at fault, or at the fault inside a string;
//   also for a value that an object cannot hold.
class JsonScanner {
 public:
  JsonScanner(InputWindow& input, JsonBuilder& builder, LossMode mode, Nulls nulls, Losses& losses);

  // Skips white space. Returns false at the end of the input.
  bool SkipSpace();
  // Passes the next document to the builder. Reads no further than its last byte, except for a
  // number: only the byte after it shows its end.
  void ReadDocument();
  // After an UnheldValue: skips the rest of the document, whatever it is.
  void SkipDocument();
  // Makes the window keep the text from the next byte on.
  void KeepFromHere() { fInput.KeepFrom(Index(fNext)); }
  // The error at the next token.
  SyntaxError ErrorHere(const std::string& message) const;

 private:
  void ReadValues();
  bool ReadValue(const char* expected);
  void ReadKey(const char* expected);

  std::string_view ScanString();
  void SkipUnusual();
  void ReadEscape();
  unsigned ScanUnit(std::size_t offset);

  void ReadString();
  void ReadWord(std::string_view word, const char* expected);
  void ReadTruth(std::string_view word, const char* expected);
  void ReadNull(const char* expected);
  void ReadNumber();
  void ReadInteger(std::string_view text);
  void ReadReal(std::string_view text);
  void ReadLarge(std::string_view text);
  void AddInexact(LossKind kind, std::string_view text, double value);

  void Lose(LossKind kind, const std::string& text);
  bool More();
  bool MoreDigits();
  bool Has(std::size_t count);
  std::string Found() const;
  [[noreturn]] void FailExpecting(const std::string& expected) const;
  [[noreturn]] void FailAt(const char* place, const std::string& message) const;
  std::string WithPath(const std::string& message) const;
  std::size_t Index(const char* place) const {
    return static_cast<std::size_t>(place - fInput.Data());
  }

  InputWindow& fInput;
  JsonBuilder& fBuilder;
  const LossMode fMode;
  const Nulls fNulls;
  Losses& fLosses;
  char* fToken;  // the first byte of the current token; the window keeps the bytes from here on
  char* fNext;
  char* fEnd;
  std::vector<bool> fIsObject;  // for each open container
  std::string fText;            // of a string with escapes
};

}  // namespace PosUtil
