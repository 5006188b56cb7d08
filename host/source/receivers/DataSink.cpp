#include "receivers/DataSink.h"

#include "accounting/Accounting.h"
#include "base/Counting.h"
#include "errors/Errors.h"

namespace KAPHost {

void AddSinkRef(KAPDataSink& sink) noexcept { Increment(sink.fCount); }

void ReleaseSink(KAPDataSink* sink) noexcept {
  while (sink && Decrement(sink->fCount) == 0) {
    KAPDataSink* const target = sink->TakeTarget();
    Count(KAPResource::kSink, -1, 0);
    delete sink;
    sink = target;
  }
}

SinkClient::~SinkClient() { ReportError(fDelete(fClient)); }

}  // namespace KAPHost
