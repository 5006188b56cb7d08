// SPDX-License-Identifier: MIT
#include "kapcheck/Scenario.h"

#include <cstdlib>

// The scenario of the small components: asks for the answer. With KAP_DECLARES, also declares the
// interface of those that have a second one. With the environment variable KAP_FAULT, it is itself
// what is at fault.

KAP_CHECK_EXPORT int KAPCheckScenario(KAPGetProcAddressProc getProcAddress) {
  void* const answer = getProcAddress("AnswerInterface", "Answer", "AnswerProc");
  try {
    return answer && reinterpret_cast<double (*)()>(answer)() == 42;
  } catch (...) {
    return 0;
  }
}

[[gnu::constructor]] static void Load() {
  if (std::getenv("KAP_FAULT")) std::abort();
}

#ifdef KAP_DECLARES
#include "components/NoteInterface.h"

KAP_CHECK_DECLARE(NoteInterface)
#endif
