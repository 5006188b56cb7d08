#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kaphost/KAPHost.h"

// Hosts for tests. At the end of every test nothing may be held of the host that was not held at
// the start, and every report must have been taken by the test.
//
//   class NumberTest : public LibraryTest {};
//
//   TEST_F(NumberTest, Get) {
//     auto newNumber = fHost.Proc<KAP_T_MT::POSNumberInterface, "NewPOSNumber">();
//     ...
//   }
//
// HostTest makes a host, LibraryTest also loads the library into it. A test that repeats a scenario
// with fresh hosts uses TestHost itself: the destructor checks.

// A host that finds fault when it is destroyed out of balance or with reports that nobody expected.
// Its procedures are called by interface and method, looked up as a component does it:
// fHost.Strings<"NewStringAtom">("key").
class TestHost : public KAPHost::Host {
 public:
  TestHost() : Host({.fOnReport = {}, .fOnLeak = &Complain}) {}
  ~TestHost() { EXPECT_EQ(TakeReports(), std::vector<std::string>()) << "reports not expected"; }

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
  // The text of an atom, which is given back; "(null)" for none.
  std::string TakeText(KAPStringAtom* atom) const {
    if (atom == nullptr) return "(null)";
    std::string text = Strings<"GetCString">(atom);
    Strings<"DeleteStringAtom">(atom);
    return text;
  }
  // The message of an error, which is given back; "" for none.
  std::string TakeMessage(KAPError* error) const {
    if (error == nullptr) return "";
    std::string message = TakeText(Errors<"GetErrorMessage">(error));
    Errors<"Release">(error);
    return message;
  }

  // Makes a call whose result is an error, and gives its message.
  template <class Interface, KAP_T_MT::TKAPName Method, class... Args>
  std::string Do(Args... args) const {
    return TakeMessage(Call<Interface, Method>(args...));
  }

  // Takes the reports, of which there must be one, and gives it. Otherwise the test fails.
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

// Fails the test when the books differ at its end from those at its start. What fills caches that
// stay (method tables) belongs before it.
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

class HostTest : public ::testing::Test {
 protected:
  TestHost fHost;
};

// With the library loaded. The balance is struck after it has been terminated and unloaded, when
// its caches are gone too: all that it ever took must have come back.
class LibraryTest : public HostTest {
 protected:
  LibraryTest() : fLibrary(fHost.Load(KAP_LIBRARY_PATH)) {}

  // Declared behind the host, hence unloaded before the host strikes its balance.
  KAPHost::Component fLibrary;
};
