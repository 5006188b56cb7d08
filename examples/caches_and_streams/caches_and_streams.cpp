// SPDX-License-Identifier: MIT
// A stream of one's own, and a cache in front of it: pages are kept in the host's cache, which may
// purge those without a lock.

#include <cstdio>
#include <exception>

#include "KAP.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

namespace {

// A stream that makes its bytes up: the letters of the alphabet, again and again.
class Letters : public KAPClientPositionableStream {
 public:
  std::size_t Read(unsigned char* buffer, std::size_t size) override {
    for (std::size_t i = 0; i < size; ++i) {
      buffer[i] = static_cast<unsigned char>('a' + fPosition++ % 26);
    }
    return size;
  }
  void Write(const unsigned char*, std::size_t) override { throw TOQException("read-only"); }
  void Seek(long offset, int origin) override {
    if (origin == kKAPSeekFromEnd) throw TOQException("a stream without an end");
    fPosition = origin == kKAPSeekFromStart ? offset : fPosition + offset;
  }
  long Mark() override { return fPosition; }

 private:
  long fPosition = 0;
};

// One page of the stream. It lives in host memory and belongs to the cache.
struct Page : CKAPClientBase {
  unsigned char fBytes[8];
};

void PurgePage(void* page) {
  std::printf("purged a page\n");
  delete static_cast<Page*>(page);
}

// Reads pages through the cache.
class Reader {
 public:
  explicit Reader(CKAPPositionableStream stream) : fStream(std::move(stream)) {}

  void Print(long number) {
    CKAPCacheLock lock = CKAPCache::Attach(fID[number]);
    const bool cached = static_cast<bool>(lock);
    if (!lock) lock = Load(number);
    const auto* page = static_cast<const Page*>(lock.Item());  // stays while the lock lives
    std::printf("page %ld: %.8s (%s)\n", number, reinterpret_cast<const char*>(page->fBytes),
                cached ? "cached" : "read");
  }

 private:
  CKAPCacheLock Load(long number) {
    auto page = std::make_unique<Page>();
    fStream.Seek(number * 8, kKAPSeekFromStart);
    static_cast<void>(fStream.Read(page->fBytes, sizeof page->fBytes));
    if (!CKAPCache::Add(fID[number], page.get(), sizeof(Page), &PurgePage)) throw std::bad_alloc();
    return {fID[number], page.release()};
  }

  CKAPPositionableStream fStream;
  CKAPCacheID fID[2] = {CKAPCacheID::New(), CKAPCacheID::New()};
};

void Work() {
  Reader reader(CKAPPositionableStream(KAPNewClient<Letters>()));
  reader.Print(0);
  reader.Print(1);
  reader.Print(0);
  CKAPCachePurge::New().PurgeNextBlock();  // the page used longest ago
  reader.Print(0);
  reader.Print(1);
  try {
    CKAPPositionableStream(KAPNewClient<Letters>()).Write(nullptr, 0);
  } catch (const CKAPError& error) {  // the exception crossed the host as an error
    std::printf("%s: %s\n", error.Component(), error.what());
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

int main() {
  KAPHost::Host host;
  return Run(host);
}
