// SPDX-License-Identifier: MIT

// Scratch storage: writes a table to a temporary file, then reads it at two positions. The last
// reference to the stream deletes the file.

#include <cstdio>
#include <exception>
#include <stdexcept>

#include "KAPUtilsDir.h"
#include "kap/KAPClient.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

namespace {

constexpr long kSize = sizeof(long);

void Append(CKAPPositionableStream& table, long number) {
  table.Write(reinterpret_cast<const unsigned char*>(&number), sizeof number);
}

// Reads the number at the position of the reader; -1 at the end.
long Next(CKAPPositionableStream& reader) {
  long number = 0;
  const auto bytes = reader.Read(reinterpret_cast<unsigned char*>(&number), sizeof number);
  return bytes == sizeof number ? number : -1;
}

void Work() {
  CKAPPositionableStream table = CKAPUtilsDir::NewTempFileStream("squares", nullptr, "w+b");
  for (long i = 0; i <= 1000; ++i) Append(table, i * i);

  // The first view completes the table: from now on it is read-only.
  CKAPPositionableStream small = table.CreateIndependentlyPositionableStream();
  CKAPPositionableStream large = table.CreateIndependentlyPositionableStream();
  small.Seek(11 * kSize, kKAPSeekFromStart);
  large.Seek(-kSize, kKAPSeekFromEnd);
  for (int i = 11; i <= 13; ++i) std::printf("%d squared: %ld\n", i, Next(small));
  std::printf("the last one: %ld\n", Next(large));
  std::printf("past the end: %ld\n", Next(large));
  try {
    Append(table, 0);
  } catch (const CKAPError&) {
    std::printf("the table is read-only\n");
  }
}

// Catches failures while the runtime is bound: a CKAPError refers to an error of the host.
int Run(KAPHost::Host& host) {
  const KAPClient client(host.GetProcAddress());
  try {
    Work();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: scratch_storage KAPUTILS (a shared library)\n");
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
