// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPInterface.h"

namespace [[gnu::visibility("hidden")]] KAP_T_MT {

// Documents: property objects on streams. See POSInterfaces.h for the conventions. A streamer has
// no state: any number of threads may use one, each with a stream of its own.
//
// A document is the name of its version, a space, and the object. Several documents may stand in
// one stream, one after the other: each call continues where the last one ended.
struct POSStreamerInterface
    : TKAPInterface<
          "POSStreamerInterface",
          // A streamer. [any thread]
          TKAPMethod<"NewPOSStreamer", "POSStreamerNewPOSStreamerProc", POSStreamer*()>,
          // Writes a document at the stream's position. `version` null means
          // "POSStreamerTypeA_Version1.0", at present the only one. What was written before a
          // failure stays in the stream. An empty slot, an object of another component and nesting
          // too deep for the stack of this thread are failures; raw pointers are written for
          // debugging and cannot be read back.
          //
          // No other thread may change the object meanwhile. The stream's own "Write" may: a value
          // that is being written stays alive and is written whole, later values are written as
          // they are at that time. [shared read]
          TKAPMethod<"Serialize", "POSStreamerSerializeProc",
                     void(POSStreamer* streamer, KAPPositionableStream* stream, POSObject* object,
                          const char* version)>,
          // The object of the document at the stream's position, a new reference. All or nothing.
          // The stream is left just after what was read of it. A document must end within the first
          // 2 GiB of its stream. [any thread]
          TKAPMethod<"Deserialize", "POSStreamerDeserializeProc",
                     POSObject*(POSStreamer* streamer, KAPPositionableStream* stream)>> {};

}  // namespace KAP_T_MT
