// SPDX-License-Identifier: MIT
#include "streams/StreamLog.h"

#include <ostream>
#include <utility>

#include "faults/Gate.h"

namespace KAPHost {

void StreamLog::Switch(bool log) noexcept {
  if (log) {
    gGate.fetch_or(kGateLogging);
  } else {
    gGate.fetch_and(~static_cast<unsigned>(kGateLogging));
  }
}

void StreamLog::Add(const StreamCall& call) {
  const std::lock_guard lock(fMutex);
  fCalls.push_back(call);
}

std::vector<StreamCall> StreamLog::Take() {
  const std::lock_guard lock(fMutex);
  return std::exchange(fCalls, {});
}

std::ostream& operator<<(std::ostream& out, const StreamCall& call) {
  out << (call.fKind.empty() ? "not a stream" : call.fKind) << ": " << call.fMethod << '(';
  if (call.fMethod == "Read" || call.fMethod == "Write") out << call.fAmount;
  if (call.fMethod == "Seek") out << call.fAmount << ", " << call.fOrigin;
  out << ')';
  if (call.fFailed) return out << " failed";
  if (call.fMethod == "Read" || call.fMethod == "Mark") out << " = " << call.fResult;
  return out;
}

}  // namespace KAPHost
