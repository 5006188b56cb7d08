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
  CPOSObject object(textGetNextObject(), KAPAdopt());
  while (KindOf(*fCursor) == TokenKind::kSpace) ++fCursor;
  if (*fCursor != '\0') throw CFTParseError("Unexpected characters after object");
  return object;
}

// Skips the white space before an item and returns the first character of the item. At the end of
// the text it throws.
char TextReader::SkipToItem() {
  while (KindOf(*fCursor) == TokenKind::kSpace) ++fCursor;
  if (*fCursor == '\0') [[unlikely]]
    throw CFTParseError("Empty text string");
  return *fCursor;
}

// The same; consumes the bracket if that is what comes next, and returns 0 for it. The other kind
// of bracket is a syntax error here.
char TextReader::SkipToItemOrEnd(char bracket) {
  const char next = SkipToItem();
  if (KindOf(next) != TokenKind::kClose) return next;
  if (next != bracket) FailAtBracket();
  ++fCursor;
  return 0;
}

void TextReader::FailAtBracket() {
  throw CFTParseError(*fCursor++ == '>' ? "Unexpected >" : "Unexpected ]");
}

POSObject* TextReader::ReadItem(char first) {
  switch (KindOf(first)) {
    case TokenKind::kNumber:
      return Number::NewContainer(ReadNumberToken(fCursor));
    case TokenKind::kWord:
    case TokenKind::kParen:
      return ReadString();
    case TokenKind::kUnicode:
      return ReadUnicode();
    case TokenKind::kOpen:
      return ReadBracketed(first);
    case TokenKind::kClose:
      FailAtBracket();
    default:
      throw CFTParseError("Unexpected character");
  }
}

POSObject* TextReader::ReadString() {
  StringToken token;
  return String::NewContainer(token.Read(fCursor));
}

POSObject* TextReader::ReadUnicode() {
  UnicodeToken token;
  return UnicodeString::NewContainer(token.Read(fCursor));
}

POSObject* TextReader::ReadBracketed(char bracket) {
  const NestingGuard guard(fStack);
  ++fCursor;
  if (bracket == '[') {
    Made<Array> array;
    ReadElements(array.fInstance);
    return array.fObject.Detach();
  }
  Made<Dict> dict;
  ReadEntries(dict.fInstance);
  return dict.fObject.Detach();
}

void TextReader::ReadElements(Array& array) {
  while (const char first = SkipToItemOrEnd(']')) array.AppendNew(ReadItem(first));
}

void TextReader::ReadEntries(Dict& dict) {
  while (SkipToItemOrEnd('>') != 0) {
    StringToken token;
    CKAPStringAtom key(ReadKey(token));
    CPOSObject value(textGetNextObject(), KAPAdopt());
    dict.Put(
        key.Text(), [&] { return std::move(key); }, std::move(value));
  }
}

// Anything but a string is read to its end, so that the error points to what follows it.
const char* TextReader::ReadKey(StringToken& token) {
  const TokenKind kind = KindOf(*fCursor);
  if (kind == TokenKind::kWord || kind == TokenKind::kParen) return token.Read(fCursor);
  const CPOSObject ignored(textGetNextObject(), KAPAdopt());
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
