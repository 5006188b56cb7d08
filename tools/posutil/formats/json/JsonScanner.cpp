// SPDX-License-Identifier: MIT
#include "formats/json/JsonScanner.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "base/DecimalText.h"
#include "base/Printable.h"
#include "base/Utf.h"
#include "base/ValueError.h"
#include "formats/json/JsonNumber.h"
#include "formats/json/JsonText.h"
#include "formats/json/PlainText.h"

namespace PosUtil {

namespace {

constexpr char kValue[] = "a value";
constexpr std::size_t kExactDigits = 15;  // a normal double shows every number of so many digits
constexpr std::size_t kLongestWord = 20;  // in messages

bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

// Skips the bytes that a string may hold without a look at them: ASCII but for quotes, backslashes
// and control characters. Stops at the padding of the window, too.
char* SkipPlain(char* text) {
  for (;; text += 16) {
    if (const unsigned unusual = UnusualBytes(text)) return text + std::countr_zero(unusual);
  }
}

bool IsHighSurrogate(unsigned unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(unsigned unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

std::string Brief(std::string_view text) {
  return text.size() <= 2 * kLongestWord ? std::string(text)
                                         : std::string(text.substr(0, kLongestWord)) + "...";
}

// Such doubles have fewer digits, down to one.
bool IsSubnormal(double value) { return value != 0 && std::fabs(value) < DBL_MIN; }

// Returns whether a double shows as these digits when it is rounded to as many. Zeros at the end
// do not count: 0.10000000000000000 is 0.1.
bool HasTheseDigits(std::string_view text, double value) {
  if (DecimalText(value).View() == text) return true;  // as most programs write it
  std::string digits;
  for (const char c : text.substr(0, text.find_first_of("eE"))) {
    if (IsDigit(c) && (c != '0' || !digits.empty())) digits += c;
  }
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.size() <= kExactDigits && !IsSubnormal(value)) return true;
  std::string shown(digits.size() + 10, '\0');
  const auto end = std::to_chars(shown.data(), shown.data() + shown.size(), std::fabs(value),
                                 std::chars_format::scientific, static_cast<int>(digits.size() - 1))
                       .ptr;
  shown.erase(static_cast<std::size_t>(end - shown.data()));
  shown.erase(1, 1);  // the point
  return shown.starts_with(digits);
}

}  // namespace

JsonScanner::JsonScanner(InputWindow& input, JsonBuilder& builder, LossMode mode, Nulls nulls,
                         Losses& losses)
    : fInput(input),
      fBuilder(builder),
      fMode(mode),
      fNulls(nulls),
      fLosses(losses),
      fToken(input.Data()),
      fNext(fToken),
      fEnd(fToken + input.Size()) {}

bool JsonScanner::SkipSpace() {
  for (;;) {
    while (IsSpace(*fNext)) ++fNext;
    if (fNext < fEnd) return true;
    fToken = fNext;
    if (!More()) return false;
  }
}

void JsonScanner::ReadDocument() {
  fIsObject.clear();
  try {
    ReadValues();
  } catch (const ValueError& error) {
    throw UnheldValue(fInput.ErrorAt(Index(fToken), WithPath(error.what())));
  }
}

void JsonScanner::SkipDocument() {
  fBuilder.Drop();
  while (!fIsObject.empty()) {
    if (!SkipSpace()) FailExpecting("the end of the document");
    fToken = fNext;
    switch (*fNext) {
      case '"':
        ScanString();
        continue;
      case '[':
      case '{':
        fIsObject.push_back(false);
        break;
      case ']':
      case '}':
        fIsObject.pop_back();
        break;
      default:
        break;
    }
    ++fNext;
  }
}

void JsonScanner::ReadValues() {
  bool isFirst = ReadValue(kValue);
  while (!fIsObject.empty()) {
    const bool isObject = fIsObject.back();
    const bool hasMore = SkipSpace();
    if (hasMore && *fNext == (isObject ? '}' : ']')) {
      fToken = fNext++;
      fIsObject.pop_back();
      isObject ? fBuilder.EndObject() : fBuilder.EndArray();
      isFirst = false;
      continue;
    }
    if (!isFirst) {
      if (!hasMore || *fNext != ',') FailExpecting(isObject ? "',' or '}'" : "',' or ']'");
      ++fNext;
    }
    if (isObject) ReadKey(isFirst ? "a string or '}'" : "a string");
    isFirst = ReadValue(isFirst && !isObject ? "a value or ']'" : kValue);
  }
}

// Returns whether the value is a container, which is open now.
bool JsonScanner::ReadValue(const char* expected) {
  if (!SkipSpace()) FailExpecting(expected);
  fToken = fNext;
  switch (*fNext) {
    case '"':
      return ReadString(), false;
    case '[':
    case '{': {
      const bool isObject = *fNext++ == '{';
      isObject ? fBuilder.BeginObject() : fBuilder.BeginArray();
      fIsObject.push_back(isObject);
      return true;
    }
    case 't':
      return ReadTruth("true", expected), false;
    case 'f':
      return ReadTruth("false", expected), false;
    case 'n':
      return ReadNull(expected), false;
    default:
      if (!IsDigit(*fNext) && *fNext != '-') FailExpecting(expected);
      return ReadNumber(), false;
  }
}

void JsonScanner::ReadKey(const char* expected) {
  if (!SkipSpace() || *fNext != '"') FailExpecting(expected);
  const std::string_view key = ScanString();
  const bool isEscaped = key.data() == fText.data();
  if (!isEscaped) fNext[-1] = '\0';  // the library needs the end of a text, not its length
  const bool isRepeated = fBuilder.Key(key, isEscaped);
  if (!isEscaped) fNext[-1] = '"';
  if (isRepeated) {
    if (fMode == LossMode::kKeep) {
      FailAt(fToken,
             "the key \"" + Printable(Brief(key)) +
                 "\" is repeated, and --loss=keep cannot keep both values; --loss=warn reads "
                 "the last one");
    }
    Lose(LossKind::kRepeated,
         "the key \"" + Printable(Brief(key)) + "\" is repeated; only its last value counts");
  }
  if (!SkipSpace() || *fNext != ':') FailExpecting("':'");
  ++fNext;
}

void JsonScanner::ReadString() {
  const std::string_view text = ScanString();
  const bool isEscaped = text.data() == fText.data();
  if (!isEscaped) fNext[-1] = '\0';
  fBuilder.String(text, isEscaped);
  if (!isEscaped) fNext[-1] = '"';
}

// The text is in fText or in the window; there, a quote follows it.
std::string_view JsonScanner::ScanString() {
  fToken = fNext++;
  std::ptrdiff_t run = 1;  // the part of the token from here on is not yet in fText
  bool isEscaped = false;
  for (;;) {
    fNext = SkipPlain(fNext);
    if (*fNext == '"') break;
    if (*fNext != '\\') {
      SkipUnusual();
      continue;
    }
    if (!isEscaped) fText.clear();
    isEscaped = true;
    fText.append(fToken + run, fNext);
    ReadEscape();
    run = fNext - fToken;
  }
  const std::string_view rest(fToken + run, static_cast<std::size_t>(fNext - fToken - run));
  ++fNext;
  if (!isEscaped) return rest;
  return fText.append(rest);
}

// Skips a character past ASCII, or reads more bytes.
void JsonScanner::SkipUnusual() {
  if (static_cast<unsigned char>(*fNext) >= 0x80) {
    const auto left = static_cast<std::size_t>(fEnd - fNext);
    std::size_t length = Utf8CharacterLength({fNext, left});
    if (length == 0 && left < 4) {
      Has(4);
      length = Utf8CharacterLength({fNext, static_cast<std::size_t>(fEnd - fNext)});
    }
    if (length == 0) FailAt(fNext, "invalid UTF-8 in a string");
    fNext += length;
  } else if (fNext < fEnd) {
    FailAt(fNext, "a control character in a string; write it as an escape such as \\u000a");
  } else if (!More()) {
    FailAt(fEnd, "unexpected end of input in a string");
  }
}

void JsonScanner::ReadEscape() {
  if (!Has(2)) FailAt(fEnd, "unexpected end of input in a string");
  if (fNext[1] != 'u') {
    const char character = JsonEscape(fNext[1]);
    if (character == '\0') FailAt(fNext, "unknown escape in a string");
    fText += character;
    fNext += 2;
    return;
  }
  unsigned code = ScanUnit(2);
  std::size_t length = 6;
  if (IsHighSurrogate(code) && Has(8) && fNext[6] == '\\' && fNext[7] == 'u') {
    const unsigned low = ScanUnit(8);
    if (IsLowSurrogate(low)) {
      code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
      length = 12;
    }
  }
  if (code >= 0xD800 && code <= 0xDFFF) FailAt(fNext, "half of a surrogate pair in a string");
  AppendUtf8(fText, code);
  fNext += length;
}

unsigned JsonScanner::ScanUnit(std::size_t offset) {
  unsigned unit = 0;
  const bool hasAll = Has(offset + 4);
  const char* const begin = fNext + offset;
  const char* const end = hasAll ? begin + 4 : fEnd;
  const char* const stop = std::from_chars(begin, end, unit, 16).ptr;
  if (stop == end && !hasAll) FailAt(fEnd, "unexpected end of input in a string");
  if (stop != end) FailAt(begin - 2, "expected four hexadecimal digits after \\u");
  return unit;
}

void JsonScanner::ReadWord(std::string_view word, const char* expected) {
  if (!Has(word.size()) || std::string_view(fNext, word.size()) != word) FailExpecting(expected);
  fNext += word.size();
}

void JsonScanner::ReadTruth(std::string_view word, const char* expected) {
  ReadWord(word, expected);
  if (fMode == LossMode::kKeep) return fBuilder.Kept(word);
  const std::string text(word);
  Lose(LossKind::kTruth, text + " is read as the string \"" + text + "\"");
  fBuilder.Word(word);
}

void JsonScanner::ReadNull(const char* expected) {
  ReadWord("null", expected);
  if (fMode == LossMode::kKeep) return fBuilder.Kept("null");
  if (fNulls == Nulls::kMarked) return fBuilder.MarkNull();
  if (!fIsObject.empty() && fIsObject.back()) {
    Lose(LossKind::kNull, "a member with the value null is dropped");
  }
  fBuilder.Null();
}

void JsonScanner::ReadNumber() {
  JsonNumber number(fToken);
  while (number.fEnd == fEnd) {
    fNext = fEnd;
    const bool hasMore = MoreDigits();
    number = JsonNumber(fToken);
    if (!hasMore) break;
  }
  fNext = fToken + (number.fEnd - fToken);
  if (!number.fIsValid) {
    if (fNext == fEnd) FailAt(fEnd, "unexpected end of input in a number");
    FailAt(fToken, "malformed number");
  }
  // Two documents may follow each other without space, but 01 is not two of them.
  if (IsDigit(*fNext) || IsLetter(*fNext) || *fNext == '+' || *fNext == '-' || *fNext == '.') {
    FailAt(fToken, "malformed number");
  }
  const std::string_view text(fToken, static_cast<std::size_t>(fNext - fToken));
  if (!number.fIsWhole) return ReadReal(text);
  if (text.size() > kExactDigits) return ReadInteger(text);
  const auto value = static_cast<double>(number.fWhole);
  fBuilder.Number(*fToken == '-' ? -value : value);
}

void JsonScanner::ReadInteger(std::string_view text) {
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc()) return ReadLarge(text);
  // The text has the exact digits of the double, not the shortest ones followed by zeros.
  if (DecimalText(value, DecimalText::kWithoutExponent).View() == text) {
    fBuilder.Number(value);
  } else {
    AddInexact(LossKind::kInteger, text, value);
  }
}

void JsonScanner::ReadReal(std::string_view text) {
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc()) {  // `value` does not show which limit it is
    value = std::strtod(std::string(text).c_str(), nullptr);
    if (std::isinf(value)) return ReadLarge(text);
    AddInexact(LossKind::kSmall, text, value);
  } else if ((text.size() > kExactDigits || IsSubnormal(value)) && !HasTheseDigits(text, value)) {
    AddInexact(LossKind::kDigits, text, value);
  } else {
    fBuilder.Number(value);
  }
}

void JsonScanner::ReadLarge(std::string_view text) {
  if (fMode == LossMode::kKeep) return fBuilder.Kept(text);
  throw UnheldValue(fInput.ErrorAt(Index(fToken), WithPath("the number " + Brief(text) +
                                                           " is too large; --loss=keep keeps it")));
}

void JsonScanner::AddInexact(LossKind kind, std::string_view text, double value) {
  if (fMode == LossMode::kKeep) return fBuilder.Kept(text);
  Lose(kind, "the number " + Brief(text) + " is read as " + std::string(DecimalText(value).View()));
  fBuilder.Number(value);
}

void JsonScanner::Lose(LossKind kind, const std::string& text) {
  fLosses.Add(kind, [&] { return Losses::First{fInput.NameOf(Index(fToken)), text}; });
}

// Makes more bytes follow fNext. Returns false at the end of the input.
bool JsonScanner::More() {
  const std::size_t token = Index(fToken);
  const std::size_t next = Index(fNext);
  const std::size_t discarded = fInput.Refill(token);
  fToken = fInput.Data() + (token - discarded);
  fNext = fInput.Data() + (next - discarded);
  fEnd = fInput.Data() + fInput.Size();
  return !fInput.IsAtEnd();
}

// Makes more bytes follow fNext, up to one that is not a digit: a new scan of a number after each
// read would take quadratic time. Returns false at the end of the input.
bool JsonScanner::MoreDigits() {
  while (fNext == fEnd) {
    if (!More()) return false;
    while (IsDigit(*fNext)) ++fNext;
  }
  return true;
}

bool JsonScanner::Has(std::size_t count) {
  while (static_cast<std::size_t>(fEnd - fNext) < count) {
    if (!More()) return false;
  }
  return true;
}

SyntaxError JsonScanner::ErrorHere(const std::string& message) const {
  return fInput.ErrorAt(Index(fNext), message);
}

void JsonScanner::FailExpecting(const std::string& expected) const {
  const std::string message = "unexpected " + Found() + "; expected " + expected;
  if (fNext < fEnd) FailAt(fNext, message);
  throw fInput.ErrorAfterText(WithPath(message));  // not past the last line
}

std::string JsonScanner::Found() const {
  const std::string_view rest(fNext, static_cast<std::size_t>(fEnd - fNext));
  if (rest.empty()) return "end of input";
  if (rest[0] == '"') return "string";
  if (rest[0] == '\0') return "zero character";
  if (IsDigit(rest[0]) || rest[0] == '-') return "number";
  std::size_t length = 0;
  while (length < rest.size() && length < kLongestWord && IsLetter(rest[length])) ++length;
  if (length == 0) length = std::max<std::size_t>(Utf8CharacterLength(rest), 1);
  return "'" + Printable(rest.substr(0, length)) + "'";
}

void JsonScanner::FailAt(const char* place, const std::string& message) const {
  throw fInput.ErrorAt(Index(place), WithPath(message));
}

std::string JsonScanner::WithPath(const std::string& message) const {
  const std::string path = fBuilder.Path();
  return message + (path.empty() ? "" : " (at " + Printable(path) + ")");
}

}  // namespace PosUtil
