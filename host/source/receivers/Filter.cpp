// SPDX-License-Identifier: MIT
#include "receivers/Filter.h"

#include <utility>

#include "errors/Errors.h"

namespace KAPHost {

// A filter that loses its last reference has given its target away before.
Filter::~Filter() {
  if (fTarget) ReleaseSink(*fTarget);
}

KAPDataSink* Filter::TakeTarget() noexcept { return std::exchange(fTarget, nullptr); }

KAPError* Filter::Write(const unsigned char* data, std::size_t count) noexcept {
  return fIsClosed ? MakeError("the filter is closed") : DoWrite(data, count);
}

KAPError* Filter::SetTarget(KAPDataSink& target) noexcept {
  for (auto* next = dynamic_cast<Filter*>(&target); next; next = next->Next()) {
    if (next == this) return MakeError("a filter cannot be its own target");
  }
  if (!target.fCount.Add()) return MakeError("the target is being destroyed");
  KAPDataSink* const former = std::exchange(fTarget, &target);
  if (former) ReleaseSink(*former);
  return nullptr;
}

KAPError* Filter::Close() noexcept {
  KAPError* const error = fIsClosed ? nullptr : DoClose();
  fIsClosed = !error;
  return error;
}

unsigned long Filter::ChainState() const noexcept {
  unsigned long closed = 0;
  for (const Filter* filter = this; filter; filter = filter->Next()) {
    if (filter->fIsClosed) ++closed;
  }
  return closed;
}

void Filter::ResetChainState() noexcept {
  for (Filter* filter = this; filter; filter = filter->Next()) {
    filter->fIsClosed = false;
  }
}

KAPError* IdentityFilter::GetVellumcodeFilter(KAPDataSink*&) noexcept { return nullptr; }

KAPError* ClientFilter::GetVellumcodeFilter(KAPDataSink*& out) noexcept {
  KAPDataSink* filter = nullptr;
  KAPError* const error = CallComponent(fProcs.fGetVellumcodeFilter, &filter, fClient.Client());
  if (!error) out = filter;
  return error;
}

}  // namespace KAPHost
