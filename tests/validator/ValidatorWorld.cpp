// SPDX-License-Identifier: MIT
#include "ValidatorWorld.h"

using namespace KAP_T_MT;

thread_local Outcome ValidatorWorld::gHeard;

Object ValidatorWorld::Validator(const Object& schema) const {
  return Own(Call<POSStructValidatorInterface, "NewPOSStructValidator">(schema.get()));
}

void ValidatorWorld::RegisterCallback(const Object& validator, const char* typeName,
                                      POSExtraValidationProc callback, void* clientData) const {
  Call<POSStructValidatorInterface, "RegisterCallbackProc">(validator.get(), Key(typeName).get(),
                                                            callback, clientData);
}

Object ValidatorWorld::FarDown(const Object& object, int times) const {
  Object outer = Read("[]");
  for (int i = 0; i < times; ++i) Call<POSArrayInterface, "Append">(outer.get(), object.get());
  for (int level = 1; level < 12; ++level) {
    const Object inner = std::exchange(outer, Read("[]"));
    Call<POSArrayInterface, "Append">(outer.get(), inner.get());
  }
  return outer;
}

Outcome ValidatorWorld::OutcomeOf(bool valid) {
  const Outcome heard = TakeHeard();
  const std::vector<std::string> reports = TakeReports();
  if (reports.empty() && !valid) return heard;
  EXPECT_EQ(heard, Outcome());
  if (reports.empty()) return {"valid"};
  EXPECT_FALSE(valid);
  EXPECT_EQ(reports.size(), 1u);
  return {"! " + reports.front()};
}

Outcome ValidatorWorld::Validate(const Object& validator, const char* typeName,
                                 const Object& object) {
  return OutcomeOf(Call<POSValidatorInterface, "Validate">(validator.get(), object.get(),
                                                           Key(typeName).get(), &Hear));
}

Outcome ValidatorWorld::Check(const std::string& schema, const char* typeName,
                              const Object& object) {
  const Object validator = Validator(schema.c_str());
  const bool valid = Call<POSValidatorInterface, "Validate">(validator.get(), object.get(),
                                                             Key(typeName).get(), nullptr);
  const std::vector<std::string> reports = TakeReports();
  const Outcome outcome = Validate(validator, typeName, object);
  EXPECT_EQ(valid, outcome == Outcome{"valid"});
  if (!reports.empty()) {
    EXPECT_EQ(outcome, Outcome{"! " + reports.front()});
  }
  return outcome;
}

Outcome ValidatorWorld::CheckSchema(const Object& schema) {
  try {
    return OutcomeOf(Call<POSStructValidatorInterface, "ValidateSchema">(schema.get(), &Hear));
  } catch (const std::exception& failure) {
    return {std::string("thrown: ") + failure.what()};
  }
}
