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
// fewest members as wrong.
class Explainer {
 public:
  Explainer(const CheckedDocument& checked, Branches branches)
      : fChecked(checked), fBranches(branches) {}

  std::vector<VerdictMessage> Explain(const std::vector<std::string>& texts);

 private:
  using Messages = std::span<const ParsedMessage>;

  void Add(Messages messages, std::size_t depth, std::size_t others);
  void AddClosest(Messages messages, std::size_t depth, std::size_t others);
  void AddMessage(const ParsedMessage& message, std::size_t others);

  const CheckedDocument& fChecked;
  const Branches fBranches;
  std::vector<VerdictMessage> fExplained;
};

}  // namespace PosUtil
