// SPDX-License-Identifier: MIT
#include "receivers/DataSink.h"

#include "accounting/Accounting.h"
#include "errors/Errors.h"

namespace KAPHost {

bool ReleaseSink(KAPDataSink& sink) noexcept {
  RefCount::Release found = sink.fCount.Drop();
  const bool released = found == RefCount::Release::kReleased || found == RefCount::Release::kLast;
  for (KAPDataSink* dying = &sink; found == RefCount::Release::kLast;) {
    KAPDataSink* const target = dying->TakeTarget();
    Count(KAPResource::kSink, -1, 0);
    delete dying;
    if (!target) break;
    dying = target;
    found = target->fCount.Drop();
  }
  return released;
}

SinkClient::~SinkClient() { ReportError(CallComponent(fDelete, fClient)); }

}  // namespace KAPHost
