// SPDX-License-Identifier: MIT
#include <clocale>

#include "ValidatorWorld.h"
#include "dir/KAPUtilsDirInterfaces.h"

// Failures: bad arguments, nesting without end, hosts that fail, other locales.

namespace {

using namespace KAP_T_MT;

class FailureTest : public ValidatorTest {};

TEST_F(FailureTest, BadArguments) {
  const Object schema = Read("< N < category int > >");
  const Object validator = Validator(schema);
  const Object number = Number(1);
  const Object none = Own(nullptr);
  const Object iterator = Own(Call<POSDictIteratorInterface, "NewPOSDictIterator">(schema.get()));
  KAPUtilsDir* handle = nullptr;
  EXPECT_EQ(TakeMessage(Call<KAPUtilsDirInterface, "GetTempDir">(&handle)), "");
  const Object directory = Own(handle);  // filed under the same name as a validator
  for (const Object* bad : {&none, &number, &iterator, &directory}) {
    EXPECT_EQ(Validate(*bad, "N", number), Outcome{"! instance was not an StructValidator"});
    RegisterCallback(*bad, "N", nullptr);
    EXPECT_EQ(TakeReport(), "instance was not an StructValidator");
    EXPECT_EQ(Validator(*bad), nullptr);
    EXPECT_FALSE(TakeReports().empty());
    EXPECT_EQ(CheckSchema(*bad).front().substr(0, 8), "thrown: ");
  }
  for (const Object* bad : {&none, &iterator, &validator, &directory}) {
    EXPECT_EQ(Validate(validator, "any", *bad), Outcome{"! invalid container"});
  }
  Call<POSValidatorInterface, "Validate">(validator.get(), number.get(), nullptr, &Hear);
  EXPECT_FALSE(TakeReports().empty());
  Call<POSStructValidatorInterface, "RegisterCallbackProc">(validator.get(), nullptr, nullptr,
                                                            nullptr);
  EXPECT_FALSE(TakeReports().empty());
  // The same with a validator in the place of a directory.
  const std::string message =
      TakeMessage(Call<KAPUtilsDirInterface, "Delete">(validator.get(), Key("file").get()));
  EXPECT_NE(message.find("instance was not"), std::string::npos) << message;
  EXPECT_EQ(Validate(validator, "N", number), Outcome{"valid"});
}

TEST_F(FailureTest, TooDeep) {
  const Outcome tooDeep = {"! property object is nested too deep"};
  const char* schema =
      "< T < category array membertype T > A < category union set [A] >"
      "  B < category intersection set [C] > C < category union set [B] > >";
  EXPECT_EQ(Check(schema, "A", "1"), tooDeep);
  EXPECT_EQ(Check(schema, "B", "1"), tooDeep);
  Object object = Read("[]");
  for (const int levels : {1000, 200000}) {
    for (int i = 0; i < levels; ++i) {
      Object outer = Read("[]");
      Call<POSArrayInterface, "Append">(outer.get(), object.get());
      object = std::move(outer);
    }
    EXPECT_EQ(Validate(Validator(schema), "T", object),
              levels == 1000 ? Outcome{"valid"} : tooDeep);
  }
}

TEST_F(FailureTest, OtherLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  const Outcome outcome = Check("< T < category real min 1.5 > >", "T", "1");
  std::setlocale(LC_ALL, before.c_str());
  EXPECT_EQ(outcome, Outcome{"Number below mininum value 1.500000"});
}

// A changed schema takes effect, and a schema lives as long as its validator.
TEST_F(FailureTest, TheSchemaIsKeptNotCopied) {
  Object schema = Read("< N < category int > >");
  const Object validator = Validator(schema);
  Put(Get(schema, "N"), "max", Number(3));
  schema.reset();
  EXPECT_EQ(Validate(validator, "N", Number(4)), Outcome{"Number above maximum value 3.000000"});
}

// A check with the nth call of the host failing, alone or with all after it, until none fails: it
// has all messages, or none and a report.
TEST(FailingHostTest, Validate) {
  const auto fails = [](const FailingCall& call) {
    ValidatorWorld world;
    const Object validator =
        world.Validator(world.Read("< T < category dict keytype N optional < a L b U > >"
                                   "  L < category array membertype int >"
                                   "  N < category string maxlen 3 >"
                                   "  U < category union set [real L N] > >"));
    const Object object = world.Read("< a [1 x] b long name 1 >");
    const OwnedAtom type = world.Key("T");
    world.RegisterCallback(validator, "N",
                           [](POSObject*, KAPStringAtom*, KAPSharedBuffer*, void*) { return 0l; });
    const bool fired = call.During(world, [&] {
      EXPECT_FALSE((world.Call<POSValidatorInterface, "Validate">(
          validator.get(), object.get(), type.get(), &ValidatorWorld::Hear)));
    });
    EXPECT_NE(world.TakeReports().empty(), fired);
    EXPECT_EQ(ValidatorWorld::TakeHeard().size(), fired ? 0u : 7u);
    return fired;
  };
  EXPECT_GE(FailingCall::Sweep(fails), 4u);
}

}  // namespace
