#include "formats/typea/StreamOutput.h"

#include "base/Failure.h"
#include "formats/typea/HostStream.h"
#include "formats/typea/TypeASize.h"

namespace PosUtil {

class StreamOutput::Client final : public KAP_T_MT::KAPClientPositionableStream {
 public:
  Client(Output& out, SavedException& kept) : fOut(out), fKept(kept) {}

  void Write(const unsigned char* buffer, std::size_t size) override {
    fKept.Keep([&] {
      CheckTypeASize(fOut.Position() + size, "the output");
      fOut.Put({reinterpret_cast<const char*>(buffer), size});
    });
  }
  long Mark() override { return static_cast<long>(fOut.Position()); }

  std::size_t Read(unsigned char*, std::size_t) override {
    throw Failure("the output cannot be read from");
  }
  void Seek(long, int) override { throw Failure("the output cannot be set to a position"); }

 private:
  Output& fOut;
  SavedException& fKept;
};

StreamOutput::StreamOutput(Output& out)
    : fStream(HostStream(KAP_T_MT::KAPNewClient<Client>(out, fKept))) {}

}  // namespace PosUtil
