// SPDX-License-Identifier: MIT
#include "formats/notation/NotationText.h"

#include <algorithm>
#include <vector>

#include "base/Printable.h"

namespace PosUtil {

namespace {

constexpr std::string_view kSpace = " \t\r\n";
constexpr std::size_t kLongest = 100;         // of a string or number, in bytes
constexpr std::size_t kLongestUnicode = 401;  // in digits

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Follows the tokens up to the first that does not fit.
class FaultFinder {
 public:
  explicit FaultFinder(std::string_view text) : fText(text) {}

  NotationFault Find(std::size_t stop) {
    for (;;) {
      const Token token = NextNotationToken(fText, fAt);
      fAt = token.fEnd;
      std::string message = Check(token);
      if (!message.empty()) {
        return {token.fKind == Token::kEnd || IsCut(token) ? EndOfText() : token.fBegin,
                std::move(message)};
      }
      if (token.fKind == Token::kEnd) return {stop, "syntax error"};
    }
  }

 private:
  struct Level {
    bool fIsDict;
    std::string fKey;
    bool fHasKey;
  };

  std::string Check(const Token& token) {
    const std::string_view bytes = fText.substr(token.fBegin, token.fEnd - token.fBegin);
    if (fIsComplete) {
      return token.fKind == Token::kEnd
                 ? ""
                 : "unexpected text after the object; text notation holds one";
    }
    switch (token.fKind) {
      case Token::kEnd:
        return fAt == 0 || EndOfText() == 0 ? "no object in the text"
                                            : "unexpected end of the text; expected " + Expected();
      case Token::kEndDict:
      case Token::kEndArray:
        return CheckEnd(token.fKind == Token::kEndDict, bytes);
      case Token::kScalar:
        if (std::string fault = LexicalFault(token, bytes); !fault.empty()) return fault;
        if (NeedsKey()) return CheckKey(bytes);
        EndValue();
        return "";
      default:
        if (NeedsKey()) return "unexpected '" + std::string(bytes) + "'; expected " + Expected();
        fLevels.push_back({token.fKind == Token::kBeginDict, "", false});
        return "";
    }
  }

  std::string CheckEnd(bool isDict, std::string_view bytes) {
    const bool fits =
        !fLevels.empty() && fLevels.back().fIsDict == isDict && !fLevels.back().fHasKey;
    if (!fits) return "unexpected '" + std::string(bytes) + "'; expected " + Expected();
    fLevels.pop_back();
    EndValue();
    return "";
  }

  std::string CheckKey(std::string_view bytes) {
    if (!IsLetter(bytes[0]) && bytes[0] != '(') {
      return std::string(bytes[0] == '`' ? "a Unicode string" : "a number") +
             " cannot be a key; expected " + Expected();
    }
    fLevels.back().fKey = NotationKey(bytes);
    fLevels.back().fHasKey = true;
    return "";
  }

  std::string LexicalFault(const Token& token, std::string_view bytes) const {
    const char first = bytes[0];
    const bool isQuoted = first == '(' || first == '`';
    if (IsCut(token)) return "unexpected end of the text in a string";
    const std::size_t length = bytes.size() - (isQuoted ? 2 : 0);
    if (first == '`') {
      if (length > kLongestUnicode) return "Unicode string longer than 100 units";
      const bool isHex = bytes.substr(1, length).find_first_not_of("0123456789abcdefABCDEF") ==
                         std::string_view::npos;
      return isHex && length % 4 == 0
                 ? ""
                 : "malformed Unicode string; expected four hexadecimal digits for each unit";
    }
    if (IsLetter(first) || first == '(') {
      return length > kLongest ? "string longer than 100 characters" : "";
    }
    if (!IsDigit(first) && std::string_view("+-.").find(first) == std::string_view::npos) {
      return "no value starts with this character; expected " + Expected();
    }
    return length > kLongest ? "number longer than 100 characters" : "";
  }

  bool IsCut(const Token& token) const {
    if (token.fKind != Token::kScalar) return false;
    const std::string_view bytes = fText.substr(token.fBegin, token.fEnd - token.fBegin);
    if (bytes[0] != '(' && bytes[0] != '`') return false;
    const char close = bytes[0] == '(' ? ')' : '`';
    // The token ends where a longer text would go on.
    return EndOfLiteral(std::string(bytes) + close, 0, close) > bytes.size();
  }

  bool NeedsKey() const {
    return !fLevels.empty() && fLevels.back().fIsDict && !fLevels.back().fHasKey;
  }
  void EndValue() {
    fIsComplete = fLevels.empty();
    if (!fIsComplete) fLevels.back().fHasKey = false;
  }
  std::string Expected() const {
    if (fLevels.empty()) return "a value";
    const Level& level = fLevels.back();
    if (!level.fIsDict) return "a value or ']'";
    return level.fHasKey ? "a value for \"" + Printable(level.fKey) + "\"" : "a key or '>'";
  }
  std::size_t EndOfText() const { return fText.find_last_not_of(kSpace) + 1; }

  const std::string_view fText;
  std::size_t fAt = 0;
  std::vector<Level> fLevels;
  bool fIsComplete = false;
};

}  // namespace

Token NextNotationToken(std::string_view text, std::size_t at) {
  at = Skip(text, at, kSpace);
  if (at == text.size()) return {Token::kEnd, at, at};
  const char first = text[at];
  std::size_t end = at + 1;
  if (const auto bracket = BracketToken(text, at, '<', '>')) return *bracket;
  if (first == '(') return {Token::kScalar, at, EndOfLiteral(text, at, ')')};
  if (first == '`') return {Token::kScalar, at, EndOfLiteral(text, at, '`')};
  if (IsLetter(first)) {
    while (end < text.size() && (IsLetter(text[end]) || IsDigit(text[end]))) ++end;
  } else if (IsDigit(first) || first == '+' || first == '-' || first == '.') {
    while (end < text.size() && (IsDigit(text[end]) || text[end] == '.')) ++end;
  }
  return {Token::kScalar, at, end};
}

bool StartsNotation(char first) {
  return IsLetter(first) || IsDigit(first) ||
         std::string_view("<[(`+-.").find(first) != std::string_view::npos;
}

std::string NotationKey(std::string_view token) {
  if (!token.starts_with('(')) return std::string(token);
  std::string key;
  for (std::size_t i = 1; i + 1 < token.size(); ++i) {
    if (token[i] == '\\') ++i;
    key += token[i];
  }
  return key;
}

NotationFault FindNotationFault(std::string_view text, std::size_t stop) {
  return FaultFinder(text).Find(stop);
}

}  // namespace PosUtil
