// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>

#include "pos/POSKinds.h"

namespace NPOSValidatorImpl {

// The schema of schemas, in text notation. Its features are deliberate, the odd ones too: bounds of
// an "int" are whole numbers while lengths are any; an array type by type has no lengths;
// references have only the category "objref", which no object can be checked against.
inline constexpr char kMetaSchema[] =
    R"(<kInt             < category string oneof [int] >
kReal             < category string oneof [real] >
kString           < category string oneof [string] >
kUnicodeString    < category string oneof [unicodestring] >
kBinData          < category string oneof [bindata] >
kObjRef           < category string oneof [objref] >
kArray            < category string oneof [array] >
kDict             < category string oneof [dict] >
kUnion            < category string oneof [union] >
kIntersection     < category string oneof [intersection] >
StringList        < category array membertype string >
TypeName          < category string minlen 1 >
TypeList          < category array membertype TypeName >
IntDefn           < category dict required < category kInt >
                    optional < min int minexcl int max int maxexcl int > >
RealDefn          < category dict required < category kReal >
                    optional < min real minexcl real max real maxexcl real > >
StringDefn        < category dict required < category kString >
                    optional < minlen real maxlen real illegalchars string oneof StringList > >
UnicodeStringDefn < category dict required < category kUnicodeString >
                    optional < minlen real maxlen real > >
BinDataDefn       < category dict required < category kBinData >
                    optional < minlen real maxlen real oneof StringList > >
ObjRefDefn        < category dict required < category kObjRef > >
HomoArrayDefn     < category dict required < category kArray membertype TypeName >
                    optional < minlen real maxlen real > >
HeteroArrayDefn   < category dict required < category kArray membertype TypeList > >
ArrayDefn         < category union set [HomoArrayDefn HeteroArrayDefn] >
DictMemberName    < category string minlen 1 >
DictMemberDict    < category dict keytype DictMemberName valuetype TypeName >
DictDefn          < category dict required < category kDict >
                    optional < keytype TypeName valuetype TypeName
                               required DictMemberDict optional DictMemberDict > >
UnionDefn         < category dict required < category kUnion set TypeList > >
IntersectionDefn  < category dict required < category kIntersection set TypeList > >
TypeDefn          < category union
                    set [DictDefn ArrayDefn IntDefn RealDefn StringDefn UnicodeStringDefn
                         BinDataDefn ObjRefDefn UnionDefn IntersectionDefn] >
StructSchema      < category dict keytype TypeName valuetype TypeDefn > >)";

// The definition above that stands for the category of a kind.
constexpr std::string_view MetaSchemaCategory(KAP_T_MT::POSType type) noexcept {
  switch (type) {
    case KAP_T_MT::kPOSNumber:
      return "kReal ";
    case KAP_T_MT::kPOSString:
      return "kString ";
    case KAP_T_MT::kPOSUnicodeString:
      return "kUnicodeString ";
    case KAP_T_MT::kPOSBinData:
      return "kBinData ";
    case KAP_T_MT::kPOSRawPointer:
      return "kObjRef ";
    case KAP_T_MT::kPOSArray:
      return "kArray ";
    case KAP_T_MT::kPOSDict:
      return "kDict ";
  }
  return {};
}
// Written out: under sanitizers g++ 12 does not accept std::string_view::find in a constant
// expression.
constexpr bool MetaSchemaContains(std::string_view name) noexcept {
  for (std::size_t start = 0; start + name.size() < sizeof kMetaSchema; ++start) {
    std::size_t length = 0;
    while (length < name.size() && kMetaSchema[start + length] == name[length]) ++length;
    if (length == name.size()) return true;
  }
  return false;
}
static_assert(std::all_of(std::begin(KAP_T_MT::kPOSTypes), std::end(KAP_T_MT::kPOSTypes),
                          [](KAP_T_MT::POSType type) {
                            const std::string_view name = MetaSchemaCategory(type);
                            return !name.empty() && MetaSchemaContains(name);
                          }),
              "the schema of schemas has no category for a kind of POSType");

}  // namespace NPOSValidatorImpl
