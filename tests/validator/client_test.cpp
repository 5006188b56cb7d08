// SPDX-License-Identifier: MIT
#include "ValidatorWorld.h"

// The client classes.

namespace {

using namespace KAP_T_MT;

class ClientTest : public ValidatorTest {
 protected:
  ClientTest() { EXPECT_TRUE(KAPClientInit(GetProcAddress())); }
  ~ClientTest() override { KAPClientTerminate(); }
};

TEST_F(ClientTest, TextsWithoutATerminator) {
  const std::string_view type = std::string_view("Type").substr(0, 1);
  CPOSStructValidator validator(CPOSDict(CPOSObject(Read("< T < category int > >").get())));
  EXPECT_TRUE(validator.Validate(CPOSNumber(1), type));
  validator.RegisterCallbackProc(type, [](auto...) { return 0l; });
  EXPECT_FALSE(validator.Validate(CPOSNumber(1), type));
}

// The functions for code that looks after its tables itself.
TEST_F(ClientTest, Tables) {
  EXPECT_TRUE(ConstructPOSStructValidatorInterfaceProcs());
  EXPECT_TRUE(GetGlobalPOSStructValidatorInterfaceProcs());
  KAPVTabGeneric::Slot slots[POSValidatorInterface::kCount] = {};
  const Object validator = Validator("<>");
  EXPECT_EQ(ConstructPOSValidatorVirtualInterfaceMethods(validator.get(), 1, slots), 1);
  EXPECT_NE(slots[0], nullptr);
  const Object number = Number(1);
  EXPECT_EQ(ConstructPOSValidatorVirtualInterfaceMethods(number.get(), 1, slots), 0);
  Unregister(POSStructValidatorInterface::kName);
  EXPECT_THROW(ConstructPOSStructValidatorInterfaceProcs(), CKAPError);
  EXPECT_FALSE(GetGlobalPOSStructValidatorInterfaceProcs());
}

// What "ValidateSchema" throws crosses into this component.
TEST_F(ClientTest, Failures) {
  EXPECT_THROW((void)CPOSStructValidator::ValidateSchema(CPOSDict(), &Hear), std::exception);
  EXPECT_THROW(CPOSStructValidator{CPOSDict()}, CKAPError);
  EXPECT_FALSE(TakeReports().empty());
  EXPECT_THROW(CPOSValidator(CPOSDict::New().Handle()), CKAPError);
}

}  // namespace
