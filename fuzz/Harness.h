#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "POSDict.h"
#include "POSStreamer.h"
#include "kaphost/KAPHost.h"

// What all fuzz targets share. A target is one function, which gets the input and a harness:
//
//   KAP_FUZZ_TARGET(input, harness) {
//     const KAP_T_MT::CPOSObject object = harness.Read(input);
//     harness.Expect(object.IsNull() || object.IsEqual(object), "an object equals itself");
//   }
//
// It is linked with libFuzzer, or with replay_main.cpp, which runs it on the inputs of a folder.

// The library in a host of its own, with the program bound to it as a client.
class Harness {
 public:
  // The one of the process.
  static Harness& Get();

  // Runs the target on an input. What it holds of the host afterwards is a fault.
  void Run(void (*target)(std::string_view, Harness&), std::string_view input);

  // Ends the process when it is not so.
  static void Expect(bool isSo, const char* what);

  // The reports since the last time, none of which is otherwise looked at.
  std::vector<std::string> TakeReports() { return fHost.TakeReports(); }

  // A read-only stream over the bytes, and what can be read from a stream.
  KAP_T_MT::CKAPPositionableStream Stream(std::string_view bytes) const;
  static std::string Contents(KAP_T_MT::CKAPPositionableStream stream);

  // The object as a document, which must be read back as an equal one and be written the same
  // again. Infinite numbers excepted: they can be written only.
  void ExpectRoundTrip(const KAP_T_MT::CPOSObject& object);

  const KAP_T_MT::CPOSStreamer& Streamer() const { return fStreamer; }

 private:
  struct Binding {
    explicit Binding(const KAPHost::Host& host);
    ~Binding() { KAP_T_MT::KAPClientTerminate(); }
  };

  Harness();

  KAPHost::Host fHost;
  KAPHost::Component fLibrary;
  const Binding fBinding;
  KAP_T_MT::CPOSStreamer fStreamer;
};

// libFuzzer wants a function of this name.
#define KAP_FUZZ_TARGET(input, harness)                                         \
  static void Target(std::string_view input, Harness& harness);                 \
  extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput( \
      const std::uint8_t* data, std::size_t size) {                             \
    Harness::Get().Run(&Target, {reinterpret_cast<const char*>(data), size});   \
    return 0;                                                                   \
  }                                                                             \
  static void Target([[maybe_unused]] std::string_view input, [[maybe_unused]] Harness& harness)
