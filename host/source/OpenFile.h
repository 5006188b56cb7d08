#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "kap/KAPTypes.h"
#include "kaphost/Snapshot.h"

namespace KAPHost {

// An open file, shared by the streams over it: each names the place of every transfer, so that they
// need no descriptor each. A pipe or a terminal has no places; there the transfers follow each
// other. Thread-safe.
class OpenFile {
 public:
  // The modes are those of fopen: r, w or a, then any of + b x e. The descriptor is always closed
  // in programs that the process starts.
  static KAPError* Open(std::shared_ptr<OpenFile>& out, const char* path,
                        const char* mode) noexcept;

  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  // An error on closing is reported.
  ~OpenFile();

  bool IsReadable() const noexcept;
  bool IsWritable() const noexcept;
  // All writes go to the end.
  bool IsAppending() const noexcept;
  bool IsSeekable() const noexcept { return fIsSeekable; }

  // What is there to read, up to `count` bytes; 0 at the end.
  KAPError* Read(std::size_t& outCount, long position, unsigned char* buffer,
                 std::size_t count) const noexcept;
  // All of it, or an error; `outCount` bytes have been written in either case.
  KAPError* Write(std::size_t& outCount, long position, const unsigned char* bytes,
                  std::size_t count) const noexcept;
  KAPError* GetSize(long& outSize) const noexcept;

  // `cannot <action> "<path>": ...`
  KAPError* MakeError(const char* action, int number) const noexcept;

  // All that are open.
  static void Count(Snapshot& books);

 private:
  OpenFile(int descriptor, int flags, std::string path) noexcept;

  const int fDescriptor;
  const int fFlags;
  const bool fIsSeekable;
  const std::string fPath;
  OpenFile* fPrevious = nullptr;
  OpenFile* fNext = nullptr;
};

}  // namespace KAPHost
