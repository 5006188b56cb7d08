// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Expect.h"
#include "POSDict.h"
#include "POSStreamer.h"
#include "kap/KAPClient.h"
#include "kaphost/KAPHost.h"

// The common part of all fuzz targets. A target is a function of the input and a harness:
//
//   KAP_FUZZ_TARGET(input, harness) {
//     const KAP_T_MT::CPOSObject object = harness.Read(input);
//     Expect(object.IsNull() || object.IsEqual(object), "an object equals itself");
//   }
//
// It links with libFuzzer, or with replay_main.cpp, which runs it on the inputs in a folder.

// The library in its own host, and the program as a client of that host.
class Harness {
 public:
  // The only harness of the process.
  static Harness& Get();

  // Runs the target on an input. Fails if the target leaks anything of the host.
  void Run(void (*target)(std::string_view, Harness&), std::string_view input);

  // The reports since the previous call. The harness ignores the others.
  std::vector<std::string> TakeReports() { return fHost.TakeReports(); }

  // A read-only stream over the bytes, and the bytes of a stream.
  KAP_T_MT::CKAPPositionableStream Stream(std::string_view bytes) const;
  static std::string Contents(KAP_T_MT::CKAPPositionableStream stream);

  // Writes the object as a document, reads it back, compares, and writes it again: same bytes.
  // Infinite numbers are an exception: no reader accepts them.
  void ExpectRoundTrip(const KAP_T_MT::CPOSObject& object);

  KAPHost::Host& Host() { return fHost; }
  const KAP_T_MT::CPOSStreamer& Streamer() const { return fStreamer; }

 private:
  Harness();

  KAPHost::Host fHost;
  KAPHost::Component fLibrary;
  const KAP_T_MT::KAPClient fClient;
  KAP_T_MT::CPOSStreamer fStreamer = KAP_T_MT::CPOSStreamer::New();
  BalancedRuns fRuns{fHost};
};

// libFuzzer calls the function of this name.
#define KAP_FUZZ_TARGET(input, harness)                                         \
  static void Target(std::string_view input, Harness& harness);                 \
  extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput( \
      const std::uint8_t* data, std::size_t size) {                             \
    Harness::Get().Run(&Target, {reinterpret_cast<const char*>(data), size});   \
    return 0;                                                                   \
  }                                                                             \
  static void Target([[maybe_unused]] std::string_view input, [[maybe_unused]] Harness& harness)
