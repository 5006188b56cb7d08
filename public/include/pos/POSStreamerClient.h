#pragma once

#include "kap/KAPStream.h"
#include "pos/POSObject.h"
#include "pos/POSStreamerInterfaces.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// A streamer of the library. Ownership: holds one reference; copies share the streamer.
// Errors: CKAPError "Missing Interface" and the like when the library is not there; otherwise a
//   failure is reported to the binder. A streamer that could not be made is an empty reference.
// Threads: see POSStreamerInterface.
class CPOSStreamer : public KAPContainerBaseGeneric {
 public:
  CPOSStreamer() : KAPContainerBaseGeneric(Client::Call<"NewPOSStreamer">(), KAPAdopt()) {}

  void Serialize(const CKAPPositionableStream& stream, const CPOSObject& object,
                 const char* version = nullptr) const {
    Client::Call<"Serialize">(Handle(), stream.Handle(), object.Handle(), version);
  }
  // Empty on failure.
  CPOSObject Deserialize(const CKAPPositionableStream& stream) const {
    POSObject* object = Client::Call<"Deserialize">(Handle(), stream.Handle());
    return object ? CPOSObject(object, KAPAdopt()) : CPOSObject();
  }

 private:
  using Client = TKAPInterfaceClient<POSStreamerInterface>;
};

}  // namespace KAP_T_MT
