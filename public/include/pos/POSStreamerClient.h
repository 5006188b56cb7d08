// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#include "kap/KAPStream.h"
#include "pos/POSObject.h"
#include "pos/POSStreamerInterfaces.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A streamer of the library: writes property objects to streams and reads them back.
//
//   CKAPPositionableStream stream = CKAPPositionableStream::New();  // in memory
//   const CPOSStreamer streamer = CPOSStreamer::New();
//   streamer.Serialize(stream, settings);
//   stream.Seek(0, kKAPSeekFromStart);
//   const CPOSObject copy = streamer.Deserialize(stream);
//
// Ownership: holds one reference; copies share the streamer.
// Errors: the CKAPError with the empty message when the library is not there, once the runtime is
//   bound (kap/KAPInterfaceClient.h has the other cases), CKAPError "invalid container" on an
//   empty reference; any other failure is reported to the binder.
// Threads: see POSStreamerInterface.
class CPOSStreamer : public KAPContainerBaseGeneric {
 public:
  CPOSStreamer() noexcept = default;  // none
  // A new streamer. An empty reference, with a report, when it cannot be made.
  [[nodiscard]] static CPOSStreamer New() {
    return CPOSStreamer(Client::Call<"NewPOSStreamer">(), KAPAdopt());
  }
  // A reference to an existing streamer: adds one, adopts one; null makes an empty reference when
  // it is adopted. Neither checks the handle; the first operation does.
  explicit CPOSStreamer(POSStreamer* handle) : KAPContainerBaseGeneric(handle) {}
  CPOSStreamer(POSStreamer* handle, KAPAdopt adopt) noexcept
      : KAPContainerBaseGeneric(handle, adopt) {}
  explicit CPOSStreamer(TKAPNewHandle<POSStreamer> made) noexcept
      : CPOSStreamer(std::move(made), KAPAdopt()) {}

  // Writes at the stream's position. Whether it failed shows only in the binder's reports.
  void Serialize(const CKAPPositionableStream& stream, const CPOSObject& object,
                 const char* version = nullptr) const {
    Client::Call<"Serialize">(Streamer(), stream.Handle(), object.Handle(), version);
  }
  // Reads from the stream's position; an empty reference on failure.
  [[nodiscard]] CPOSObject Deserialize(const CKAPPositionableStream& stream) const {
    POSObject* object = Client::Call<"Deserialize">(Streamer(), stream.Handle());
    return object ? CPOSObject(object, KAPAdopt()) : CPOSObject();
  }

 private:
  using Client = TKAPInterfaceClient<POSStreamerInterface>;

  // A report alone would let a document that was never written pass for one that was.
  POSStreamer* Streamer() const {
    if (IsNull()) CKAPContainer::ThrowInvalidContainerException();
    return Handle();
  }
};

}  // namespace KAP_T_MT
