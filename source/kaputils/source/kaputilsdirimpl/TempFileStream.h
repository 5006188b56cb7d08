// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPClientStream.h"
#include "kap/TOQWaitMutex.h"
#include "kaputilsdirimpl/TempFile.h"

namespace NKAPUtilsDirImpl {

using KAP_T_MT::CKAPPositionableStream;
using KAP_T_MT::CKAPStringAtom;

// A stream over a file of its own, or a view of such a file; see KAPUtilsTempFileStreamFactory. It
// forwards to a file stream of the host. Ownership: the host's, through the handle that New
// returns.
class TempFileStream : public KAP_T_MT::KAPClientPositionableStream {
 public:
  // A stream over a new file: one reference for the caller. Throws what the directory and the host
  // fail at; there is no file then.
  static KAPPositionableStream* New(const CKAPStringAtom& prefix, const CKAPStringAtom& mode);

  // Over a new file, which goes with the stream; not when this throws.
  TempFileStream(TempFile file, const char* mode);
  // A view of a file.
  explicit TempFileStream(TempFile file);
  TempFileStream(const TempFileStream&) = delete;
  TempFileStream& operator=(const TempFileStream&) = delete;
  // Throws when the file cannot be deleted, and reports it while another exception is in flight.
  ~TempFileStream() noexcept(false) override;

  std::size_t Read(unsigned char* buffer, std::size_t size) override;
  void Write(const unsigned char* buffer, std::size_t size) override;
  KAP_T_MT::TKAPClientObject<KAPClientPositionableStream> CreateIndependentlyPositionableStream()
      override;
  void Seek(long offset, int origin) override;
  long Mark() override;

 private:
  void CloseFile() noexcept;

  const TempFile fFile;
  CKAPPositionableStream fFileStream;
  const bool fDeleteOnRelease;
  bool fReopenedForReading = false;
  KAP_T_MT::TOQWaitMutex fLock;
};

}  // namespace NKAPUtilsDirImpl
