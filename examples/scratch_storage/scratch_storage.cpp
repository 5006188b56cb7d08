// Scratch storage: a table goes into a temporary file, and two readers look numbers up in it, each
// at its own pace. The file is deleted with the last reference to the stream.

#include <cstdio>

#include "KAPUtilsDir.h"
#include "kap/KAPClient.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

namespace {

constexpr long kSize = sizeof(long);

void Append(CKAPPositionableStream& table, long number) {
  table.Write(reinterpret_cast<const unsigned char*>(&number), sizeof number);
}

// The number at the reader's position, which moves on; -1 at the end.
long Next(CKAPPositionableStream& reader) {
  long number = 0;
  const auto bytes = reader.Read(reinterpret_cast<unsigned char*>(&number), sizeof number);
  return bytes == sizeof number ? number : -1;
}

void Work() {
  CKAPPositionableStream table = CKAPUtilsDir::NewTempFileStream("squares", nullptr, "w+b");
  for (long i = 0; i <= 1000; ++i) Append(table, i * i);

  // With its first view the table is complete: from now on it can only be read.
  CKAPPositionableStream small = table.CreateIndependentlyPositionableStream();
  CKAPPositionableStream large = table.CreateIndependentlyPositionableStream();
  small.Seek(11 * kSize, kKAPSeekFromStart);
  large.Seek(-kSize, kKAPSeekFromEnd);
  for (int i = 11; i <= 13; ++i) std::printf("%d squared: %ld\n", i, Next(small));
  std::printf("the last one: %ld\n", Next(large));
  std::printf("behind it: %ld\n", Next(large));
  try {
    Append(table, 0);
  } catch (const CKAPError&) {
    std::printf("nothing more can be written\n");
  }
}

}  // namespace

int main(int argc, char** argv) {
  KAPHost::Host host;
  const KAPHost::Component library = host.Load(argc > 1 ? argv[1] : "libKAPUtils.so");
  if (!KAPClientInit(host.GetProcAddress())) return 1;
  Work();
  KAPClientTerminate();
  return 0;
}
