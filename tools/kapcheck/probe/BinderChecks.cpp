// SPDX-License-Identifier: MIT
#include <cstring>

#include "probe/Checks.h"
#include "probe/Services.h"

namespace KAPProbe {

namespace {

using Binder = KAPBinderInterface;

constexpr char kInterface[] = "KAPProbeTrialInterface";
// Another interface, whose name begins alike.
constexpr char kLonger[] = "KAPProbeTrialInterface2";

int First() { return 1; }
int Second() { return 2; }
void* Address(int (*proc)()) { return reinterpret_cast<void*>(proc); }

// Registers procedures for one check and unregisters them at its end.
class Registered {
 public:
  Registered(const char* method, void* proc, const char* interfaceName = kInterface)
      : fInterface(interfaceName) {
    const int result = Call<Binder, "KAPRegisterProcAddress">(fInterface, method, "P", proc);
    Need<Binder, "KAPRegisterProcAddress">(result != 0, "returns 0");
  }
  Registered(const Registered&) = delete;
  Registered& operator=(const Registered&) = delete;
  ~Registered() {
    constexpr const char* kName = "KAPUnregisterInterface";
    void* const proc = Find(Binder::kName, kName, kName);
    if (proc) reinterpret_cast<Binder::Proc<"KAPUnregisterInterface">>(proc)(fInterface);
  }

 private:
  const char* fInterface;
};

void CheckNulls() {
  const char* const names[] = {kInterface, "M", "P"};
  for (int i = 0; i < 4; ++i) {
    const char* given[3] = {names[0], names[1], names[2]};
    if (i < 3) given[i] = nullptr;
    void* const proc = i < 3 ? Address(&First) : nullptr;
    Expect(Call<Binder, "KAPRegisterProcAddress">(given[0], given[1], given[2], proc) == 0,
           "argument " + std::to_string(i + 1) + " is null, and the procedure is registered");
  }
}

void CheckUnregistering() {
  const Registered first("M", Address(&First));
  const Registered second("N", Address(&Second));
  const Registered other("M", Address(&First), kLonger);
  Call<Binder, "KAPUnregisterInterface">("KAPProbeTrial");
  Expect(Find(kInterface, "M", "P"), "another name removes the interface");
  Call<Binder, "KAPUnregisterInterface">(kInterface);
  Expect(!Find(kInterface, "M", "P") && !Find(kInterface, "N", "P"),
         "a look-up finds a procedure of an interface that was unregistered");
  Expect(Find(kLonger, "M", "P"), "an interface whose name begins alike is removed as well");
}

constexpr Check kChecks[] = {
    {"binder.register", "KAP", "KAPRegisterProcAddress",
     "Registers `proc` under the three names, replacing a procedure that is already there.",
     [] {
       const Registered first("M", Address(&First));
       Expect(Find(kInterface, "M", "P") == Address(&First),
              "a look-up does not find the procedure");
       Expect(
           !Find(kInterface, "M", "Q") && !Find(kInterface, "N", "P") && !Find(kLonger, "M", "P"),
           "a look-up finds it under other names");
       const Registered second("M", Address(&Second));
       Expect(Find(kInterface, "M", "P") == Address(&Second),
              "a look-up finds the procedure that was replaced");
     }},
    {"binder.names", "KAP", "KAPRegisterProcAddress", "The binder copies the names.",
     [] {
       char name[] = "M";
       const Registered registered(name, Address(&First));
       name[0] = 'N';
       Expect(Find(kInterface, "M", "P"), "a look-up finds nothing when the caller's name changes");
     }},
    {"binder.null", "KAP", "KAPRegisterProcAddress", "0: an argument is null", &CheckNulls},
    {"binder.unregister", "KAP", "KAPUnregisterInterface",
     "Removes every procedure of the interface.", &CheckUnregistering},
    {"binder.counter", "KAP", "KAPUnregisterInterface",
     "If there were any, the unregister counter grows by one",
     [] {
       const volatile unsigned long* const counter = Call<Binder, "KAPGetUnregisterCountAddr">();
       Need<Binder, "KAPGetUnregisterCountAddr">(counter, "returns null");
       const Registered first("M", Address(&First)), second("N", Address(&First));
       const unsigned long before = *counter;
       Call<Binder, "KAPUnregisterInterface">(kInterface);
       Expect(*counter == before + 1, "the counter grows by " + std::to_string(*counter - before));
       Call<Binder, "KAPUnregisterInterface">(kInterface);
       Expect(*counter == before + 1, "the counter grows although no procedure was registered");
     }},
    {"binder.counter-address", "KAP", "KAPGetUnregisterCountAddr",
     "The address of the unregister counter, borrowed for the life of the process.",
     [] {
       const unsigned long* const address = Call<Binder, "KAPGetUnregisterCountAddr">();
       Expect(address, "KAPGetUnregisterCountAddr returns null");
       Expect(Call<Binder, "KAPGetUnregisterCountAddr">() == address,
              "two calls return different addresses");
     }},
    // The host decides what becomes of a report. What can be seen is that the call returns.
    {"binder.report", "KAP", "KAPReportError", "The host copies the message",
     [] {
       char message[] = "a report of the probe";
       Call<Binder, "KAPReportError">(message);
       std::memset(message, 'x', sizeof message - 1);
       Call<Binder, "KAPReportError">("");
     }},
    {"binder.threads", "KAP", "KAPIsMultiThreaded",
     "Nonzero: the host calls components from several threads.",
     [] {
       const bool isMultiThreaded = Call<Binder, "KAPIsMultiThreaded">() != 0;
       Expect((Call<Binder, "KAPIsMultiThreaded">() != 0) == isMultiThreaded,
              "two calls return different results");
     }},
};

}  // namespace

std::span<const Check> BinderChecks() { return kChecks; }

}  // namespace KAPProbe
