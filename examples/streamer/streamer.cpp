// SPDX-License-Identifier: MIT
// Documents: writes two objects to one stream, shows the bytes, and reads the objects back.

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "KAP.h"
#include "POSDict.h"
#include "POSStreamer.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

namespace {

std::string Contents(CKAPPositionableStream& stream) {
  std::string bytes;
  unsigned char buffer[256];
  stream.Rewind();
  while (const std::size_t count = stream.Read(buffer, sizeof buffer)) {
    bytes.append(reinterpret_cast<const char*>(buffer), count);
  }
  return bytes;
}

void Work(KAPHost::Host& host) {
  CPOSArray size = CPOSArray::New();
  size.AppendOrThrow(CPOSNumber(800));
  size.AppendOrThrow(CPOSNumber(600));
  CPOSDict window = CPOSDict::New();
  window.PutOrThrow("title", CPOSString("Notes"));
  window.PutOrThrow("size", size);

  CKAPPositionableStream stream = CKAPPositionableStream::New();  // in memory
  const CPOSStreamer streamer = CPOSStreamer::New();
  streamer.Serialize(stream, window);
  streamer.Serialize(stream, CPOSNumber(42));
  // Writing reports its failures to the binder; a host that must know looks there.
  if (!host.TakeReports().empty()) std::printf("not written\n");
  std::printf("%s\n", Contents(stream).c_str());

  stream.Rewind();
  const CPOSDict copy(streamer.Deserialize(stream));
  std::printf("%s, %.0f wide\n", copy.GetString("title").Get(),
              copy.DeepGetNumber("size[0]").Get());
  std::printf("then %.0f\n", CPOSNumber(streamer.Deserialize(stream)).Get());
  if (streamer.Deserialize(stream).IsNull()) {
    for (const std::string& report : host.TakeReports()) {
      std::printf("at the end: %s\n", report.c_str());
    }
  }
}

// Catches failures while the runtime is bound: a CKAPError refers to an error of the host.
int Run(KAPHost::Host& host) {
  const KAPClient client(host.GetProcAddress());
  try {
    Work(host);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: streamer KAPUTILS (a shared library)\n");
    return 2;
  }
  KAPHost::Host host;
  try {
    const KAPHost::Component library = host.Load(argv[1]);
    return Run(host);
  } catch (const std::runtime_error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
