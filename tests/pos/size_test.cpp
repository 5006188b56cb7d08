// SPDX-License-Identifier: MIT

// Texts, strings and documents beyond 2 and 4 GiB. They need little memory, but a minute, so that
// they run only with KAP_LONG.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

#include "KAP.h"
#include "POSStreamer.h"
#include "World.h"

namespace {

using namespace KAP_T_MT;

constexpr std::size_t kMiB = 1 << 20;
constexpr std::size_t kGiB = 1 << 30;

// A text of `fill`, `size` times, and then `end`. It takes a few pages: all of it maps one file.
class LongText {
 public:
  LongText(std::size_t size, char fill, const char* end) : fSize((size / kPart + 1) * kPart) {
    const int file = ::memfd_create("part", 0);
    const std::string part(kPart, fill);
    EXPECT_EQ(::write(file, part.data(), part.size()), static_cast<ssize_t>(kPart));
    void* const place =
        ::mmap(nullptr, fSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    fText = static_cast<char*>(place);
    for (std::size_t i = 0; i < fSize; i += kPart) {
      ::mmap(fText + i, kPart, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED, file, 0);
    }
    ::close(file);
    std::strcpy(fText + size, end);
  }
  LongText(const LongText&) = delete;
  LongText& operator=(const LongText&) = delete;
  ~LongText() { ::munmap(fText, fSize); }

  char* Get() const { return fText; }

 private:
  static constexpr std::size_t kPart = 16 * kMiB;

  std::size_t fSize;
  char* fText;
};

// While it lives, the process can allocate so many bytes more.
class MemoryLimit {
 public:
  explicit MemoryLimit(std::size_t size) {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    ::getrlimit(RLIMIT_AS, &fBefore);
    const rlimit limit = {pages * static_cast<std::size_t>(::getpagesize()) + size,
                          fBefore.rlim_max};
    ::setrlimit(RLIMIT_AS, &limit);
  }
  MemoryLimit(const MemoryLimit&) = delete;
  MemoryLimit& operator=(const MemoryLimit&) = delete;
  ~MemoryLimit() { ::setrlimit(RLIMIT_AS, &fBefore); }

 private:
  rlimit fBefore{};
};

class SizeTest : public WrapperTest {
 protected:
  void SetUp() override {
    if (!std::getenv("KAP_LONG")) GTEST_SKIP() << "only with KAP_LONG";
  }
};

TEST_F(SizeTest, TextsBeyond4GiB) {
  const LongText text(4 * kGiB + 5, ' ', "[1 2]");
  EXPECT_EQ(Show(Read(text.Get())), "[1 2]");
  std::strcpy(text.Get() + 4 * kGiB + 5, "[1 2>");
  const char* end = nullptr;
  EXPECT_EQ((Call<POSObjectStatics, "CreateFromText">(text.Get(), &end)), nullptr);
  EXPECT_EQ(end - text.Get(), static_cast<long>(4 * kGiB + 5 + 5));
}

// Without memory for a copy the failure is reported, and nothing is kept.
TEST_F(SizeTest, StringsBeyond2GiB) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer's own memory is above the limit";
#endif
  const LongText text(2 * kGiB + kMiB, 'x', ")");
  const MemoryLimit limit(kGiB);
  EXPECT_EQ((Call<POSStringInterface, "NewPOSString">(text.Get())), nullptr);
  EXPECT_EQ(TakeReport(), "std::bad_alloc");
  const auto* const bytes = reinterpret_cast<unsigned char*>(text.Get());
  EXPECT_EQ((Call<POSBinDataInterface, "NewPOSBinData">("type", bytes, 2 * kGiB)), nullptr);
  EXPECT_EQ(TakeReport(), "std::bad_alloc");
  *text.Get() = '(';
  const char* end = nullptr;  // a literal has a limit: a syntax error after it
  EXPECT_EQ((Call<POSObjectStatics, "CreateFromText">(text.Get(), &end)), nullptr);
  EXPECT_GT(end - text.Get(), static_cast<long>(2 * kGiB));
}

// Makes its bytes as they are read, and counts those that are written.
struct Generated : KAPClientPositionableStream {
  explicit Generated(std::size_t spaces, std::size_t* written = nullptr)
      : fSpaces(spaces), fWritten(written) {}
  std::size_t Read(unsigned char* buffer, std::size_t size) override {
    static constexpr char kTag[] = "POSStreamerTypeA_Version1.0 ";
    std::size_t count = 0;
    for (; count < size && fPosition < sizeof kTag + fSpaces; ++count, ++fPosition) {
      const std::size_t last = sizeof kTag - 1 + fSpaces;
      buffer[count] = static_cast<unsigned char>(fPosition < sizeof kTag - 1 ? kTag[fPosition]
                                                 : fPosition == last         ? ']'
                                                                             : ' ');
      if (fPosition == sizeof kTag - 1) buffer[count] = '[';
    }
    return count;
  }
  void Write(const unsigned char*, std::size_t size) override { *fWritten += size; }
  long Mark() override { return static_cast<long>(fPosition); }
  void Seek(long offset, int) override {
    if (offset < 0) CKAPError::ThrowError("a position before the start", "test", 1);
    fPosition = static_cast<std::size_t>(offset);
  }
  std::size_t fPosition = 0;
  const std::size_t fSpaces;
  std::size_t* const fWritten;
};

CKAPPositionableStream NewGenerated(std::size_t spaces, std::size_t* written = nullptr) {
  return CKAPPositionableStream(
      CKAPStreamFactory::NewClientPositionableStream(KAPNewClient<Generated>(spaces, written)),
      KAPAdopt());
}

// Positions of documents are 32-bit numbers, deliberately.
TEST_F(SizeTest, DocumentsOver2GiBAreNotReadable) {
  const CPOSStreamer streamer = CPOSStreamer::New();
  EXPECT_EQ(Show(streamer.Deserialize(NewGenerated(10)).Handle()), "[]");
  EXPECT_TRUE(streamer.Deserialize(NewGenerated(2 * kGiB)).IsNull());
  EXPECT_EQ(TakeReport(), "a position before the start");
}

TEST_F(SizeTest, DocumentsOver4GiBAreWritten) {
  CPOSArray array = CPOSArray::New();
  const CPOSString part(std::string(16 * kMiB, 'x').c_str());
  for (int i = 0; i < 257; ++i) array.Append(part);
  std::size_t written = 0;
  CPOSStreamer::New().Serialize(NewGenerated(0, &written), array);
  EXPECT_GT(written, 257 * 16 * kMiB);
  EXPECT_LT(written, 257 * 16 * kMiB + 10'000);
}

}  // namespace
