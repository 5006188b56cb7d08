// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "POSValidator.h"
#include "World.h"

// How a validation ends: {"valid"}, the messages, or {"! report"} when it could not be made.
using Outcome = std::vector<std::string>;

// A world with short ways to the procedures of validators.
class ValidatorWorld : public World {
 public:
  Object Validator(const Object& schema) const;
  Object Validator(const char* schema) const { return Validator(Read(schema)); }
  void RegisterCallback(const Object& validator, const char* typeName,
                        KAP_T_MT::POSExtraValidationProc callback,
                        void* clientData = nullptr) const;

  // An object in 12 arrays, `times` times in the innermost one.
  Object FarDown(const Object& object, int times) const;

  Outcome Validate(const Object& validator, const char* typeName, const Object& object);
  // With a validator of its own, whose result must be the same without a message procedure.
  Outcome Check(const std::string& schema, const char* typeName, const Object& object);
  Outcome Check(const std::string& schema, const char* typeName, const char* object) {
    return Check(schema, typeName, Read(object));
  }
  // As above, but what is thrown is {"thrown: ..."}.
  Outcome CheckSchema(const Object& schema);

  // Receives messages, separately on each thread.
  static void Hear(const char* message) { gHeard.emplace_back(message); }
  static Outcome TakeHeard() { return std::exchange(gHeard, {}); }

 private:
  Outcome OutcomeOf(bool valid);

  static thread_local Outcome gHeard;
};

class ValidatorTest : public ::testing::Test, protected ValidatorWorld {};
