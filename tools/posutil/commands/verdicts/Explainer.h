// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "POSDict.h"
#include "commands/verdicts/MessagePath.h"
#include "commands/verdicts/Verdict.h"
#include "formats/DocumentPlaces.h"

namespace PosUtil {

enum class Branches : bool { kClosest, kAll };

// The first messages of a check, and the number of the others.
struct MessageTexts {
  std::vector<std::string> fFirst;
  std::size_t fOthers = 0;
};

// What the messages of one check are about.
struct CheckedDocument {
  KAP_T_MT::CPOSObject fObject;
  std::string fType;  // that it should have
  DocumentPlaces* fPlaces;
  KAP_T_MT::CPOSDict fSchema;     // null for the schema of schemas, which no file holds
  DocumentPlaces* fSchemaPlaces;  // or null
  // Checks a value inside against a type: long messages are cut, and a check that starts further
  // inside has shorter ones. Empty if that is not possible.
  std::function<MessageTexts(const KAP_T_MT::CPOSObject& value, const std::string& type,
                             std::size_t limit)>
      fCheckAgain;
};

// Finds for each message the value and the rule that it is about. Of a union, which reports every
// alternative, it keeps the messages of the closest one: the one of the value's kind that names the
// fewest members as wrong. It explains the first messages, up to a limit, and counts the others.
class Explainer {
 public:
  Explainer(const CheckedDocument& checked, Branches branches, std::size_t maxMessages)
      : fChecked(checked), fBranches(branches), fMaxMessages(maxMessages) {}

  // Sets the messages of the verdict and the number of those beyond the limit.
  void Explain(const std::vector<std::string>& texts, Verdict& verdict);

 private:
  using Messages = std::span<const ParsedMessage>;

  void Add(Messages messages, std::size_t depth, std::size_t others);
  bool NeedsCheckAgain(Messages messages, std::size_t depth) const;
  std::vector<ParsedMessage> CheckAgain(const ParsedMessage& first, std::size_t depth);
  void AddCut(const ParsedMessage& message);
  void AddClosest(Messages messages, std::size_t depth);
  void AddMessage(const ParsedMessage& message, std::size_t others);

  const CheckedDocument& fChecked;
  const Branches fBranches;
  const std::size_t fMaxMessages;
  std::size_t fChecksAgain = 0;
  std::vector<VerdictMessage> fExplained;
  std::size_t fUnexplained = 0;
};

}  // namespace PosUtil
