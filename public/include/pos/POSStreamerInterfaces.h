#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Documents: property objects on streams. See POSInterfaces.h for the conventions. A streamer has no
// state: any number of threads may use one, each with a stream of its own.
struct POSStreamerInterface
    : TKAPInterface<
          "POSStreamerInterface",
          TKAPMethod<"NewPOSStreamer", "POSStreamerNewPOSStreamerProc", POSStreamer*()>,
          // Writes at the stream's position: the version's name, a space, and the object in that
          // version's format. `version` null: "POSStreamerTypeA_Version1.0", the only one. What was
          // written before a failure stays in the stream. Nothing in the object may change
          // meanwhile, nor may the stream's own procedures change it.
          TKAPMethod<"Serialize", "POSStreamerSerializeProc",
                     void(POSStreamer* streamer, KAPPositionableStream* stream, POSObject* object,
                          const char* version)>,
          // The object of the document at the stream's position, all or nothing. The stream is left
          // just behind what was read of it. Documents beyond 2 GiB are not read.
          TKAPMethod<"Deserialize", "POSStreamerDeserializeProc",
                     POSObject*(POSStreamer* streamer, KAPPositionableStream* stream)>> {};

}  // namespace KAP_T_MT
