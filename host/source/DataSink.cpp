#include "DataSink.h"

#include "Counting.h"
#include "Errors.h"
#include "Tally.h"

namespace KAPHost {

void AddSinkRef(KAPDataSink& sink) noexcept { Increment(sink.fCount); }

void ReleaseSink(KAPDataSink* sink) noexcept {
  while (sink != nullptr && Decrement(sink->fCount) == 0) {
    KAPDataSink* const target = sink->TakeTarget();
    Count(kSinkSlot, -1, 0);
    delete sink;
    sink = target;
  }
}

SinkClient::~SinkClient() { ReportError(fDelete(fClient)); }

}  // namespace KAPHost
