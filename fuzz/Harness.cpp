#include "Harness.h"

#include <cstdlib>
#include <iostream>

using namespace KAP_T_MT;

Harness& Harness::Get() {
  static Harness harness;
  return harness;
}

Harness::Harness() : fLibrary(fHost.Load(KAP_LIBRARY_PATH)), fBinding(fHost) {}

Harness::Binding::Binding(const KAPHost::Host& host) {
  Expect(KAPClientInit(host.GetProcAddress()), "the program is bound");
}

// Before the first input, so that libFuzzer knows the library's branches from the beginning.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  Harness::Get();
  return 0;
}

void Harness::Expect(bool isSo, const char* what) {
  if (isSo) return;
  std::cerr << "Not as expected: " << what << '\n';
  std::abort();
}

// What a first run fills stays (method tables): only what a second one takes again is a fault.
void Harness::Run(void (*target)(std::string_view, Harness&), std::string_view input) {
  KAPHost::Snapshot difference;
  for (int i = 0; i < 2; ++i) {
    const KAPHost::Snapshot before = fHost.TakeSnapshot();
    target(input, *this);
    fHost.TakeReports();
    difference = fHost.TakeSnapshot() - before;
    if (difference.IsEmpty()) return;
  }
  std::cerr << difference << '\n';
  Expect(false, "nothing is held of the host");
}

CKAPPositionableStream Harness::Stream(std::string_view bytes) const {
  using Factory = KAPStreamFactoryInterface;
  KAPContainer* stream = nullptr;
  KAPCheck(TKAPInterfaceClient<Factory>::Call<"NewPositionableBufferStream">(
      &stream, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()));
  return CKAPPositionableStream(stream, KAPAdopt());
}

std::string Harness::Contents(CKAPPositionableStream stream) {
  stream.Rewind();
  std::string contents;
  unsigned char part[4096];
  while (const std::size_t count = stream.Read(part, sizeof part)) {
    contents.append(part, part + count);
  }
  return contents;
}

void Harness::ExpectRoundTrip(const CPOSObject& object) {
  const CKAPPositionableStream stream;
  fStreamer.Serialize(stream, object);
  Expect(TakeReports().empty(), "what was made can be written");
  const std::string document = Contents(stream);
  const bool hasInfinity =
      document.find("#inf ") != std::string::npos || document.find("#-inf ") != std::string::npos;
  const CPOSObject read = fStreamer.Deserialize(Stream(document));
  if (hasInfinity && TakeReports() == std::vector<std::string>{"malformed number"}) return;
  Expect(!read.IsNull(), "what was written can be read");
  Expect(read.IsEqual(object), "what was read is what was written");
  const CKAPPositionableStream again;
  fStreamer.Serialize(again, read);
  Expect(Contents(again) == document, "it is written the same again");
}
