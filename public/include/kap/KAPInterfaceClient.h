#pragma once

#include <cstddef>

#include "kap/KAPError.h"
#include "kap/KAPProcTable.h"

// Typed calls of the host's interfaces, and the look-ups that throw.
//
//   using Strings = TKAPInterfaceClient<KAPStringInterface>;
//   KAPStringAtom* atom = Strings::Call<"NewStringAtom">("text");
//
// Errors, wherever a table has to be loaded: once the runtime is bound, a procedure that the host
// lacks is a CKAPError with an empty message, component "KAP" and code 0. Whatever else prevents the
// load is a CKAPError "Missing Interface".
// Threads: any.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The procedure registered under the three names. Null when there is none and the runtime is not
// bound; once it is bound a missing procedure is the error with the empty message.
void* KAPGetProcAddress(const char* interfaceName, const char* methodName, const char* procName);

// Fills `out` with the procedures of a host-global interface, from the last entry to the first. 1
// when all are there. A missing one is the error with the empty message once the runtime is bound;
// before that its slot becomes null and the result is 0. Not bound at all: the last slot becomes null
// and the result is 0. The last argument is ignored.
int KAPLoadProcTable(const _t_KAPFTabEntry* entries, std::size_t count, const char* interfaceName,
                     void** out, int ignored);

// The procedure table of one host-global interface. Static only.
template <class Interface>
class TKAPInterfaceClient : public TKAPProcTable<Interface> {
  using Table = TKAPProcTable<Interface>;

 public:
  // Loads the table whether or not it is stale, without remembering the counter. False when the
  // runtime is not bound, or not yet. The argument is ignored.
  static bool LoadProcTable(bool) {
    const KAPLoadOutcome outcome = Table::fTable.Load();
    if (outcome == KAPLoadOutcome::kMissingProcedure) KAPThrowLoadFailure(outcome);
    return outcome == KAPLoadOutcome::kLoaded;
  }

  // Makes sure that the table is loaded and current.
  static void Refresh() {
    if (!Table::fTable.IsFresh()) [[unlikely]]
      ReloadOrThrow();
  }

  // Calls a method: Call<"NewStringAtom">(text).
  template <TKAPName Method, class... Args>
  static auto Call(Args... args) {
    Refresh();
    return Table::template CallLoaded<Method>(args...);
  }

 private:
  [[gnu::noinline, gnu::cold]] static void ReloadOrThrow() {
    const KAPLoadOutcome outcome = Table::fTable.Reload();
    if (outcome != KAPLoadOutcome::kLoaded) KAPThrowLoadFailure(outcome);
  }
};

}  // namespace KAP_T_MT
