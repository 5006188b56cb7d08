// SPDX-License-Identifier: MIT
#pragma once

#include <new>
#include <string>

#include "HostTap.h"
#include "KAP.h"
#include "TestHost.h"

// An interface for tests to register and to call.
struct EchoInterface
    : KAP_T_MT::TKAPInterface<"EchoInterface",
                              KAP_T_MT::TKAPMethod<"First", "EchoFirstProc", int()>,
                              KAP_T_MT::TKAPMethod<"Second", "EchoSecondProc", int()>,
                              KAP_T_MT::TKAPMethod<"Third", "EchoThirdProc", int()>> {};
using EchoClient = KAP_T_MT::TKAPInterfaceClient<EchoInterface>;

// Registers First, Second and Third as procedures that return Base + 1, + 2, + 3.
template <int Base = 0>
void RegisterEcho(KAPHost::Host& host) {
  host.RegisterInterface<EchoInterface>([]() noexcept { return Base + 1; },
                                        []() noexcept { return Base + 2; },
                                        []() noexcept { return Base + 3; });
}

// Registers another procedure in place of one of the host's own.
template <class Interface, KAP_T_MT::TKAPName Method>
void ReplaceProc(KAPHost::Host& host, typename Interface::template Proc<Method> proc) {
  const auto& entry = Interface::kEntries[Interface::template kSlot<Method>];
  host.Register(Interface::kName, entry.fMethodName, entry.fProcName,
                reinterpret_cast<void*>(proc));
}

inline void* EchoProc(const KAPHost::Host& host, std::size_t slot) {
  const auto& entry = EchoInterface::kEntries[slot];
  return host.Find(EchoInterface::kName, entry.fMethodName, entry.fProcName);
}

// A container with the methods of EchoInterface: one reference for the caller.
inline KAPContainer* MakeContainer(const char* implementation, void* instance = nullptr,
                                   KAPDeleteProc deleteInstance = nullptr) {
  using KAP_T_MT::CKAPStringAtom;
  return KAP_T_MT::CKAPContainer::NewFullContainer(instance, CKAPStringAtom(implementation),
                                                   CKAPStringAtom(EchoInterface::kName),
                                                   deleteInstance);
}

// Increments the host's unregister counter.
inline void MoveCounter(KAPHost::Host& host) {
  host.Register("Passing", "Method", "Proc", &host);
  host.Unregister("Passing");
}

// An error as "message|component|code", for comparisons; "(empty)" for one without a handle.
inline std::string Describe(const KAP_T_MT::CKAPError& error) {
  if (!error.Handle()) return "(empty)";
  using Errors = KAP_T_MT::TKAPInterfaceClient<KAP_T_MT::KAPErrorInterface>;
  const KAP_T_MT::CKAPStringAtom component(Errors::Call<"GetComponent">(error.Handle()), true);
  const std::string text = component.Text() ? component.Text() : "(null)";
  return std::string(error.what()) + "|" + text + "|" +
         std::to_string(Errors::Call<"GetID">(error.Handle()));
}

// What `body` throws, as a string; "" when it throws nothing.
template <class Body>
std::string Thrown(Body body) {
  try {
    body();
    return "";
  } catch (const KAP_T_MT::CKAPError& error) {
    return Describe(error);
  } catch (const std::exception& exception) {
    return exception.what();
  }
}

inline constexpr const char* kMissingInterface = "Missing Interface|KAP|0";
inline constexpr const char* kMissingProcedure = "|KAP|0";
inline constexpr const char* kInvalidContainer = "invalid container||0";
inline constexpr const char* kBadAlloc = "std::bad_alloc";
inline constexpr const char* kOverflow = "Math overflow exception";
inline constexpr const char* kOutOfMemory = "out of memory|KAP|1";  // this host's core error
inline constexpr const char* kUnknown = "unknown error|KAP|0";      // and its other one

// A component that is bound to a tapped host during the test.
class BoundTest : public HostTest {
 protected:
  BoundTest() {
    EXPECT_TRUE(KAP_T_MT::KAPClientInit(&HostTap::GetProc));
    HostTap::Clear();
  }
  ~BoundTest() override {
    fHost.StopFaults();
    KAP_T_MT::KAPClientTerminate();
  }

  HostTap fTap{fHost};
};
