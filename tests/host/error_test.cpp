// SPDX-License-Identifier: MIT
#include "TestHost.h"

namespace {

using KAP_T_MT::KAPResource;
using KAPHost::Holding;

class ErrorTest : public HostTest {};

TEST_F(ErrorTest, KeepsItsTextsAndFreesItsClientData) {
  int freed = 0;
  KAPError* error =
      fHost.Errors<"NewError">("message", "component", -5L, static_cast<void*>(&freed),
                               KAPDeleteProc([](void* data) { ++*static_cast<int*>(data); }));
  // The error's references to its texts are not counted.
  EXPECT_EQ(fHost.TakeSnapshot().Total(KAPResource::kAtom), Holding());
  EXPECT_EQ(fHost.TakeSnapshot().Of(KAPResource::kError, "message"), (Holding{1, 1}));

  EXPECT_EQ(fHost.TakeText(fHost.Errors<"GetErrorMessage">(error)), "message");
  EXPECT_EQ(fHost.TakeText(fHost.Errors<"GetComponent">(error)), "component");
  EXPECT_EQ(fHost.Errors<"GetID">(error), -5);
  EXPECT_EQ(fHost.Errors<"GetErrorInfo">(error), &freed);

  fHost.Errors<"AddRef">(error);
  fHost.Errors<"Release">(error);
  EXPECT_EQ(freed, 0);
  KAPStringAtom* message = fHost.Errors<"GetErrorMessage">(error);
  fHost.Errors<"Release">(error);
  EXPECT_EQ(freed, 1);
  EXPECT_EQ(fHost.TakeText(message), "message");  // outlives the error
}

TEST_F(ErrorTest, CoreErrorsAreNeverDestroyed) {
  KAPError* unknown = fHost.Errors<"GetCoreError">(0);
  KAPError* memory = fHost.Errors<"GetCoreError">(1);
  EXPECT_NE(unknown, memory);
  for (int i = 0; i < 3; ++i) {
    fHost.Errors<"Release">(unknown);
    fHost.Errors<"Release">(memory);
  }
  EXPECT_EQ(fHost.TakeMessage(unknown), "unknown error");
  EXPECT_EQ(fHost.TakeMessage(memory), "out of memory");
  EXPECT_EQ(fHost.Errors<"GetID">(memory), 1);
  EXPECT_EQ(fHost.Errors<"GetCoreError">(99), unknown);
}

TEST_F(ErrorTest, WithoutTexts) {
  KAPError* error = fHost.Errors<"NewError">(nullptr, nullptr, 0L, nullptr, nullptr);
  EXPECT_EQ(fHost.Errors<"GetErrorMessage">(error), nullptr);
  EXPECT_EQ(fHost.Errors<"GetComponent">(error), nullptr);
  EXPECT_EQ(fHost.TakeSnapshot().Of(KAPResource::kError, "(no text)"), (Holding{1, 1}));
  fHost.Errors<"Release">(error);
}

}  // namespace
