// SPDX-License-Identifier: MIT
#include "Harness.h"

using namespace KAP_T_MT;

Harness& Harness::Get() {
  static Harness harness;
  return harness;
}

Harness::Harness() : fLibrary(fHost.Load(KAP_LIBRARY_PATH)), fClient(fHost.GetProcAddress()) {}

// Loads the library before the first input, so that libFuzzer knows all of its branches.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  Harness::Get();
  return 0;
}

void Harness::Run(void (*target)(std::string_view, Harness&), std::string_view input) {
  fRuns.Run([&] { target(input, *this); });
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
  Expect(TakeReports().empty(), "an object can be written");
  const std::string document = Contents(stream);
  const bool hasInfinity =
      document.find("#inf ") != std::string::npos || document.find("#-inf ") != std::string::npos;
  const CPOSObject read = fStreamer.Deserialize(Stream(document));
  if (hasInfinity && TakeReports() == std::vector<std::string>{"malformed number"}) return;
  Expect(!read.IsNull(), "a written document can be read");
  Expect(read.IsEqual(object), "the object read equals the object written");
  const CKAPPositionableStream again;
  fStreamer.Serialize(again, read);
  Expect(Contents(again) == document, "the object is written the same again");
}
