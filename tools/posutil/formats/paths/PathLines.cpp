// SPDX-License-Identifier: MIT
#include "formats/paths/PathLines.h"

#include <cmath>
#include <utility>

#include "base/DecimalText.h"
#include "base/HexText.h"
#include "base/Printable.h"
#include "base/Utf.h"
#include "formats/json/Base64.h"
#include "formats/json/TaggedJson.h"

namespace PosUtil {

namespace {

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = Utf8CharacterLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

// As a JSON string. Of invalid UTF-8, each byte appears as \xNN, which JSON does not have.
std::string Quoted(std::string_view text) {
  std::string out = "\"";
  if (!IsUtf8(text)) {
    AppendPrintable(out, text, Quotes::kEscaped);
    return out += '"';
  }
  while (!text.empty()) {
    const std::string_view character = text.substr(0, Utf8CharacterLength(text));
    text.remove_prefix(character.size());
    const char c = character[0];
    if (c == '"' || c == '\\') out += '\\';
    if (c == '\n' || c == '\t' || c == '\r') {
      out += c == '\n' ? "\\n" : c == '\t' ? "\\t" : "\\r";
    } else if (IsUnsafe(character)) {
      (out += "\\u") += HexText(static_cast<unsigned short>(Utf8Decode(character))).View();
    } else {
      out += character;
    }
  }
  return out += '"';
}

std::string Member(const char* key, std::string_view value) {
  return '"' + std::string(key) + "\":" + Quoted(value);
}

}  // namespace

PathLines::PathLines(const Options& options, const ValuePath& place, Output& out)
    : fOptions(options), fOuterDepth(place.size()), fOut(out), fLevels{{0, 0, true}} {
  for (const PathStep& step : place) Enter(step);
}

void PathLines::Enter(const PathStep& step) {
  bool isDeep = fLevels.back().fIsDeep;
  if (step.fIsIndex) {
    AppendIndex(fDeep, step.fIndex);
    AppendPointerIndex(fPointer, step.fIndex);
  } else {
    isDeep = isDeep && IsDeepKey(step.fKey, fLevels.size() == 1);
    AppendKey(fDeep, step.fKey);
    AppendPointerKey(fPointer, step.fKey);
  }
  fLevels.push_back({fDeep.size(), fPointer.size(), isDeep});
}

void PathLines::ReturnTo(std::size_t depth) {
  fLevels.resize(fOuterDepth + depth + 1, {0, 0, true});
  fDeep.resize(fLevels.back().fDeepSize);
  fPointer.resize(fLevels.back().fPointerSize);
}

void PathLines::At(const Place& place) {
  if (place.fDepth == 0) return;
  POSDict* const dict = std::exchange(fNewDict, nullptr);
  const bool isEscaped = std::exchange(fIsEscaped, false);
  const bool looksKept = fOptions.fRestoresKept && dict && fKept.IsKept(dict, place.fKey);
  fIsKept = looksKept && !isEscaped;
  if (fIsKept) return;  // the path stays that of the dictionary
  ReturnTo(place.fDepth - 1);
  Enter(place.fKey ? PathStep(std::string(place.fKey)) : PathStep(place.fIndex));
}

void PathLines::PutLine(std::string_view value) {
  const bool isPointer = fOptions.fAsPointers || !fLevels.back().fIsDeep;
  std::string path;
  AppendPrintable(path, isPointer ? fPointer : fDeep);
  fOut.Put(fOptions.fMargin);
  fOut.Put(fOptions.fStyle.fKey);
  fOut.Put(path);
  fOut.Put(fOptions.fStyle.fPlain);
  fOut.Put(" = ");
  fOut.Put(value);
  fOut.Put('\n');
}

void PathLines::Number(double value) {
  std::string text(DecimalText(value).View());
  if (value == 0 && std::signbit(value)) text += ".0";
  PutLine(text);
}

void PathLines::String(const char* text) { PutLine(fIsKept ? text : Quoted(text)); }

void PathLines::UnicodeString(const unsigned short* units) {
  std::string text;
  if (Utf16ToUtf8(units, text)) return PutLine('{' + Member(kUnicodeTag, text) + '}');
  text = "units";
  for (; *units; ++units) (text += ' ') += HexText(*units).View();
  PutLine(text);
}

void PathLines::BinData(const char* typeName, const unsigned char* data, std::size_t size) {
  PutLine('{' + Member(kBinaryTag, typeName) + ',' +
          Member(kBase64Member, Base64Encode(data, size)) + '}');
}

void PathLines::BeginArray(std::size_t count) {
  if (count == 0) PutLine("[]");
}

// A dictionary in one that looks kept: that one is an escape, which JSON does not have.
void PathLines::BeginDict(POSDict* dict) {
  fNewDict = dict;
  fIsEscaped = std::exchange(fIsKept, false);
  if (fIsEscaped) fLevels.push_back(Level(fLevels.back()));
}

void PathLines::EndDict(const Place& place, std::size_t count) {
  fNewDict = nullptr;
  if (count > 0) return;
  ReturnTo(place.fDepth);
  PutLine("{}");
}

}  // namespace PosUtil
