// SPDX-License-Identifier: MIT
#include "posimpl/notation/TextReader.h"

#include "kapimpl/base/Required.h"
#include "posimpl/base/NestingGuard.h"
#include "posimpl/base/ObjectKind.h"
#include "posimpl/objects/Array.h"
#include "posimpl/objects/Number.h"
#include "posimpl/objects/String.h"
#include "posimpl/objects/UnicodeString.h"

namespace NPOSObjectImpl {

using KAP_T_MT::CKAPStringAtom;
using KAP_T_MT::KAPAdopt;

CPOSObject TextReader::ReadText() {
  CPOSObject object = textGetNextObject();
  while (KindOf(*fCursor) == TokenKind::kSpace) ++fCursor;
  if (*fCursor != '\0') throw CFTParseError("Unexpected characters after object");
  return object;
}

// Skips the white space before an item and returns the first character of the item. At the end of
// the text it throws.
char TextReader::SkipToItem() {
  while (KindOf(*fCursor) == TokenKind::kSpace) ++fCursor;
  ExpectMore();
  return *fCursor;
}

void TextReader::ExpectMore() const {
  if (*fCursor == '\0') throw CFTParseError("Empty text string");
}

void TextReader::FailAtBracket() {
  throw CFTParseError(*fCursor++ == '>' ? "Unexpected >" : "Unexpected ]");
}

CPOSObject TextReader::textGetNextObject() {
  const char first = SkipToItem();
  switch (KindOf(first)) {
    case TokenKind::kOpen:
      return ReadBracketed(first);
    case TokenKind::kClose:
      FailAtBracket();
    default:
      return ReadScalar();
  }
}

CPOSObject TextReader::ReadScalar() {
  switch (KindOf(*fCursor)) {
    case TokenKind::kWord:
    case TokenKind::kParen: {
      StringToken token;
      return CPOSObject(String::NewContainer(token.Read(fCursor)), KAPAdopt());
    }
    case TokenKind::kUnicode: {
      UnicodeToken token;
      return CPOSObject(UnicodeString::NewContainer(token.Read(fCursor)), KAPAdopt());
    }
    case TokenKind::kNumber:
      return CPOSObject(Number::NewContainer(ReadNumberToken(fCursor)), KAPAdopt());
    default:
      throw CFTParseError("Unexpected character");
  }
}

CPOSObject TextReader::ReadBracketed(char bracket) {
  const NestingGuard guard(fStack);
  ++fCursor;
  if (bracket == '[') {
    Made<Array> array;
    ReadElements(array.fInstance);
    return std::move(array.fObject);
  }
  Made<Dict> dict;
  ReadEntries(dict.fInstance);
  return std::move(dict.fObject);
}

// Whether the next item is the closing bracket, which is consumed. The other kind of bracket is a
// syntax error here.
bool TextReader::EndsWith(char bracket) {
  const char next = SkipToItem();
  if (KindOf(next) != TokenKind::kClose) return false;
  if (next != bracket) FailAtBracket();
  ++fCursor;
  return true;
}

void TextReader::ReadElements(Array& array) {
  while (!EndsWith(']')) {
    array.Append(textGetNextObject());
    ExpectMore();
  }
}

void TextReader::ReadEntries(Dict& dict) {
  while (!EndsWith('>')) {
    StringToken token;
    CKAPStringAtom key(ReadKey(token));
    ExpectMore();
    CPOSObject value = textGetNextObject();
    dict.Put(
        key.Text(), [&] { return std::move(key); }, std::move(value));
    ExpectMore();
  }
}

// Anything but a string is read to its end, so that the error points to what follows it.
const char* TextReader::ReadKey(StringToken& token) {
  const TokenKind kind = KindOf(*fCursor);
  if (kind == TokenKind::kWord || kind == TokenKind::kParen) return token.Read(fCursor);
  textGetNextObject();
  throw CFTParseError("Expected dictionary key string");
}

CPOSObject CreateFromText(const char* text, const char** end) {
  const char* ignored = nullptr;
  if (!end) end = &ignored;
  *end = nullptr;
  TextReader reader(Required(text));
  try {
    return reader.ReadText();
  } catch (const CFTParseError&) {  // the caller gets the place, not an error
    *end = reader.Cursor();
    return {};
  } catch (...) {
    *end = reader.Cursor();
    throw;
  }
}

}  // namespace NPOSObjectImpl
