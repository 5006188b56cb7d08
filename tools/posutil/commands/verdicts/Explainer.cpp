// SPDX-License-Identifier: MIT
#include "commands/verdicts/Explainer.h"

#include <algorithm>
#include <cstdint>
#include <tuple>

#include "base/DecimalText.h"
#include "base/Printable.h"
#include "base/Utf.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;
using Messages = std::span<const ParsedMessage>;

constexpr std::size_t kLongestFound = 60;
// Values that nest deeper have messages that end early. Calls nest as deep, and each check again
// reads the rest of the value.
constexpr std::size_t kDeepest = 400;
constexpr std::size_t kMostChecksAgain = 1000;
constexpr std::string_view kMissing = "Missing required member ";
constexpr std::string_view kUnknown = "Unknown member ";
constexpr std::string_view kNotEnumerated = "not one of the enumerated values";
// The types that need no definition.
constexpr std::string_view kIntrinsics[] = {"any",       "bool",          "int",           "real",
                                            "string",    "unicodestring", "bindata",       "rawptr",
                                            "kapobjref", "qnbaseobjref",  "kaperrorobjref"};

// The attribute of a type that a message is about; the first text that fits. A message that is not
// here is about the category. explained_messages_test.py compares this and kIntrinsics with the
// sources of the validator.
constexpr struct {
  std::string_view fStart;
  std::string_view fEnd;
  const char* fAttribute;
} kAttributes[] = {
    {"Number below", "(exclusive)", "minexcl"},
    {"Number below", "", "min"},
    {"Number above", "(exclusive)", "maxexcl"},
    {"Number above", "", "max"},
    {"String length below", "", "minlen"},
    {"String length above", "", "maxlen"},
    {"Unicode String length below", "", "minlen"},
    {"Unicode String length above", "", "maxlen"},
    {"Array length below", "", "minlen"},
    {"Array length above", "", "maxlen"},
    {"String contains illegal", "", "illegalchars"},
    {"", kNotEnumerated, "oneof"},
    {"Heterogenous array", "", "membertype"},
};

const char* AttributeOf(std::string_view text) {
  for (const auto& [start, end, attribute] : kAttributes) {
    if (text.starts_with(start) && text.ends_with(end)) return attribute;
  }
  return "category";
}

bool IsIntrinsic(std::string_view type) {
  return std::find(std::begin(kIntrinsics), std::end(kIntrinsics), type) != std::end(kIntrinsics);
}

bool IsOfAnotherKind(std::string_view text) {
  return text.ends_with("object expected") || text.ends_with("was of invalid type");
}

using Key = PathStep;
using Index = PathStep;

// The messages from the first on that have the same step at `depth`, or the first one if it has
// none there.
Messages FirstGroup(Messages messages, std::size_t depth) {
  const auto& first = messages.front().fSteps;
  std::size_t count = 1;
  while (depth < first.size() && count < messages.size() && depth < messages[count].fSteps.size() &&
         IsSameStep(messages[count].fSteps[depth], first[depth])) {
    ++count;
  }
  return messages.first(count);
}

std::vector<Messages> Groups(Messages messages, std::size_t depth) {
  std::vector<Messages> groups;
  while (!messages.empty()) {
    groups.push_back(FirstGroup(messages, depth));
    messages = messages.subspan(groups.back().size());
  }
  return groups;
}

bool IsUnion(Messages messages, std::size_t depth) {
  return std::all_of(messages.begin(), messages.end(), [depth](const ParsedMessage& message) {
    return depth + 1 < message.fSteps.size() && message.fSteps[depth].fKind == MessageStep::kUnion;
  });
}

std::string ShownText(std::string_view text) {
  const std::size_t length = Utf8Boundary(text, std::min(text.size(), kLongestFound));
  std::string shown = "\"";
  for (const char c : text.substr(0, length)) {
    if (c == '"' || c == '\\') shown += '\\';
    shown += c;
  }
  return shown + (length < text.size() ? "\"..." : "\"");
}

std::string Shown(const CPOSObject& value) {
  if (value.IsNull()) return "an empty slot";
  switch (static_cast<POSType>(value.GetType())) {
    case kPOSNumber:
      return std::string(DecimalText(CPOSNumber(value).Get()).View());
    case kPOSString:
      return ShownText(CPOSString(value).Get());
    case kPOSUnicodeString:
      return "a Unicode string";
    case kPOSBinData:
      return "binary data";
    case kPOSRawPointer:
      return "a raw pointer";
    case kPOSArray:
      return "an array of " + std::to_string(CPOSArray(value).Count());
    case kPOSDict:
      return "a dictionary";
  }
  return "";
}

// The text without the first bytes of a character at its end.
std::string WithoutTornCharacter(std::string_view text) {
  std::size_t last = text.size();
  while (last > 0 && text.size() - last < 4 && (text[last - 1] & 0xC0) == 0x80) --last;
  if (last > 0 && (text[last - 1] & 0x80)) --last;
  return std::string(
      text.substr(0, Utf8CharacterLength(text.substr(last)) > 0 ? text.size() : last));
}

// Follows the steps of a message through the object and the schema.
class MessageWalk {
 public:
  MessageWalk(const CheckedDocument& checked, const ParsedMessage& message)
      : MessageWalk(checked, message, message.fSteps.size()) {
    Finish(message.fRest);
  }
  // Only the first `depth` steps.
  MessageWalk(const CheckedDocument& checked, const ParsedMessage& message, std::size_t depth)
      : fSchema(checked.fSchema), fObject(checked.fObject), fType(checked.fType) {
    for (const MessageStep& step : std::span(message.fSteps).first(depth)) Follow(step);
  }

  // Of a union, the number of its alternatives, as far as the schema shows it.
  std::size_t Alternatives() const {
    const CPOSDict definition = Definition();
    const CPOSArray set = definition.IsNull() ? CPOSArray() : definition.GetArray("set", true);
    return set.IsNull() ? 0 : set.Count();
  }

  CPOSDict fSchema;
  CPOSObject fObject;
  std::string fType;
  ValuePath fPath;
  ValuePath fRule;
  Positions::Part fPart = Positions::kValue;
  bool fShowsValue = true;

 private:
  void Follow(const MessageStep& step) {
    const CPOSDict dict(fObject, true);
    switch (step.fKind) {
      case MessageStep::kIndex: {
        fObject = CPOSArray(fObject, true).GetAt(step.fIndex, true);
        fPath.push_back(Index(step.fIndex));
        return FollowType("membertype", step.fIndex);
      }
      case MessageStep::kKey:
        fObject = CPOSString(step.fName.c_str());
        fPart = Positions::kKey;
        fPath.push_back(Key(step.fName));
        return Enter(step.fType, {Key(fType), Key("keytype")});
      case MessageStep::kValue:
      case MessageStep::kRequired:
      case MessageStep::kOptional:
        fObject = dict.Get(step.fName.c_str(), true);
        fPath.push_back(Key(step.fName));
        if (step.fKind == MessageStep::kValue) {
          return Enter(step.fType, {Key(fType), Key("valuetype")});
        }
        return Enter(
            step.fType,
            {Key(fType), Key(step.fKind == MessageStep::kRequired ? "required" : "optional"),
             Key(step.fName)});
      case MessageStep::kUnion:
        return;
      case MessageStep::kAlternative:
      case MessageStep::kIntersection:
        return EnterListed(step.fType);
    }
  }

  CPOSDict Definition() const {
    return fSchema.IsNull() ? CPOSDict() : fSchema.GetDict(fType.c_str(), true);
  }

  void Enter(const std::string& type, ValuePath rule) {
    fType = type;
    fRule = std::move(rule);
  }

  void FollowType(const char* attribute, std::size_t index) {
    const CPOSDict definition = Definition();
    if (definition.IsNull()) return Enter("", {});
    ValuePath rule = {Key(fType), Key(attribute)};
    CPOSObject named = definition.Get(attribute, true);
    if (const CPOSArray list(named, true); list) {
      named = list.GetAt(index, true);
      rule.push_back(Index(index));
    }
    const CPOSString type(named, true);
    Enter(type.IsNull() ? "" : type.Get(), std::move(rule));
  }

  void EnterListed(const std::string& type) {
    ValuePath rule = {Key(fType), Key("set")};
    const CPOSDict definition = Definition();
    const CPOSArray set = definition.IsNull() ? CPOSArray() : definition.GetArray("set", true);
    for (unsigned i = 0; !set.IsNull() && i < set.Count(); ++i) {
      const CPOSString each(set.GetAt(i, true), true);
      if (each.IsNull() || each.Get() != type) continue;
      rule.push_back(Index(i));
      break;
    }
    Enter(type, std::move(rule));
  }

  void Finish(std::string_view text) {
    const bool isMissing = text.starts_with(kMissing);
    const bool isUnknown = text.starts_with(kUnknown);
    fShowsValue = !isMissing && !isUnknown;
    if (isUnknown) {
      fPath.push_back(Key(std::string(text.substr(kUnknown.size()))));
      fPart = Positions::kKey;
    }
    // A type that is not in the schema is known by its name: the rule is where that stands.
    if (IsIntrinsic(fType) || Definition().IsNull()) return;
    fRule = {Key(fType)};
    if (isMissing) {
      fRule.push_back(Key("required"));
      fRule.push_back(Key(std::string(text.substr(kMissing.size()))));
    } else if (!isUnknown) {
      fRule.push_back(Key(AttributeOf(text)));
    }
  }
};

// The category that a kind of definition has in the schema of schemas: "HomoArrayDefn" has "array".
std::string CategoryOf(std::string_view type) {
  for (const std::string_view start : {"Homo", "Hetero"}) {
    if (type.starts_with(start)) type.remove_prefix(start.size());
  }
  std::string category(type.substr(0, type.rfind("Defn")));
  std::transform(category.begin(), category.end(), category.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return category;
}

bool IsListed(const CPOSArray& list, std::string_view text) {
  for (unsigned i = 0; i < list.Count(); ++i) {
    const CPOSString each(list.GetAt(i, true), true);
    if (!each.IsNull() && each.Get() == text) return true;
  }
  return false;
}

// How many members of the object have a value that an enumeration of the type excludes. Such
// members tell the alternatives of a union apart.
std::size_t OtherTags(const CPOSDict& schema, const std::string& type, const CPOSDict& object) {
  if (object.IsNull()) return 0;
  if (schema.IsNull()) {
    const CPOSString category = object.GetString("category", true);
    return category.IsNull() || category.Get() == CategoryOf(type) ? 0 : 1;
  }
  std::size_t count = 0;
  const CPOSDict definition = schema.GetDict(type.c_str(), true);
  for (const char* const list : {"required", "optional"}) {
    const CPOSDict members = definition.IsNull() ? CPOSDict() : definition.GetDict(list, true);
    if (members.IsNull()) continue;
    for (CPOSDictIterator i(members); !i.IsDone(); i.Next()) {
      const CPOSString value = object.GetString(i.CurKey(), true);
      const CPOSString memberType = members.GetString(i.CurKey(), true);
      if (value.IsNull() || memberType.IsNull()) continue;
      const CPOSDict rules = schema.GetDict(memberType.Get(), true);
      const CPOSArray allowed = rules.IsNull() ? CPOSArray() : rules.GetArray("oneof", true);
      if (!allowed.IsNull() && !IsListed(allowed, value.Get())) ++count;
    }
  }
  return count;
}

// How far an alternative is from the value: whether it is of another kind, how many tags differ,
// and how much is wrong. A missing member hides what is wrong in the others, so it weighs more.
using Distance = std::tuple<bool, std::size_t, std::size_t>;

Distance DistanceOf(const CheckedDocument& checked, Messages messages, std::size_t depth) {
  if (IsUnion(messages, depth)) {
    Distance least(true, SIZE_MAX, SIZE_MAX);
    for (const Messages& group : Groups(messages, depth + 1)) {
      least = std::min(least, DistanceOf(checked, group, depth + 2));
    }
    return least;
  }
  const MessageWalk walk(checked, messages.front(), depth);
  bool isOtherKind = false;
  std::size_t wrong = 0;
  for (const Messages& group : Groups(messages, depth)) {
    const ParsedMessage& message = group.front();
    const bool isOther = IsOfAnotherKind(message.fRest);
    if (isOther && message.fSteps.size() <= depth) isOtherKind = true;
    wrong += isOther || message.fRest.starts_with(kMissing) ? 2U : 1U;
  }
  return {isOtherKind, OtherTags(checked.fSchema, walk.fType, CPOSDict(walk.fObject, true)), wrong};
}

}  // namespace

void Explainer::Explain(const std::vector<std::string>& texts, Verdict& verdict) {
  std::vector<ParsedMessage> messages;
  messages.reserve(texts.size());
  for (const std::string& text : texts) messages.push_back(ParseMessage(text, fChecked.fObject));
  Add(messages, 0, 0);
  verdict.fMessages = std::move(fExplained);
  verdict.fUnshown = fUnexplained;
}

// Returns whether a message is cut before it shows what is wrong here, or which alternatives there
// are. Only a check of a value further inside than that of the message shows more.
bool Explainer::NeedsCheckAgain(Messages messages, std::size_t depth) const {
  if (!fChecked.fCheckAgain || depth > kDeepest || fChecksAgain == kMostChecksAgain ||
      fExplained.size() == fMaxMessages) {
    return false;
  }
  return std::any_of(messages.begin(), messages.end(), [depth](const ParsedMessage& message) {
    const std::size_t count = message.fSteps.size();
    if (!message.fIsCut || depth <= message.fBase) return false;
    return count <= depth ||
           (message.fSteps[depth].fKind == MessageStep::kUnion && count <= depth + 2);
  });
}

// The messages about the value to which the first `depth` steps lead; none if they cannot be had.
std::vector<ParsedMessage> Explainer::CheckAgain(const ParsedMessage& first, std::size_t depth) {
  ++fChecksAgain;
  const MessageWalk walk(fChecked, first, depth);
  std::vector<ParsedMessage> messages;
  if (walk.fObject.IsNull() || walk.fType.empty()) return messages;
  const std::size_t limit = std::clamp<std::size_t>(fMaxMessages, 100, 10'000);
  const MessageTexts texts = fChecked.fCheckAgain(walk.fObject, walk.fType, limit);
  fUnexplained += texts.fOthers;
  for (const std::string& text : texts.fFirst) {
    ParsedMessage message = ParseMessage(text, walk.fObject);
    message.fSteps.insert(message.fSteps.begin(), first.fSteps.begin(),
                          first.fSteps.begin() + static_cast<std::ptrdiff_t>(depth));
    message.fText = "... " + text;
    message.fBase = depth;
    messages.push_back(std::move(message));
  }
  return messages;
}

void Explainer::Add(Messages messages, std::size_t depth, std::size_t others) {
  if (NeedsCheckAgain(messages, depth)) {
    const std::vector<ParsedMessage> again = CheckAgain(messages.front(), depth);
    if (!again.empty()) return Add(again, depth, others);
  }
  for (const Messages& group : Groups(messages, depth)) {
    const ParsedMessage& first = group.front();
    if (depth >= first.fSteps.size() || fBranches == Branches::kAll) {
      for (const ParsedMessage& message : group) AddMessage(message, others);
    } else if (IsUnion(group, depth)) {
      AddClosest(group, depth + 1);
    } else {
      Add(group, depth + 1, others);
    }
  }
}

void Explainer::AddClosest(Messages messages, std::size_t depth) {
  const std::vector<Messages> groups = Groups(messages, depth);
  std::size_t closest = 0;
  Distance least(true, SIZE_MAX, SIZE_MAX);
  for (std::size_t i = 0; i < groups.size(); ++i) {
    const Distance distance = DistanceOf(fChecked, groups[i], depth + 1);
    if (distance < least) closest = i;
    least = std::min(least, distance);
  }
  const std::size_t all =
      std::max(groups.size(), MessageWalk(fChecked, messages.front(), depth).Alternatives());
  Add(groups[closest], depth + 1, all - 1);
}

void Explainer::AddMessage(const ParsedMessage& message, std::size_t others) {
  if (fExplained.size() == fMaxMessages) {
    ++fUnexplained;
    return;
  }
  if (message.fIsCut) return AddCut(message);
  const MessageWalk walk(fChecked, message);
  VerdictMessage explained;
  explained.fText = message.fText;
  if (walk.fShowsValue) explained.fFound = Shown(walk.fObject);
  explained.fPath = JsonPointer(walk.fPath);
  explained.fType = walk.fType;
  explained.fPlace = fChecked.fPlaces->PlaceOf(walk.fPath, walk.fPart);
  if (fChecked.fSchemaPlaces && !walk.fRule.empty()) {
    explained.fRule = fChecked.fSchemaPlaces->PlaceOf(walk.fRule, Positions::kKey);
  }
  explained.fOtherAlternatives = others;
  fExplained.push_back(std::move(explained));
}

// Such messages differ only in what is cut.
void Explainer::AddCut(const ParsedMessage& message) {
  const MessageWalk walk(fChecked, message, message.fSteps.size());
  VerdictMessage explained;
  explained.fText = WithoutTornCharacter(message.fText) + "...";
  explained.fPath = JsonPointer(walk.fPath);
  explained.fPlace = fChecked.fPlaces->PlaceOf(walk.fPath, walk.fPart);
  const bool isRepeated = !fExplained.empty() && fExplained.back().fPath == explained.fPath &&
                          fExplained.back().fText == explained.fText;
  if (!isRepeated) fExplained.push_back(std::move(explained));
}

}  // namespace PosUtil
