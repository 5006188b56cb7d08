// SPDX-License-Identifier: MIT
// The writer of text notation: < key value ... >, [ value ... ], bare words, (strings), numbers and
// `hexadecimal Unicode strings`.

#include <cmath>
#include <string>
#include <string_view>

#include "base/DecimalText.h"
#include "base/HexText.h"
#include "base/ValueError.h"
#include "formats/Format.h"
#include "formats/Paint.h"
#include "formats/Visitor.h"

namespace PosUtil {

namespace {

constexpr std::size_t kLongestToken = 100;  // in characters; in units for a Unicode string

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsBareWord(std::string_view text) {
  if (text.empty() || !IsLetter(text[0])) return false;
  for (const char c : text) {
    if (!IsLetter(c) && !IsDigit(c)) return false;
  }
  return true;
}

std::string Token(std::string_view text) {
  if (text.size() > kLongestToken)
    throw ValueError("text notation limits strings to 100 characters");
  if (IsBareWord(text)) return std::string(text);
  std::string token = "(";
  for (const char c : text) {
    if (c == '\\' || c == ')') token += '\\';
    token += c;
  }
  if (token.size() - 1 > kLongestToken) {
    throw ValueError("text notation limits strings to 100 characters, including backslashes");
  }
  return token + ')';
}

template <class Colours>
class NotationVisitor final : public Visitor {
 public:
  NotationVisitor(Colours colours, const WriteOptions& options, Output& out)
      : fColours(colours), fOut(out), fLayout(options.fOnOneLine, options.fIndent) {}

  void At(const Place& place) override {
    if (place.fDepth > 0 && !fLayout.BeginItem(fOut, place.fDepth) &&
        (place.fKey || place.fIndex > 0)) {
      fOut.Put(' ');
    }
    if (place.fKey) {
      Put(&Style::fKey, Token(place.fKey));
      fOut.Put(' ');
    }
  }

  void Number(double value) override {
    if (!std::isfinite(value)) throw ValueError("text notation cannot hold infinities or NaN");
    const DecimalText text(value, DecimalText::kWithoutExponent);
    if (text.View().size() > kLongestToken) {
      throw ValueError("the number needs an exponent, which text notation does not have");
    }
    Put(&Style::fNumber, text.View());
  }
  void String(const char* text) override { Put(&Style::fString, Token(text)); }
  void UnicodeString(const unsigned short* units) override {
    if (std::basic_string_view<unsigned short>(units).size() > kLongestToken) {
      throw ValueError("text notation limits Unicode strings to 100 units");
    }
    fColours.In(&Style::fString, fOut, [&] {
      fOut.Put('`');
      for (; *units; ++units) fOut.Put(HexText(*units, HexCase::kUpper).View());
      fOut.Put('`');
    });
  }
  void BinData(const char*, const unsigned char*, std::size_t) override {
    throw ValueError("text notation cannot hold binary data");
  }
  void RawPointer(const void*) override {
    throw ValueError("text notation cannot hold a raw pointer");
  }
  void EmptySlot() override { throw ValueError("text notation cannot hold an empty slot"); }

  void BeginArray(std::size_t) override { fOut.Put('['); }
  void BeginDict(POSDict*) override { fOut.Put('<'); }
  void EndArray(const Place& place, std::size_t count) override {
    if (count > 0) fLayout.BeginEnd(fOut, place.fDepth);
    fOut.Put(']');
  }
  void EndDict(const Place& place, std::size_t count) override {
    if (count == 0 || !fLayout.BeginEnd(fOut, place.fDepth)) fOut.Put(' ');
    fOut.Put('>');
  }

 private:
  void Put(const char* Style::*colour, std::string_view text) {
    fColours.In(colour, fOut, [&] { fOut.Put(text); });
  }

  const Colours fColours;
  Output& fOut;
  Layout fLayout;
};

class NotationWriter final : public Writer {
 public:
  NotationWriter() : Writer(3, "text", Layouts::kAll) {}

  void Write(const KAP_T_MT::CPOSObject& object, const std::string& document,
             const WriteOptions& options, Output& out) const override {
    WithPaint(options.fStyle, [&](auto paint) {
      NotationVisitor visitor(paint, options, out);
      Visit(object, document, visitor);
    });
  }
} gNotationWriter;

}  // namespace

}  // namespace PosUtil
