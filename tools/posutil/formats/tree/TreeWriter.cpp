// SPDX-License-Identifier: MIT
// The writer of outlines for people: one value a line, indented by depth, after its key or index.

#include <string>
#include <string_view>

#include "base/DecimalText.h"
#include "base/HexText.h"
#include "base/Printable.h"
#include "base/Utf.h"
#include "formats/Format.h"
#include "formats/Paint.h"
#include "formats/Visitor.h"

namespace PosUtil {

namespace {

// Below this level a number shows the depth, and the indentation stays the same.
constexpr std::size_t kDeepestIndent = 50;
constexpr std::size_t kShownBytes = 16;

std::string Quoted(std::string_view text) {
  std::string out = "\"";
  AppendPrintable(out, text, Quotes::kEscaped);
  return out += '"';
}

// Other keys appear in quotes, because they look like a part of the outline.
bool IsPlainKey(std::string_view key) {
  if (key.empty() || key.front() == '[' || key.front() == '"' || key.front() == ' ' ||
      key.back() == ' ' || key.find_first_of(":\\") != std::string_view::npos) {
    return false;
  }
  std::string printable;
  AppendPrintable(printable, key);
  return printable == key;
}

std::string Hex(const unsigned char* data, std::size_t size) {
  std::string out;
  for (std::size_t i = 0; i < size && i < kShownBytes; ++i) {
    (out += ' ') += HexText(data[i]).View();
  }
  return size > kShownBytes ? out + " ..." : out;
}

template <class Colours>
class TreeVisitor final : public Visitor {
 public:
  TreeVisitor(Colours colours, Indent indent, Output& out)
      : fColours(colours), fIndent(indent), fOut(out) {}

  void At(const Place& place) override {
    if (place.fDepth == 0) return;
    fOut.Put('\n');
    fIndent.Put(fOut, std::min(place.fDepth - 1, kDeepestIndent));
    if (place.fDepth - 1 > kDeepestIndent) {
      Put(&Style::fNote, "(" + std::to_string(place.fDepth) + ") ");
    }
    if (place.fKey) {
      Put(&Style::fKey, IsPlainKey(place.fKey) ? place.fKey : Quoted(place.fKey));
    } else {
      Put(&Style::fNote, "[" + std::to_string(place.fIndex) + "]");
    }
    fOut.Put(": ");
  }

  void Number(double value) override { Put(&Style::fNumber, DecimalText(value).View()); }
  void String(const char* text) override { Put(&Style::fString, Quoted(text)); }
  void UnicodeString(const unsigned short* units) override {
    std::string text;
    if (Utf16ToUtf8(units, text)) {
      Put(&Style::fString, "u" + Quoted(text));
    } else {
      Put(&Style::fString, Units(units));
    }
  }
  void BinData(const char* typeName, const unsigned char* data, std::size_t size) override {
    Put(&Style::fNote, "binary data " + Quoted(typeName) + ", " + std::to_string(size) +
                           (size == 1 ? " byte" : " bytes") + (size > 0 ? ":" : ""));
    Put(&Style::fNumber, Hex(data, size));
  }
  void RawPointer(const void*) override { Put(&Style::fNote, "raw pointer"); }
  void EmptySlot() override { Put(&Style::fNote, "(empty)"); }

  void BeginArray(std::size_t count) override {
    Put(&Style::fNote, count == 0 ? "empty array" : "array of " + std::to_string(count));
  }
  void BeginDict(POSDict*) override { Put(&Style::fNote, "dictionary"); }
  void EndArray(const Place&, std::size_t) override {}
  void EndDict(const Place&, std::size_t) override {}

 private:
  void Put(const char* Style::*colour, std::string_view text) {
    fColours.In(colour, fOut, [&] { fOut.Put(text); });
  }

  // A Unicode string with a lone surrogate is not a sequence of characters.
  static std::string Units(const unsigned short* units) {
    std::string out = "units";
    for (; *units; ++units) (out += ' ') += HexText(*units).View();
    return out;
  }

  const Colours fColours;
  const Indent fIndent;
  Output& fOut;
};

class TreeWriter final : public Writer {
 public:
  TreeWriter() : Writer(1, "tree", Layouts::kIndented, "\n\n") {}

  void Write(const KAP_T_MT::CPOSObject& object, const std::string& document,
             const WriteOptions& options, Output& out) const override {
    WithPaint(options.fStyle, [&](auto paint) {
      TreeVisitor visitor(paint, options.fIndent, out);
      Visit(object, document, visitor);
    });
  }
} gTreeWriter;

}  // namespace

}  // namespace PosUtil
