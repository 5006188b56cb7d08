#include "ValidatorWorld.h"

// The client classes.

namespace {

using namespace KAP_T_MT;

class ClientTest : public ValidatorTest {
 protected:
  ClientTest() { EXPECT_TRUE(KAPClientInit(GetProcAddress())); }
  ~ClientTest() override { KAPClientTerminate(); }
};

TEST_F(ClientTest, ValidatesAndRegisters) {
  const CPOSDict schema(CPOSObject::CreateFromText("< N < category int > >", nullptr), false);
  EXPECT_TRUE(CPOSStructValidator::ValidateSchema(schema, &Hear));
  CPOSStructValidator validator(schema);
  const CPOSValidator same(validator.Handle());
  EXPECT_TRUE(same.Validate(CPOSNumber(1), "N", &Hear));
  EXPECT_FALSE(same.Validate(CPOSNumber(1.5), "N", &Hear));
  validator.RegisterCallbackProc(
      "N", [](POSObject*, KAPStringAtom*, KAPSharedBuffer*, void*) { return 0l; }, nullptr);
  EXPECT_FALSE(validator.Validate(CPOSNumber(1), "N", &Hear));
  EXPECT_EQ(TakeHeard(), (Outcome{"INT was not a whole number", ""}));

  // What "ValidateSchema" throws crosses into this component.
  EXPECT_THROW((void)CPOSStructValidator::ValidateSchema(CPOSDict(), &Hear), std::exception);
  EXPECT_THROW(CPOSStructValidator{CPOSDict()}, CKAPError);
  EXPECT_FALSE(TakeReports().empty());
  EXPECT_THROW(CPOSValidator(schema.Handle()), CKAPError);
}

}  // namespace
