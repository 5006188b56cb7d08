// SPDX-License-Identifier: MIT
#pragma once

#include "posimpl/base/BaseObject.h"
#include "posimpl/base/NestingGuard.h"
#include "posimpl/notation/TextToken.h"
#include "posimpl/objects/Dict.h"

namespace NPOSObjectImpl {

class Array;

// Reads objects in text notation:
//
//   text       := object                    whitespace may stand between any two items
//   object     := dictionary | array | string | unicode | number
//   dictionary := "<" (key object)* ">"     key: a string; of two equal ones the later counts
//   array      := "[" object* "]"
//   string     := word | "(" text ")"       word: letters, digits, "_", not beginning with a digit
//   unicode    := "`" (four hexadecimal digits)* "`"
//   number     := digits, "+", "-", "."     what strtod makes of it in the C locale; no exponent
//
// Example: < name (Anna \(Ana\)) born 1978 tags [a b] >. Tokens are read without allocating. All or
// nothing: what was built before a failure is released with it.
class TextReader {
 public:
  explicit TextReader(const char* text) noexcept : fCursor(text) {}

  // The one object that the text consists of. CFTParseError for a syntax error, POSException for
  // text that is nested too deep, and the host's errors.
  CPOSObject ReadText();

  const char* Cursor() const noexcept { return fCursor; }  // the place reached

 private:
  // These return one reference for the caller. What needs large tokens on the stack is not inline.
  POSObject* textGetNextObject() { return ReadItem(SkipToItem()); }
  POSObject* ReadItem(char first);
  POSObject* ReadBracketed(char bracket);
  [[gnu::noinline]] POSObject* ReadString();
  [[gnu::noinline]] POSObject* ReadUnicode();
  void ReadElements(Array& array);
  [[gnu::noinline]] void ReadEntries(Dict& dict);
  const char* ReadKey(StringToken& token);

  char SkipToItem();
  char SkipToItemOrEnd(char bracket);
  [[noreturn]] void FailAtBracket();

  const char* fCursor;
  NestingStack& fStack = NestingStack::OnThisThread();
};

// The object written in `text`, and null in `*end`. A syntax error: an empty object, and where the
// reader stopped. Any other failure is thrown, with the position reached in `*end`. `end` may be
// null.
CPOSObject CreateFromText(const char* text, const char** end);

}  // namespace NPOSObjectImpl
