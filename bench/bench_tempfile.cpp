// SPDX-License-Identifier: MIT

// A temporary-file stream and a FILE of the C library: a mebibyte in calls of one size.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "BenchHost.h"
#include "KAPUtilsDir.h"

namespace Bench {

namespace {

using benchmark::State;

constexpr std::int64_t kTotal = 1 << 20;
constexpr std::int64_t kLargeCall = 64 * 1024;
constexpr std::int64_t kSmallCall = 16;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// Every run has its own stream. Each temporary file uses a descriptor; the limit of the process is
// high enough.
KAP_T_MT::CKAPPositionableStream NewStream() {
  return KAP_T_MT::CKAPUtilsDir::NewTempFileStream("bench", nullptr, "w+b");
}

template <class Call, class Rewind>
void Measure(State& state, Call call, Rewind rewind) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto _ : state) {
    rewind();
    for (std::int64_t done = 0; done < kTotal; done += state.range(0)) call(bytes);
  }
  SetItems(state, kTotal / state.range(0));
  state.SetBytesProcessed(state.iterations() * kTotal);
}

void OurWrite(State& state) {
  auto stream = NewStream();
  Measure(
      state, [&](auto& bytes) { stream.Write(bytes.data(), bytes.size()); },
      [&] { stream.Rewind(); });
}

void OurRead(State& state) {
  auto stream = NewStream();
  const std::vector<unsigned char> bytes(kTotal, 'x');
  stream.Write(bytes.data(), bytes.size());
  Measure(
      state,
      [&](auto& buffer) {
        if (stream.Read(buffer.data(), buffer.size()) != buffer.size()) std::abort();
      },
      [&] { stream.Rewind(); });
}

void SetLimit(State& state) { SetTarget(state, state.range(0) == kLargeCall ? 1.2 : 3); }

void StdioWrite(State& state) {
  const File file(std::tmpfile());
  Measure(
      state, [&](auto& bytes) { std::fwrite(bytes.data(), 1, bytes.size(), file.get()); },
      [&] { std::rewind(file.get()); });
  SetLimit(state);
}

void StdioRead(State& state) {
  const File file(std::tmpfile());
  const std::vector<unsigned char> bytes(kTotal, 'x');
  std::fwrite(bytes.data(), 1, bytes.size(), file.get());
  Measure(
      state,
      [&](auto& buffer) {
        if (std::fread(buffer.data(), 1, buffer.size(), file.get()) != buffer.size()) std::abort();
      },
      [&] { std::rewind(file.get()); });
  SetLimit(state);
}

}  // namespace

void RegisterBenchmarks() {
  const auto add = [](const char* name, void (*measure)(State&)) {
    benchmark::RegisterBenchmark(name, measure)->Arg(kLargeCall)->Arg(kSmallCall);
  };
  add("tempfile_write/ours", &OurWrite);
  add("tempfile_write/fwrite", &StdioWrite);
  add("tempfile_read/ours", &OurRead);
  add("tempfile_read/fread", &StdioRead);
}

}  // namespace Bench
