// SPDX-License-Identifier: MIT
#include "kapcheck/Scenario.h"

// The scenario of the small components: asks for the answer. With KAP_DECLARES, also declares the
// interface of those that have a second one.

KAP_CHECK_EXPORT int KAPCheckScenario(KAPGetProcAddressProc getProcAddress) {
  void* const answer = getProcAddress("AnswerInterface", "Answer", "AnswerProc");
  return answer && reinterpret_cast<double (*)()>(answer)() == 42;
}

#ifdef KAP_DECLARES
#include "components/NoteInterface.h"

KAP_CHECK_DECLARE(NoteInterface)
#endif
