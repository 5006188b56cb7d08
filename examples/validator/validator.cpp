// SPDX-License-Identifier: MIT
// Validation: a schema, checked itself first; a check of its own for one type; and the messages.

#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>

#include "KAP.h"
#include "POSDict.h"
#include "POSValidator.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

namespace {

constexpr const char* kSchema =
    "< Year   < category int min 1800 >"
    "  Person < category dict required < name string born Year > > >";

void PrintMessage(const char* message) { std::printf("  %s\n", message); }

// Called for each object of the type that complies with the schema. It must not throw.
long CheckYear(POSObject* object, KAPStringAtom*, KAPSharedBuffer* buffer, void* last) noexcept {
  return KAPReportingError([=]() -> long {
    if (CPOSNumber(CPOSObject(object)).Get() <= *static_cast<const double*>(last)) return 1;
    const TKAPSharedBuffer<char> reason(buffer);
    std::snprintf(reason.Data(), reason.Size(), "the year has not come yet");
    return 0;
  });
}

void Check(const CPOSValidator& validator, const char* text) {
  const CPOSObject person = CPOSObject::CreateFromText(text);
  std::printf("%s\n", text);
  if (validator.Validate(person, "Person", &PrintMessage)) std::printf("  valid\n");
}

void Work() {
  const CPOSDict schema(CPOSObject::CreateFromText(kSchema));
  if (!CPOSStructValidator::ValidateSchema(schema, &PrintMessage)) return;
  double last = 2030;
  CPOSStructValidator validator(schema);
  validator.RegisterCallbackProc("Year", &CheckYear, &last);
  Check(validator, "< name (Ada) born 1815 >");
  Check(validator, "< name (Ada) born 1515 >");
  Check(validator, "< name (Ada) born 2115 >");
  Check(validator, "< name 7 >");
}

// Catches failures while the runtime is bound: a CKAPError refers to an error of the host.
int Run(KAPHost::Host& host) {
  const KAPClient client(host.GetProcAddress());
  try {
    Work();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: validator KAPUTILS (a shared library)\n");
    return 2;
  }
  KAPHost::Host host;
  try {
    const KAPHost::Component library = host.Load(argv[1]);
    return Run(host);
  } catch (const std::runtime_error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
