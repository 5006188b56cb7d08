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

// What "ValidateSchema" throws crosses into this component.
TEST_F(ClientTest, Failures) {
  EXPECT_THROW((void)CPOSStructValidator::ValidateSchema(CPOSDict(), &Hear), std::exception);
  EXPECT_THROW(CPOSStructValidator{CPOSDict()}, CKAPError);
  EXPECT_FALSE(TakeReports().empty());
  EXPECT_THROW(CPOSValidator(CPOSDict::New().Handle()), CKAPError);
}

}  // namespace
