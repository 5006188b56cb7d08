#include "kaputilsdirimpl/TempFileStream.h"

#include <cstring>
#include <mutex>
#include <utility>

#include "kap/KAPBoundary.h"
#include "kap/KAPStreamFactory.h"
#include "kap/TOQException.h"

namespace NKAPUtilsDirImpl {

using KAP_T_MT::KAPNewClient;
using KAP_T_MT::TKAPClientObject;

namespace {

constexpr const char* kForReading = "rb";

// A new file that no stream answers for yet. Deleted unless one takes it over.
class UnclaimedFile {
 public:
  UnclaimedFile(const CKAPUtilsDir& directory, const CKAPStringAtom& name) noexcept
      : fDirectory(directory), fName(name) {}
  UnclaimedFile(const UnclaimedFile&) = delete;
  UnclaimedFile& operator=(const UnclaimedFile&) = delete;
  ~UnclaimedFile() {
    if (!fClaimed) KAP_T_MT::KAPReportingError([this] { fDirectory.Delete(fName); });
  }
  void Claim() noexcept { fClaimed = true; }

 private:
  const CKAPUtilsDir& fDirectory;
  const CKAPStringAtom& fName;
  bool fClaimed = false;
};

// With a slash in it the file would lie in another folder, where nobody would find it to delete it.
void CheckPrefix(const CKAPStringAtom& prefix) {
  if (std::strchr(prefix.Text(), '/')) {
    throw KAP_T_MT::TOQException("the prefix of a temporary file contains a slash");
  }
}

}  // namespace

KAPPositionableStream* TempFileStream::New(const CKAPStringAtom& prefix,
                                           const CKAPStringAtom& second,
                                           const CKAPStringAtom& mode) {
  CheckPrefix(prefix);
  const CKAPUtilsDir directory = CKAPUtilsDir::GetTempDir();
  const CKAPStringAtom name = directory.CreateUniqueFilename(prefix, second);
  UnclaimedFile file(directory, name);
  auto stream = KAPNewClient<TempFileStream>(directory, name, mode.Text(), true);
  file.Claim();
  KAPPositionableStream* handle =
      KAP_T_MT::CKAPStreamFactory::NewClientPositionableStream(std::move(stream));
  if (!handle) KAP_T_MT::CKAPContainer::ThrowInvalidContainerException();
  return handle;
}

TempFileStream::TempFileStream(CKAPUtilsDir directory, CKAPStringAtom name, const char* mode,
                               bool deleteOnRelease)
    : fDirectory(std::move(directory)),
      fName(std::move(name)),
      fFileStream(fDirectory.OpenStream(fName, mode)),
      fDeleteOnRelease(deleteOnRelease) {}

TempFileStream::~TempFileStream() noexcept(false) {
  CloseFile();
  if (!fDeleteOnRelease) return;
  fFinishing.Run([this] { fDirectory.Delete(fName); }, &KAP_T_MT::KAPReportCurrentException);
}

// An empty memory stream takes the file stream's place, so that the file is closed before it is
// deleted.
void TempFileStream::CloseFile() noexcept {
  const CKAPPositionableStream closed(std::move(fFileStream));
  try {
    fFileStream = CKAPPositionableStream();
  } catch (...) {  // then no stream does: nobody reads any more
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
    fFileStream = fDirectory.OpenStream(fName, kForReading);
    fReopenedForReading = true;
  }
  return KAPNewClient<TempFileStream>(fDirectory, fName, kForReading, false);
}

}  // namespace NKAPUtilsDirImpl
