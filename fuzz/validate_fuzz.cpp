// SPDX-License-Identifier: MIT
#include <sys/resource.h>

#include <algorithm>
#include <string>

#include "Choices.h"
#include "Outcome.h"
#include "POSValidator.h"

// Checks objects against schemas. The input is a series of choices that build both. Some choices
// are faults, so that schemas are invalid in many ways.

namespace {

using namespace KAP_T_MT;

class Maker {
 public:
  explicit Maker(std::string_view choices) : fChoices(choices) {}

  std::string Schema() {
    std::string schema = "<";
    for (const char* name : {"A", "B", "C", "D"}) schema += std::string(" ") + name + Definition();
    return schema + " >";
  }

  std::string Object(int depth = 0) {
    switch (Choose(depth < 5 ? 7 : 4)) {
      case 0:
        return Pick({"0", "1", "2", "-3", "4.5", "3000000000", "100000000000000000000"});
      case 1:
        return "`0041" + std::string(Choose(2) ? "0042`" : "`");
      case 2:
        return Pick({"()", "false"});
      case 3:
        return Word();
      case 4:
      case 5:
        return "[" + Series([&] { return Object(depth + 1); }) + "]";
      default:
        return "<" + Series([&] { return Word() + " " + Object(depth + 1); }) + ">";
    }
  }

 private:
  std::string Definition() {
    std::string definition = " < category " + Category();
    definition += Series([&] { return Attribute(); });
    return definition + " >";
  }
  std::string Category() {
    return Pick({"int", "real", "string", "unicodestring", "bindata", "array", "array", "dict",
                 "dict", "union", "intersection", "rawptr", "objref", "nothing"});
  }
  std::string Attribute() {
    switch (Choose(10)) {
      case 0:
        return Pick({"min ", "max ", "minexcl ", "maxexcl "}) + Object(9);
      case 1:
        return Pick({"minlen ", "maxlen "}) + Pick({"0", "1", "2.5", "-1", "99999999999"});
      case 2:
        return "illegalchars " + Word();
      case 3:
        return "oneof [" + Series([&] { return Word(); }) + "]";
      case 4:
        return "membertype " + TypeName();
      case 5:
        return "membertype [" + Series([&] { return TypeName(); }) + "]";
      case 6:
        return "set [" + Series([&] { return TypeName(); }) + "]";
      case 7:
        return Pick({"keytype ", "valuetype "}) + TypeName();
      case 8:
        return Pick({"min ", "oneof ", "set ", "required ", "keytype "}) + Object(4);
      default:
        return Pick({"required <", "optional <"}) +
               Series([&] { return Word() + " " + TypeName(); }) + ">";
    }
  }
  std::string TypeName() {
    return Pick({"A", "B", "C", "D", "int", "real", "string", "any", "bool", "unicodestring", "E"});
  }
  std::string Word() { return Pick({"a", "b", "c", "abc", "true", "(a b)"}); }

  template <class Make>
  std::string Series(Make make) {
    std::string series;
    for (unsigned left = Choose(5); left > 0; --left) series += " " + make() + " ";
    return series;
  }
  std::string Pick(std::initializer_list<const char*> texts) { return fChoices.Of(texts); }
  unsigned Choose(unsigned count) { return fChoices.Below(count); }

  Choices fChoices;
};

// A cycle in a schema is followed until the stack ends. Of the usual eight megabytes, an eighth is
// enough for everything else.
const int gStackLimited = [] {
  rlimit limit = {};
  ::getrlimit(RLIMIT_STACK, &limit);
  limit.rlim_cur = 1 << 20;
  return ::setrlimit(RLIMIT_STACK, &limit);
}();

long Pass(POSObject*, KAPStringAtom*, KAPSharedBuffer*, void*) { return 1; }

Outcome Check(Harness& harness, const CPOSStructValidator& validator, const CPOSObject& object) {
  return Outcome::Of(harness, [&] { return validator.Validate(object, "A", &Outcome::Receive); });
}

// Returns whether the schema is valid. An exception means that it is not.
bool IsSchema(const CPOSDict& schema) {
  try {
    return CPOSStructValidator::ValidateSchema(schema, nullptr);
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

KAP_FUZZ_TARGET(input, harness) {
  Maker maker(input);
  const std::string schemaText = maker.Schema();
  const CPOSDict schema(CPOSObject::CreateFromText(schemaText.c_str(), nullptr), false);
  const CPOSObject object = CPOSObject::CreateFromText(maker.Object().c_str(), nullptr);
  Expect(!object.IsNull(), "the text of the object is well-formed");

  CPOSStructValidator validator(schema);
  const Outcome outcome = Check(harness, validator, object);
  Expect(Check(harness, validator, object) == outcome, "a second check has the same outcome");
  for (const char* type : {"A", "B", "C", "D"})
    validator.RegisterCallbackProc(type, &Pass, nullptr);
  Expect(Check(harness, validator, object) == outcome,
         "callbacks that accept everything do not change the outcome");

  const bool hasObjRef = schemaText.find("objref") != std::string::npos;
  if (!IsSchema(schema) || hasObjRef) return;
  const bool isSound = std::all_of(
      outcome.fReports.begin(), outcome.fReports.end(),
      [](const std::string& report) { return report.find("deep") != std::string::npos; });
  Expect(isSound, "a valid schema reports nothing but a cycle");
}
