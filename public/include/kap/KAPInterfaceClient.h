// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "kap/KAPError.h"
#include "kap/KAPProcTable.h"

// Typed calls of interfaces, and the look-ups that throw.
//
//   using Strings = TKAPInterfaceClient<KAPStringInterface>;
//   KAPStringAtom* atom = Strings::Call<"NewStringAtom">("text");
//
// Errors, wherever a table has to be loaded:
//   - once the runtime is bound, a procedure that the host lacks: CKAPError with an empty message,
//     component "KAP", code 0
//   - while binding is under way, a procedure that the host lacks: CKAPError "Missing Interface",
//     component "KAP", code 0
//   - no host bound: the empty CKAPError, because no host makes an error
// Threads: any.

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// The procedure registered under the three names. When there is none: throws the error with the
// empty message once the runtime is bound, returns null otherwise.
void* KAPGetProcAddress(const char* interfaceName, const char* methodName, const char* procName);

// Fills `out` with the procedures of an interface, from the last entry to the first, and returns 1.
// At the first missing procedure the slots of the entries before it keep what they hold:
//   - once the runtime is bound: throws the error with the empty message; the slot keeps its value
//   - while binding is under way: the slot becomes null and the result is 0
// No host bound: the last slot becomes null and the result is 0. The last argument is ignored.
[[nodiscard]] int KAPLoadProcTable(const _t_KAPFTabEntry* entries, std::size_t count,
                                   const char* interfaceName, void** out, int ignored);

// The typed calls of one interface. Static only.
template <class Interface>
class TKAPInterfaceClient : public TKAPProcTable<Interface> {
  using Table = TKAPProcTable<Interface>;

  template <TKAPName Method>
  static auto FreshSlot() {
    Refresh();
    return Table::template Slot<Method>();
  }

 public:
  // Loads the table whether or not it is stale, without remembering the counter. False when no host
  // is bound, or when a procedure is missing while binding is under way. The argument is ignored.
  static bool LoadProcTable(bool) {
    const KAPLoadOutcome outcome = Table::fTable.Load();
    if (outcome == KAPLoadOutcome::kMissingProcedure) KAPThrowLoadFailure(outcome);
    return outcome == KAPLoadOutcome::kLoaded;
  }

  // Loads the table if it is stale.
  static void Refresh() {
    if (!Table::fTable.IsFresh()) [[unlikely]]
      ReloadOrThrow();
  }

  // Calls a method, after loading the table if it is stale: Call<"NewStringAtom">(text). A result
  // that is a pointer or a bool must be used (kKAPMustUse).
  template <TKAPName Method>
  static constexpr auto Call = [] {
    static_assert(Interface::template kHas<Method>, "the interface has no method of this name");
    if constexpr (Interface::template kHas<Method>) {
      return TKAPCall<&TKAPInterfaceClient::FreshSlot<Method>>();
    } else {
      return KAPNoMethod();
    }
  }();

 private:
  [[gnu::noinline, gnu::cold]] static void ReloadOrThrow() {
    const KAPLoadOutcome outcome = Table::fTable.Reload();
    if (outcome != KAPLoadOutcome::kLoaded) KAPThrowLoadFailure(outcome);
  }
};

}  // namespace KAP_T_MT
