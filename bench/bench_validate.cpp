// SPDX-License-Identifier: MIT

// Checks of objects against schemas. All libraries check the same logical documents against
// equivalent schemas, and find them valid.

#include <rapidjson/document.h>
#include <rapidjson/schema.h>

#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

#include "BenchDocument.h"
#include "POSValidator.h"

namespace Bench {

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;
using KAP_T_MT::CPOSDict;
using KAP_T_MT::CPOSObject;
using KAP_T_MT::CPOSStructValidator;

constexpr double kValijsonTarget = 0.5;
constexpr double kRapidJsonTarget = 0.8;

// A document and its schema, for both libraries.
struct Case {
  Document fDocument;
  std::string fSchema;
  const char* fType;
  std::string fJsonSchema;
};

Case RecordsCase(std::int64_t values) {
  return {GetDocument(Content::kRecords, values),
          "< Records < category array membertype Record >"
          "  Record < category dict required < id int name string category string tags Tags >"
          "           optional < price real position Position > >"
          "  Tags < category array membertype string >"
          "  Position < category dict required < x real y int > > >",
          "Records",
          R"({"type": "array", "items": {
               "type": "object", "additionalProperties": false,
               "required": ["id", "name", "category", "tags"],
               "properties": {
                 "id": {"type": "integer"}, "name": {"type": "string"},
                 "category": {"type": "string"},
                 "tags": {"type": "array", "items": {"type": "string"}},
                 "price": {"type": "number"},
                 "position": {"type": "object", "additionalProperties": false,
                              "required": ["x", "y"],
                              "properties": {"x": {"type": "number"},
                                             "y": {"type": "integer"}}}}}})"};
}

// A record with this number of members, all of them required.
Case MembersCase(std::int64_t members) {
  std::string required;
  nlohmann::json record = nlohmann::json::object();
  nlohmann::json schema = {{"type", "object"}, {"additionalProperties", false}};
  Document document{"<", "", members};
  for (std::int64_t i = 0; i < members; ++i) {
    const std::string name = "member" + std::to_string(i);
    required += name + " int ";
    document.fText += name + " " + std::to_string(i) + " ";
    record[name] = i;
    schema["required"].push_back(name);
    schema["properties"][name] = {{"type", "integer"}};
  }
  document.fText += ">";
  document.fJson = record.dump();
  return {document, "< Record < category dict required < " + required + "> > >", "Record",
          schema.dump()};
}

void Insist(bool valid) {
  if (valid) return;
  std::cerr << "a valid document was found invalid\n";
  std::exit(EXIT_FAILURE);
}

CPOSObject FromText(const std::string& text) {
  return CPOSObject(Made(Statics::Call<"CreateFromText">(text.c_str(), nullptr)).Handle());
}

using MakeCase = Case (*)(std::int64_t);

void OurValidate(State& state, MakeCase makeCase) {
  const Case given = makeCase(state.range(0));
  const CPOSObject object = FromText(given.fDocument.fText);
  const CPOSStructValidator validator(CPOSDict(FromText(given.fSchema), false));
  const CKAPStringAtom type(given.fType);
  Insist(validator.Validate(object, type, nullptr));
  for (auto _ : state) DoNotOptimize(validator.Validate(object, type, nullptr));
  SetItems(state, given.fDocument.fCount);
}

void ValijsonValidate(State& state, MakeCase makeCase) {
  const Case given = makeCase(state.range(0));
  const auto document = nlohmann::json::parse(given.fDocument.fJson);
  const auto schemaDocument = nlohmann::json::parse(given.fJsonSchema);
  valijson::Schema schema;
  valijson::SchemaParser().populateSchema(valijson::adapters::NlohmannJsonAdapter(schemaDocument),
                                          schema);
  const valijson::adapters::NlohmannJsonAdapter target(document);
  valijson::Validator validator;
  Insist(validator.validate(schema, target, nullptr));
  for (auto _ : state) DoNotOptimize(validator.validate(schema, target, nullptr));
  SetItems(state, given.fDocument.fCount);
  SetTarget(state, kValijsonTarget);
}

void RapidJsonValidate(State& state, MakeCase makeCase) {
  const Case given = makeCase(state.range(0));
  rapidjson::Document document;
  document.Parse(given.fDocument.fJson.c_str());
  rapidjson::Document schemaDocument;
  schemaDocument.Parse(given.fJsonSchema.c_str());
  const rapidjson::SchemaDocument schema(schemaDocument);
  rapidjson::SchemaValidator validator(schema);
  Insist(document.Accept(validator));
  for (auto _ : state) {
    validator.Reset();
    DoNotOptimize(document.Accept(validator));
  }
  SetItems(state, given.fDocument.fCount);
  SetTarget(state, kRapidJsonTarget);
}

// ---- The check of a schema of n types ----

std::string LargeSchema(std::int64_t types) {
  std::string schema = "<";
  for (std::int64_t i = 0; i < types; ++i) {
    const std::string number = std::to_string(i);
    schema += " Type" + number + " < category dict required < id int next Type" +
              std::to_string((i + 1) % types) + " > optional < name string price real > >";
  }
  return schema + " >";
}

void OurSchemaCheck(State& state) {
  const CPOSDict schema(FromText(LargeSchema(state.range(0))), false);
  Insist(CPOSStructValidator::ValidateSchema(schema, nullptr));
  for (auto _ : state) DoNotOptimize(CPOSStructValidator::ValidateSchema(schema, nullptr));
  SetItems(state, state.range(0));
}

}  // namespace

void RegisterBenchmarks() {
  const auto add = [](const char* what, MakeCase makeCase,
                      std::initializer_list<std::int64_t> sizes) {
    const std::pair<const char*, void (*)(State&, MakeCase)> series[] = {
        {"/ours", &OurValidate},
        {"/valijson", &ValijsonValidate},
        {"/rapidjson", &RapidJsonValidate}};
    for (const auto& [name, measure] : series) {
      auto* added =
          benchmark::RegisterBenchmark((std::string(what) + name).c_str(), measure, makeCase);
      for (const std::int64_t size : sizes) added->Arg(size);
    }
  };
  // A record has about eight values: 1 000 and 100 000 records.
  add("validate_records", &RecordsCase, {8'000, 800'000});
  add("validate_members", &MembersCase, {10, 100, 1'000});
  benchmark::RegisterBenchmark("check_schema/ours", &OurSchemaCheck)->Arg(200);
}

}  // namespace Bench
