// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kaphost/KAPHost.h"

// Hosts for tests. At the end of a test nothing may be held of the host that was not held at the
// start, and the test must have taken every report.
//
//   class NumberTest : public LibraryTest {};
//
//   TEST_F(NumberTest, Get) {
//     auto newNumber = fHost.Proc<KAP_T_MT::POSNumberInterface, "NewPOSNumber">();
//     ...
//   }
//
// HostTest makes a host; LibraryTest also loads the library into it. A test that repeats a scenario
// with fresh hosts uses TestHost itself, whose destructor checks.

// A host that fails the test when it is destroyed with something still held or with reports that
// the test did not take. Its procedures are called by interface and method and looked up as a
// component does: fHost.Strings<"NewStringAtom">("key").
class TestHost : public KAPHost::Host {
 public:
  explicit TestHost(bool checks = false,
                    KAPHost::HostMemory memory = KAPHost::HostMemory::kAutomatic)
      : Host({.fOnReport = {}, .fOnLeak = &Complain, .fChecks = checks, .fMemory = memory}) {}
  ~TestHost() { EXPECT_EQ(TakeReports(), std::vector<std::string>()) << "unexpected reports"; }

  template <class Interface, KAP_T_MT::TKAPName Method, class... Args>
  auto Call(Args... args) const {
    return Proc<Interface, Method>()(args...);
  }
  template <KAP_T_MT::TKAPName Method, class... Args>
  auto Strings(Args... args) const {
    return Call<KAP_T_MT::KAPStringInterface, Method>(args...);
  }
  template <KAP_T_MT::TKAPName Method, class... Args>
  auto Errors(Args... args) const {
    return Call<KAP_T_MT::KAPErrorInterface, Method>(args...);
  }
  template <KAP_T_MT::TKAPName Method, class... Args>
  auto Memory(Args... args) const {
    return Call<KAP_T_MT::KAPMemoryInterface, Method>(args...);
  }
  template <KAP_T_MT::TKAPName Method, class... Args>
  auto Containers(Args... args) const {
    return Call<KAP_T_MT::KAPContainerInterface, Method>(args...);
  }

  // A new reference.
  KAPStringAtom* Atom(const char* text) const { return Strings<"NewStringAtom">(text); }
  // Releases an atom and returns its text; "(null)" for null.
  std::string TakeText(KAPStringAtom* atom) const {
    if (!atom) return "(null)";
    std::string text = Strings<"GetCString">(atom);
    Strings<"DeleteStringAtom">(atom);
    return text;
  }
  // Releases an error and returns its message; "" for null.
  std::string TakeMessage(KAPError* error) const {
    if (!error) return "";
    std::string message = TakeText(Errors<"GetErrorMessage">(error));
    Errors<"Release">(error);
    return message;
  }

  // Makes a call whose result is an error and returns its message.
  template <class Interface, KAP_T_MT::TKAPName Method, class... Args>
  std::string Do(Args... args) const {
    return TakeMessage(Call<Interface, Method>(args...));
  }

  // Takes the only report and returns it. The test fails when there is none or more than one.
  std::string TakeReport() {
    const std::vector<std::string> reports = TakeReports();
    EXPECT_EQ(reports.size(), 1u);
    return reports.empty() ? std::string() : reports.front();
  }

 private:
  static void Complain(const KAPHost::Snapshot& leaked) {
    ADD_FAILURE() << "still held at the end:\n" << leaked;
  }
};

// Fails the test when other things are held at its end than at its start. Whatever fills lasting
// caches (method tables) belongs before it.
class BalancedScope {
 public:
  explicit BalancedScope(const KAPHost::Host& host) : fHost(host), fBefore(host.TakeSnapshot()) {}
  BalancedScope(const BalancedScope&) = delete;
  BalancedScope& operator=(const BalancedScope&) = delete;
  ~BalancedScope() { EXPECT_TRUE(Difference().IsEmpty()) << Difference(); }

  KAPHost::Snapshot Difference() const { return fHost.TakeSnapshot() - fBefore; }

 private:
  const KAPHost::Host& fHost;
  KAPHost::Snapshot fBefore;
};

// The call of the host that fails, alone or with all after it.
class FailingCall {
 public:
  // Calls `test` with the first, the second, ... call, alone and with all after it, as long as it
  // returns true: there was such a call, and no expectation failed. Returns how often it did.
  template <class Test>
  static unsigned long Sweep(Test test) {
    unsigned long failed = 0;
    for (const bool andAllAfterIt : {false, true}) {
      for (unsigned long n = 1;; ++n, ++failed) {
        SCOPED_TRACE(testing::Message() << "call " << n << (andAllAfterIt ? " on" : ""));
        if (!test(FailingCall(n, andAllAfterIt)) || testing::Test::HasFailure()) break;
      }
    }
    return failed;
  }

  // Runs the body with the call failing. Returns whether there was such a call.
  template <class Body>
  bool During(KAPHost::Host& host, Body body,
              KAP_T_MT::KAPFault kind = KAP_T_MT::KAPFault::kAny) const {
    fAndAllAfterIt ? host.FailFrom(kind, fNumber) : host.FailCall(kind, fNumber);
    body();
    const bool fired = host.Fired();
    host.StopFaults();
    return fired;
  }

  bool IsAlone() const { return !fAndAllAfterIt; }

 private:
  FailingCall(unsigned long number, bool andAllAfterIt)
      : fNumber(number), fAndAllAfterIt(andAllAfterIt) {}

  unsigned long fNumber;
  bool fAndAllAfterIt;
};

class HostTest : public ::testing::Test {
 protected:
  TestHost fHost;
};

// A host with the library loaded. What is held is checked after the library has been terminated and
// unloaded, when its caches are empty too: it must have released everything that it ever took.
class LibraryTest : public HostTest {
 protected:
  LibraryTest() : fLibrary(fHost.Load(KAP_LIBRARY_PATH)) {}

  // Declared after the host, hence unloaded before the host checks what is held.
  KAPHost::Component fLibrary;
};
