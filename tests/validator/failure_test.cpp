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

// The arguments of the calls below.
struct Scenario : ValidatorWorld {
  static long No(POSObject*, KAPStringAtom*, KAPSharedBuffer*, void*) { return 0; }

  Object fSchema = Read(
      "< T < category dict keytype N optional < a L b U > > L < category array membertype int >"
      "  N < category string maxlen 3 > U < category union set [real L N] > >");
  Object fSmallSchema = Read("< A < category array membertype A > >");
  Object fValidator = Validator(fSchema);
  Object fObject = Read("< a [1 x] b long name 1 >");
  OwnedAtom fType = Key("T");
};

// Makes a call with the nth call of the host failing, alone or with all after it, until none fails:
// `fails` must fail exactly when one was, and everything must have been given back.
void FailEachCall(bool (*fails)(Scenario&)) {
  for (const bool andAllAfterIt : {false, true}) {
    bool fired = true;
    unsigned long n = 1;
    for (; fired && !testing::Test::HasFailure(); ++n) {
      SCOPED_TRACE(testing::Message() << "call " << n << (andAllAfterIt ? " on" : ""));
      Scenario scenario;
      scenario.RegisterCallback(scenario.fValidator, "N", &Scenario::No);
      andAllAfterIt ? scenario.FailFrom(KAP_T_MT::KAPFault::kAny, n)
                    : scenario.FailCall(KAP_T_MT::KAPFault::kAny, n);
      const bool failed = fails(scenario);
      fired = scenario.Fired();
      scenario.StopFaults();
      EXPECT_EQ(failed, fired);
    }
    EXPECT_GT(n, 2u);
  }
}

TEST(FailingHostTest, Validate) {
  FailEachCall([](Scenario& scenario) {
    EXPECT_FALSE((scenario.Call<POSValidatorInterface, "Validate">(
        scenario.fValidator.get(), scenario.fObject.get(), scenario.fType.get(),
        &ValidatorWorld::Hear)));
    const bool failed = !scenario.TakeReports().empty();
    EXPECT_EQ(ValidatorWorld::TakeHeard().size(), failed ? 0u : 7u);
    return failed;
  });
}

TEST(FailingHostTest, NewAndRegister) {
  FailEachCall([](Scenario& scenario) {
    const bool failed = !scenario.Validator(scenario.fSchema);
    EXPECT_NE(scenario.TakeReports().empty(), failed);
    return failed;
  });
  FailEachCall([](Scenario& scenario) {
    scenario.Call<POSStructValidatorInterface, "RegisterCallbackProc">(
        scenario.fValidator.get(), scenario.fType.get(), &Scenario::No, nullptr);
    return !scenario.TakeReports().empty();
  });
}

TEST(FailingHostTest, ValidateSchema) {
  FailEachCall([](Scenario& scenario) {
    return scenario.CheckSchema(scenario.fSmallSchema) != Outcome{"valid"};
  });
}

}  // namespace
