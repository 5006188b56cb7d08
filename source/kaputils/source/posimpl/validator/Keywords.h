// SPDX-License-Identifier: MIT
#pragma once

#include "posimpl/validator/PropertyObjects.h"

namespace NPOSValidatorImpl {

// A word of the schema language, to compare names with and to look attributes up by.
class Keyword : public SortableStringAtom {
 public:
  explicit Keyword(const char* text)
      : SortableStringAtom(KAP_T_MT::CKAPStringAtom(text), TextPrefix(text)) {}

  bool Is(AtomText text) const noexcept { return Text() == text; }
};

// All of them. "custom" is reserved.
struct Keywords {
  const Keyword Any{"any"};
  const Keyword Bool{"bool"};
  const Keyword Int{"int"};
  const Keyword Real{"real"};
  const Keyword String{"string"};
  const Keyword UnicodeString{"unicodestring"};
  const Keyword BinData{"bindata"};
  const Keyword KAPErrorObjRef{"kaperrorobjref"};
  const Keyword QNBaseObjRef{"qnbaseobjref"};
  const Keyword KAPObjRef{"kapobjref"};
  const Keyword RawPtr{"rawptr"};
  const Keyword Category{"category"};
  const Keyword Custom{"custom"};
  const Keyword Dict{"dict"};
  const Keyword Array{"array"};
  const Keyword Union{"union"};
  const Keyword Intersection{"intersection"};
  const Keyword True{"true"};
  const Keyword False{"false"};
  const Keyword Set{"set"};
  const Keyword Required{"required"};
  const Keyword Optional{"optional"};
  const Keyword Min{"min"};
  const Keyword MinExcl{"minexcl"};
  const Keyword Max{"max"};
  const Keyword MaxExcl{"maxexcl"};
  const Keyword MinLen{"minlen"};
  const Keyword MaxLen{"maxlen"};
  const Keyword IllegalChars{"illegalchars"};
  const Keyword OneOf{"oneof"};
  const Keyword MemberType{"membertype"};
  const Keyword ValueType{"valuetype"};
  const Keyword KeyType{"keytype"};
};

// One of them, for the tables of the language.
using KeywordName = const Keyword Keywords::*;

}  // namespace NPOSValidatorImpl
