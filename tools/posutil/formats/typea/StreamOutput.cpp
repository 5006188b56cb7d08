// SPDX-License-Identifier: MIT
#include "formats/typea/StreamOutput.h"

#include "base/Failure.h"
#include "formats/typea/TypeAStream.h"

namespace PosUtil {

class StreamOutput::Client final : public KAP_T_MT::KAPClientPositionableStream {
 public:
  Client(Output& out, SavedException& saved) : fOut(out), fBegin(out.Position()), fSaved(saved) {}

  void Write(const unsigned char* buffer, std::size_t size) override {
    fSaved.Save([&] {
      CheckTypeASize(fOut.Position() - fBegin + size, "the output");
      fOut.Put({reinterpret_cast<const char*>(buffer), size});
    });
  }
  long Mark() override { return static_cast<long>(fOut.Position() - fBegin); }

  std::size_t Read(unsigned char*, std::size_t) override {
    throw Failure("the output stream is write-only");
  }
  void Seek(long, int) override { throw Failure("the output stream cannot seek"); }

 private:
  Output& fOut;
  const std::size_t fBegin;  // of the document
  SavedException& fSaved;
};

StreamOutput::StreamOutput(Output& out)
    : fStream(NewHostStream(KAP_T_MT::KAPNewClient<Client>(out, fSaved))) {}

}  // namespace PosUtil
