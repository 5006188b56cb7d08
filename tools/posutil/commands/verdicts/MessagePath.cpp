// SPDX-License-Identifier: MIT
#include "commands/verdicts/MessagePath.h"

#include <charconv>
#include <optional>
#include <utility>

#include "POSDict.h"

namespace PosUtil {

namespace {

using namespace KAP_T_MT;

constexpr struct {
  MessageStep::Kind fKind;
  std::string_view fMarker;  // between the name and the type
} kMembers[] = {{MessageStep::kKey, " (key, type != "},
                {MessageStep::kValue, " (value, type != "},
                {MessageStep::kRequired, " (required, type != "},
                {MessageStep::kOptional, " (optional, type != "}};

// Takes contexts from the front of a text, and follows them into the object.
class Parser {
 public:
  Parser(std::string_view text, CPOSObject object) : fRest(text), fObject(std::move(object)) {}

  // Members first: their names may look like other contexts.
  std::optional<MessageStep> Next() {
    if (auto step = NextIndex()) return step;
    if (auto step = NextMember()) return step;
    if (std::exchange(fIsInUnion, false) && Take("Trying ")) {
      return MessageStep{MessageStep::kAlternative, 0, {}, TakeUntil(": ")};
    }
    if (Take("Failed intersection type ")) {
      return MessageStep{MessageStep::kIntersection, 0, {}, TakeUntil(": ")};
    }
    fIsInUnion = Take("Not a valid union type: ");
    return fIsInUnion ? std::optional(MessageStep{MessageStep::kUnion}) : std::nullopt;
  }

  std::string_view Rest() const { return fRest; }
  // Returns whether the text has ended inside of the last step.
  bool IsTorn() const { return fIsTorn; }

 private:
  bool Take(std::string_view start) {
    if (!fRest.starts_with(start)) return false;
    fRest.remove_prefix(start.size());
    return true;
  }
  std::string TakeUntil(std::string_view end) {
    const std::size_t length = fRest.find(end);
    fIsTorn |= length == std::string_view::npos;
    std::string taken(fRest.substr(0, length));
    fRest.remove_prefix(length == std::string_view::npos ? fRest.size() : length + end.size());
    return taken;
  }

  std::optional<MessageStep> NextIndex() {
    const CPOSArray array(fObject, true);
    std::size_t index = 0;
    if (array.IsNull() || !fRest.starts_with('[')) return std::nullopt;
    const auto end = std::from_chars(fRest.data() + 1, fRest.data() + fRest.size(), index).ptr;
    fRest.remove_prefix(static_cast<std::size_t>(end - fRest.data()));
    if (!Take("]: ")) return std::nullopt;
    fObject = array.GetAt(index, true);
    return MessageStep{MessageStep::kIndex, index};
  }

  std::optional<MessageStep> NextMember() {
    const CPOSDict dict(fObject, true);
    if (dict.IsNull()) return std::nullopt;
    for (std::size_t at = fRest.find(" ("); at != std::string_view::npos;
         at = fRest.find(" (", at + 1)) {
      const std::string name(fRest.substr(0, at));
      for (const auto& [kind, marker] : kMembers) {
        if (!fRest.substr(at).starts_with(marker)) continue;
        const CPOSObject value = dict.Get(name.c_str(), true);
        if (value.IsNull()) continue;
        fRest.remove_prefix(at + marker.size());
        fObject = kind == MessageStep::kKey ? CPOSObject(CPOSString(name.c_str())) : value;
        return MessageStep{kind, 0, name, TakeUntil("): ")};
      }
    }
    return std::nullopt;
  }

  std::string_view fRest;
  CPOSObject fObject;
  bool fIsInUnion = false;
  bool fIsTorn = false;
};

}  // namespace

ParsedMessage ParseMessage(const std::string& text, const CPOSObject& object) {
  ParsedMessage message = {.fText = text, .fIsCut = text.size() >= kLongestMessage};
  Parser parser(text, object);
  while (auto step = parser.Next()) {
    if (message.fIsCut && parser.IsTorn()) break;
    message.fSteps.push_back(std::move(*step));
  }
  message.fRest = parser.Rest();
  auto& steps = message.fSteps;
  if (message.fIsCut && !steps.empty() && steps.back().fKind == MessageStep::kUnion) {
    steps.pop_back();
  }
  return message;
}

bool IsSameStep(const MessageStep& a, const MessageStep& b) {
  return a.fKind == b.fKind && a.fIndex == b.fIndex && a.fName == b.fName && a.fType == b.fType;
}

}  // namespace PosUtil
