// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "POSDict.h"
#include "commands/verdicts/MessagePath.h"
#include "commands/verdicts/Verdict.h"
#include "formats/DocumentPlaces.h"

namespace PosUtil {

enum class Branches : bool { kClosest, kAll };

// What the messages of one check are about.
struct CheckedDocument {
  KAP_T_MT::CPOSObject fObject;
  std::string fType;  // that it should have
  DocumentPlaces* fPlaces;
  KAP_T_MT::CPOSDict fSchema;     // null for the schema of schemas, which no file holds
  DocumentPlaces* fSchemaPlaces;  // or null
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
  void AddClosest(Messages messages, std::size_t depth, std::size_t others);
  void AddMessage(const ParsedMessage& message, std::size_t others);

  const CheckedDocument& fChecked;
  const Branches fBranches;
  const std::size_t fMaxMessages;
  std::vector<VerdictMessage> fExplained;
  std::size_t fUnexplained = 0;
};

}  // namespace PosUtil
