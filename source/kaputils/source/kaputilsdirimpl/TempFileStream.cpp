// SPDX-License-Identifier: MIT
#include "kaputilsdirimpl/TempFileStream.h"

#include <cstring>
#include <exception>
#include <mutex>
#include <utility>

#include "kap/KAPBoundary.h"
#include "kap/KAPStreamFactory.h"
#include "kap/TOQException.h"

namespace NKAPUtilsDirImpl {

using KAP_T_MT::KAPNewClient;
using KAP_T_MT::TKAPClientObject;

namespace {

// A new file that no stream has taken over yet. Deleted unless one does.
class UnclaimedFile {
 public:
  explicit UnclaimedFile(const TempFile& file) noexcept : fFile(file) {}
  UnclaimedFile(const UnclaimedFile&) = delete;
  UnclaimedFile& operator=(const UnclaimedFile&) = delete;
  ~UnclaimedFile() {
    if (fClaimed) return;
    KAP_T_MT::KAPReportingError([this] { fFile.Delete(); });
    fFile.CloseDescriptor();
  }
  void Claim() noexcept { fClaimed = true; }

 private:
  const TempFile& fFile;
  bool fClaimed = false;
};

// With a slash in it the file would be in another folder, and deleting it would miss it.
void CheckPrefix(const CKAPStringAtom& prefix) {
  if (std::strchr(prefix.Text(), '/')) {
    throw KAP_T_MT::TOQException("the prefix of a temporary file contains a slash");
  }
}

}  // namespace

KAPPositionableStream* TempFileStream::New(const CKAPStringAtom& prefix,
                                           const CKAPStringAtom& mode) {
  CheckPrefix(prefix);
  const TempFile created = TempFile::Create(prefix);
  UnclaimedFile file(created);
  auto stream = KAPNewClient<TempFileStream>(created, mode.Text());
  file.Claim();
  KAPPositionableStream* handle =
      KAP_T_MT::CKAPStreamFactory::NewClientPositionableStream(std::move(stream));
  if (!handle) KAP_T_MT::CKAPContainer::ThrowInvalidContainerException();
  return handle;
}

TempFileStream::TempFileStream(TempFile file, const char* mode)
    : fFile(std::move(file)), fFileStream(fFile.Open(mode)), fDeleteOnRelease(true) {}

TempFileStream::TempFileStream(TempFile file)
    : fFile(std::move(file)), fFileStream(fFile.Reopen()), fDeleteOnRelease(false) {}

// The object lives on the heap and may outlast the exceptions that were in flight when it was made:
// only those in flight now count.
TempFileStream::~TempFileStream() noexcept(false) {
  CloseFile();
  if (!fDeleteOnRelease) return;
  try {
    fFile.Delete();
  } catch (...) {
    if (std::uncaught_exceptions() == 0) throw;
    KAP_T_MT::KAPReportCurrentException();
  }
}

// An empty memory stream takes the file stream's place, so that the file is closed before it is
// deleted.
void TempFileStream::CloseFile() noexcept {
  const CKAPPositionableStream closed(std::move(fFileStream));
  try {
    fFileStream = CKAPPositionableStream();
  } catch (...) {  // then nothing takes its place, and nothing reads any more
  }
}

std::size_t TempFileStream::Read(unsigned char* buffer, std::size_t size) {
  return fFileStream.Read(buffer, size);
}

void TempFileStream::Write(const unsigned char* buffer, std::size_t size) {
  fFileStream.Write(buffer, size);
}

void TempFileStream::Seek(long offset, int origin) { fFileStream.Seek(offset, origin); }

long TempFileStream::Mark() { return fFileStream.Mark(); }

// The release of the old file stream writes out what it still holds, for the view to read.
TKAPClientObject<KAP_T_MT::KAPClientPositionableStream>
TempFileStream::CreateIndependentlyPositionableStream() {
  const std::lock_guard lock(fLock);
  if (!fReopenedForReading) {
    fFileStream = fFile.Reopen();
    fReopenedForReading = true;
  }
  return KAPNewClient<TempFileStream>(fFile);
}

}  // namespace NKAPUtilsDirImpl
