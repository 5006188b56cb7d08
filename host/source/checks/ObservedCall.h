// SPDX-License-Identifier: MIT
#pragma once

#include <span>

#include "kap/KAPInterface.h"
#include "kaphost/Declared.h"

namespace KAPHost {

using KAP_T_MT::KAPResource;

// What the checks and the ledger know of a call.
struct ObservedCall {
  const char* fInterface;  // under which the procedure is registered
  const DeclaredMethod& fMethod;
  const char* fCaller;
  const char* fCallee;
  bool fIsHosts;  // the procedure is the host's own
  std::span<const WatchedValue> fArguments;

  // Where the procedure writes its result; null if it writes none.
  const WatchedValue* Place() const noexcept {
    if (fArguments.empty()) return nullptr;
    const WatchedValue& first = fArguments[0];
    return first.fKind == ValueKind::kPlace && first.fBits != 0 ? &first : nullptr;
  }
};

// The kind of counted things that a handle refers to; kNothing for other values.
constexpr KAPResource ResourceOf(ValueKind kind) noexcept {
  switch (kind) {
    case ValueKind::kAtom:
      return KAPResource::kAtom;
    case ValueKind::kError:
      return KAPResource::kError;
    case ValueKind::kContainer:
      return KAPResource::kContainer;
    case ValueKind::kBuffer:
      return KAPResource::kBuffer;
    case ValueKind::kNothing:
    case ValueKind::kBool:
    case ValueKind::kSigned:
    case ValueKind::kUnsigned:
    case ValueKind::kReal:
    case ValueKind::kText:
    case ValueKind::kPointer:
    case ValueKind::kPlace:
    case ValueKind::kOther:
      break;
  }
  return KAPResource::kNothing;
}

}  // namespace KAPHost
