#pragma once

#include "dir/KAPUtilsDirClient.h"
#include "kap/KAPClientStream.h"
#include "kap/TOQWaitMutex.h"
#include "kapimpl/Finishing.h"

namespace NKAPUtilsDirImpl {

using KAP_T_MT::CKAPPositionableStream;
using KAP_T_MT::CKAPStringAtom;
using KAP_T_MT::CKAPUtilsDir;

// A stream over a file of its own, or a view of such a file; see KAPUtilsTempFileStreamFactory. It
// forwards to a file stream of the host. Ownership: the host's, through the handle that New
// returns.
class TempFileStream : public KAP_T_MT::KAPClientPositionableStream {
 public:
  // A stream over a new file: one reference for the caller. Raises what the directory and the host
  // refuse; there is no file then. `second` is ignored.
  static KAPPositionableStream* New(const CKAPStringAtom& prefix, const CKAPStringAtom& second,
                                    const CKAPStringAtom& mode);

  // Over an existing file, which goes with the stream if `deleteOnRelease`; not when this raises.
  TempFileStream(CKAPUtilsDir directory, CKAPStringAtom name, const char* mode,
                 bool deleteOnRelease);
  TempFileStream(const TempFileStream&) = delete;
  TempFileStream& operator=(const TempFileStream&) = delete;
  // Raises when the file cannot be deleted, and reports that when an exception is passing already.
  ~TempFileStream() noexcept(false) override;

  std::size_t Read(unsigned char* buffer, std::size_t size) override;
  void Write(const unsigned char* buffer, std::size_t size) override;
  KAP_T_MT::TKAPClientObject<KAPClientPositionableStream> CreateIndependentlyPositionableStream()
      override;
  void Seek(long offset, int origin) override;
  long Mark() override;

 private:
  void CloseFile() noexcept;

  const CKAPUtilsDir fDirectory;
  const CKAPStringAtom fName;
  CKAPPositionableStream fFileStream;
  const bool fDeleteOnRelease;
  bool fReopenedForReading = false;
  KAP_T_MT::TOQWaitMutex fLock;
  const Finishing fFinishing;
};

}  // namespace NKAPUtilsDirImpl
