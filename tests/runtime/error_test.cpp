// SPDX-License-Identifier: MIT
#include <functional>
#include <stdexcept>

#include "RuntimeTest.h"

namespace {

using namespace KAP_T_MT;
using KAP_T_MT::KAPFault;
using KAP_T_MT::KAPResource;

class ErrorTest : public BoundTest {};

TEST_F(ErrorTest, CountsReferencesAndFreesClientDataOnce) {
  static int freed;
  auto references = [&] { return fHost.TakeSnapshot().Of(KAPResource::kError, "m").fExtent; };
  {
    CKAPError error("m", "c", 1, &freed, [](void* count) { ++*static_cast<int*>(count); });
    const CKAPError copy(error);
    CKAPError assigned;
    assigned = copy;
    EXPECT_EQ(references(), 3);
    const CKAPError moved(std::move(error));
    assigned = CKAPError();
    EXPECT_EQ(references(), 2);
    EXPECT_EQ(Thrown([&] { KAPThrowError(CKAPError(copy).Detach()); }), "m|c|1");
    EXPECT_EQ(Thrown([&] { KAPCheck(CKAPError(copy).Detach()); }), "m|c|1");
    EXPECT_EQ(references(), 2);
    EXPECT_EQ(freed, 0);
  }
  EXPECT_EQ(freed, 1);
}

// The text lives as long as the error; that of a core error lives forever.
TEST_F(ErrorTest, WhatKeepsNoAtom) {
  const CKAPError errors[] = {CKAPError("message", "c", 0), CKAPError(kMemErrorID), CKAPError()};
  const char* const texts[] = {"message", "out of memory", "Invalid CKAPError"};
  const BalancedScope balanced(fHost);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_STREQ(errors[i].what(), texts[i]);
  EXPECT_EQ(CKAPError(nullptr, "c", 0).what(), nullptr);
}

TEST_F(ErrorTest, Accessors) {
  int data = 0;
  const CKAPError error("m", "Comp", 7, &data), empty, unnamed("m", nullptr, 0);
  const CKAPError shared(error.Handle(), KAPShare()),
      adopted(CKAPError(error).Detach(), KAPAdopt());
  for (const CKAPError* same : {&error, &shared, &adopted}) {
    const BalancedScope balanced(fHost);
    EXPECT_STREQ(same->Component(), "Comp");
    EXPECT_EQ(same->Code(), 7);
    EXPECT_EQ(same->ClientData(), &data);
  }
  EXPECT_STREQ(empty.Component(), "");
  EXPECT_EQ(empty.Code(), 0);
  EXPECT_EQ(empty.ClientData(), nullptr);
  EXPECT_EQ(unnamed.Component(), nullptr);
  fHost.HideInterface(KAPErrorInterface::kName);
  MoveCounter(fHost);
  EXPECT_EQ(error.Component(), nullptr);
  EXPECT_EQ(error.Code(), 0);
  EXPECT_EQ(error.ClientData(), nullptr);
  fHost.StopFaults();
}

TEST_F(ErrorTest, Matches) {
  const CKAPError error("m", "Comp", 7), empty, unnamed("m", nullptr, 7);
  const BalancedScope balanced(fHost);
  EXPECT_TRUE(error.Matches("Comp", 7));
  EXPECT_FALSE(error.Matches("Comp", 8));
  EXPECT_FALSE(error.Matches("comp", 7));
  EXPECT_FALSE(error.Matches("Com", 7));
  EXPECT_TRUE(empty.Matches("", 0));
  EXPECT_FALSE(empty.Matches("Comp", 0));
  EXPECT_FALSE(empty.Matches("", 1));
  EXPECT_FALSE(unnamed.Matches("Comp", 7));
  EXPECT_FALSE(error.Matches(nullptr, 7) || empty.Matches(nullptr, 0));
}

// Making an error never throws: something else has failed already.
TEST_F(ErrorTest, WithoutMeans) {
  fHost.FailFrom(KAPFault::kError, 1);
  EXPECT_EQ(Thrown([] { CKAPError::ThrowError("m", "c", 1); }), "(empty)");
  MoveCounter(fHost);
  fHost.HideInterface("KAPErrorInterface");
  EXPECT_EQ(Describe(CKAPError("m", "c", 1)), "(empty)");
  EXPECT_EQ(Describe(CKAPError(kMemErrorID)), "(empty)");
}

// ---- Failures at the boundary ----

struct TextlessException : std::exception {
  const char* what() const noexcept override { return nullptr; }
};

const struct {
  const char* why;
  std::function<void()> body;
  const char* error;   // what the caller receives
  const char* report;  // or what the binder receives
  const char* shared;  // what the caller receives when the host makes no error
} kFailures[] = {
    {"a standard exception", [] { throw std::runtime_error("some"); }, "some|TOQ|0", "some",
     kOutOfMemory},
    {"our own exception", [] { KAPThrowMathOverflow(); }, "Math overflow exception|TOQ|0",
     kOverflow, kOutOfMemory},
    {"no text", [] { throw TextlessException(); }, "unknown KAP error|TOQ|0", "unknown KAP error",
     kOutOfMemory},
    {"an error", [] { CKAPError::ThrowError("m", "c", -3); }, "m|c|-3", "m", kUnknown},
    {"the empty error", [] { throw CKAPError(); }, kUnknown, "Invalid CKAPError", kUnknown},
    {"a core error", [] { CKAPError::ThrowError(kMemErrorID); }, kOutOfMemory, "out of memory",
     kOutOfMemory},
    {"no memory", [] { CKAPMemory::ThrowMemError(); }, kOutOfMemory, kBadAlloc, kOutOfMemory},
    {"no exception class", [] { throw 5; }, kUnknown, "unknown KAP error", kUnknown},
};

TEST_F(ErrorTest, ReturnedAndReported) {
  const BalancedScope balanced(fHost);
  for (const auto& row : kFailures) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Describe(CKAPError(KAPReturningError(row.body))), row.error);
    EXPECT_EQ(KAPReportingError([&] { return row.body(), 1; }), 0);
    EXPECT_EQ(fHost.TakeReport(), row.report);
    EXPECT_EQ(KAPReportingError([&] { return row.body(), 1; }, -1), -1);
    EXPECT_EQ(fHost.TakeReport(), row.report);
    KAPReportingError([&] { row.body(); });
    EXPECT_EQ(fHost.TakeReport(), row.report);
  }
  EXPECT_EQ(KAPReturningError([] {}), nullptr);
  EXPECT_EQ(KAPReportingError([] { return 7; }, -1), 7);
  KAPReportError(nullptr);
  EXPECT_EQ(fHost.TakeReport(), "unknown KAP error");
}

TEST_F(ErrorTest, WithoutTheInterface) {
  const CKAPError error(std::runtime_error("cause"));
  EXPECT_STREQ(error.what(), "cause");
  EXPECT_TRUE(error.Matches("TOQ", 0));
  fHost.HideInterface(KAPErrorInterface::kName);
  MoveCounter(fHost);
  EXPECT_STREQ(error.what(), "unknown KAP error");
  EXPECT_EQ(Thrown([&] { error.Matches("TOQ", 0); }), "(empty)");
  fHost.StopFaults();
  MoveCounter(fHost);
}

// A failure never looks like success: if no error can be made, a shared one takes its place.
TEST_F(ErrorTest, SharedErrors) {
  const BalancedScope balanced(fHost);
  for (const bool interfaceLost : {false, true}) {
    if (interfaceLost) {
      fHost.HideInterface(KAPErrorInterface::kName);
      MoveCounter(fHost);
    }
    fHost.FailFrom(KAPFault::kAny, 1);
    std::vector<KAPError*> errors;
    for (const auto& row : kFailures) errors.push_back(KAPReturningError(row.body));
    fHost.StopFaults();
    MoveCounter(fHost);
    for (std::size_t i = 0; i < errors.size(); ++i) {
      SCOPED_TRACE(kFailures[i].why);
      ASSERT_NE(errors[i], nullptr);
      const CKAPError error(errors[i]);
      // Without the interface a core error cannot be distinguished from the empty one.
      EXPECT_TRUE(interfaceLost || Describe(error) == kFailures[i].shared) << Describe(error);
    }
  }
  HostTap::Clear();
  EXPECT_TRUE(CKAPError::Init());  // releases the shared errors that it replaces
  EXPECT_EQ(HostTap::TextsOf("Release").size(), 2u);
}

}  // namespace
