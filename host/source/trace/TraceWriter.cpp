// SPDX-License-Identifier: MIT
#include "trace/TraceWriter.h"

#include <utility>

namespace KAPHost {

std::unique_ptr<TraceWriter> TraceWriter::Open(const std::string& path, OnLost onLost) {
  return (path.ends_with(".json") ? NewJsonTrace : NewTextTrace)(path, std::move(onLost));
}

std::string Thousandths(std::chrono::nanoseconds time) {
  const std::string rest = std::to_string(time.count() % 1000);
  return std::to_string(time.count() / 1000) + '.' + std::string(3 - rest.size(), '0') + rest;
}

}  // namespace KAPHost
