// SPDX-License-Identifier: MIT
#include "Threads.h"
#include "ValidatorWorld.h"

namespace {

using namespace KAP_T_MT;

// Threads that share a validator, its callbacks and what they validate, while the counter moves
// under them.
TEST_F(ValidatorTest, ManyThreadsShareOneValidator) {
  const Object validator = Validator(
      "< List < category array membertype Entry > Name < category string maxlen 3 >"
      "  Entry < category dict keytype Name valuetype Value >"
      "  Value < category union set [int List] > >");
  const auto odd = [](POSObject* object, KAPStringAtom*, KAPSharedBuffer*, void* world) {
    return static_cast<long>(static_cast<World*>(world)->Call<POSArrayInterface, "Count">(object) %
                             2);
  };
  RegisterCallback(validator, "List", odd, static_cast<World*>(this));
  const Object valid = Read("[< a 1 b [< c 2 >] >]");
  const Object invalid = Read("[< long [< c x >] >]");
  const OwnedAtom type = Key("List");
  const auto validate = [&](const Object& object) {
    return Call<POSValidatorInterface, "Validate">(validator.get(), object.get(), type.get(),
                                                   &ValidatorWorld::Hear);
  };
  Soak(
      [&](int) {
        ASSERT_TRUE(validate(valid));
        ASSERT_FALSE(validate(invalid));
        ASSERT_EQ(TakeHeard().size(), 4u);
      },
      [this] { MoveUnregisterCounter(); });
}

}  // namespace
