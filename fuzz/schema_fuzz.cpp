// SPDX-License-Identifier: MIT

// Schemas in text notation: every check ends, and a second one has the same outcome. The input is a
// schema, a zero byte and an object.

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "Outcome.h"
#include "POSValidator.h"

namespace {

using namespace KAP_T_MT;

// The number of messages can double with each reference between types, up to 200 000, by the nature of
// the language: each of n types can refer twice to the next one. Schemas with more work than this
// are checked without messages.
constexpr double kMaxWork = 20'000;
constexpr int kMaxDepth = 40;  // of references; the library reports deeper ones

using References = std::map<std::string, std::vector<std::string>>;

// Collects every text that may be the name of a type.
void CollectTexts(const CPOSObject& object, std::vector<std::string>& texts) {
  if (const CPOSString string(object, true); string) texts.emplace_back(string.Get());
  if (const CPOSArray array(object, true); array) {
    for (unsigned i = 0; i < array.Count(); ++i) CollectTexts(array[i], texts);
  }
  if (const CPOSDict dict(object, true); dict) {
    for (CPOSDictIterator i(dict); !i.IsDone(); i.Next()) {
      CollectTexts(dict.Get(i.CurKey(), false), texts);
    }
  }
}

References ReferencesOf(const CPOSDict& schema) {
  References references;
  for (CPOSDictIterator i(schema); !i.IsDone(); i.Next()) {
    CollectTexts(schema.Get(i.CurKey(), false), references[i.CurKey()]);
  }
  return references;
}

// The most checks that one check of a type leads to, for each step of the object into its parts.
double Work(const References& references) {
  std::map<std::string, double> work;
  double most = 0;
  for (int depth = 0; depth < kMaxDepth; ++depth) {
    std::map<std::string, double> next;
    for (const auto& [type, texts] : references) {
      double sum = 1;
      for (const std::string& text : texts) sum += references.count(text) ? work[text] : 0;
      next[type] = std::min(sum, 2 * kMaxWork);
      most = std::max(most, next[type]);
    }
    work = std::move(next);
  }
  return most;
}

// The same check again, with and without messages.
template <class Check>
void ExpectSteady(Harness& harness, Check check) {
  const Outcome outcome = Outcome::Of(harness, [&] { return check(&Outcome::Receive); });
  Expect(Outcome::Of(harness, [&] { return check(&Outcome::Receive); }) == outcome,
         "a check is repeatable");
  const Outcome quiet = Outcome::Of(harness, [&] { return check(nullptr); });
  Expect(quiet.fIsValid == outcome.fIsValid && quiet.fReports == outcome.fReports,
         "messages do not change a check");
}

CPOSObject Parsed(const std::string& text) {
  return CPOSObject::CreateFromText(text.c_str(), nullptr);
}

}  // namespace

KAP_FUZZ_TARGET(input, harness) {
  const std::size_t end = std::min(input.find('\0'), input.size());
  const CPOSDict schema(Parsed(std::string(input.substr(0, end))), true);
  CPOSObject object = Parsed(std::string(input.substr(std::min(end + 1, input.size()))));
  harness.TakeReports();
  if (schema.IsNull()) return;
  if (object.IsNull()) object = schema;
  const References references = ReferencesOf(schema);
  const bool isHeavy = Work(references) > kMaxWork;

  ExpectSteady(harness, [&](POSMessageProc message) {
    return CPOSStructValidator::ValidateSchema(schema, message);
  });
  const CPOSStructValidator validator(schema);
  for (const auto& [type, texts] : references) {
    const auto check = [&, name = type](POSMessageProc message) {
      return validator.Validate(object, name.c_str(), message);
    };
    if (isHeavy) {
      Outcome::Of(harness, [&] { return check(nullptr); });
    } else {
      ExpectSteady(harness, check);
    }
  }
}
