// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>

#include "accounting/Accounting.h"
#include "base/IntrusiveList.h"
#include "kap/KAPTypes.h"

namespace KAPHost {

// An open file, shared by the streams over it. Each transfer states its position, so that streams
// share one descriptor. A pipe or a terminal is not seekable; positions are ignored there.
// Thread-safe.
class OpenFile {
 public:
  // Does not open the file yet. Throws std::bad_alloc.
  explicit OpenFile(const char* path) : fPath(path) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  // An error on closing is reported.
  ~OpenFile();

  // Opens the file; called once, before any other use. The modes are those of fopen: r, w or a,
  // then any of + b x e. The descriptor is always close-on-exec.
  KAPError* Open(const char* mode) noexcept;

  bool IsReadable() const noexcept;
  bool IsWritable() const noexcept;
  // Whether all writes go to the end.
  bool IsAppending() const noexcept;
  bool IsSeekable() const noexcept { return fIsSeekable; }

  // Reads up to `count` bytes; 0 at the end.
  KAPError* Read(std::size_t& outCount, long position, unsigned char* buffer,
                 std::size_t count) const noexcept;
  // Writes all bytes or returns an error; `outCount` bytes are written in either case.
  KAPError* Write(std::size_t& outCount, long position, const unsigned char* bytes,
                  std::size_t count) const noexcept;
  KAPError* GetSize(long& outSize) const noexcept;

  // `cannot <action> "<path>": ...`
  KAPError* MakeError(const char* action, int number) const noexcept;

  static void AddAll(HoldingSum& sum);
  // Guards the list of open files, for the time of a fork.
  static std::mutex& Mutex() noexcept;

 private:
  friend IntrusiveList<OpenFile>;

  int fDescriptor = -1;
  int fFlags = 0;
  bool fIsSeekable = false;
  const std::string fPath;
  ListLinks<OpenFile> fLinks;
};

}  // namespace KAPHost
