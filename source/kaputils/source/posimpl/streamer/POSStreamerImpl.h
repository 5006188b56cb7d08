// SPDX-License-Identifier: MIT
#pragma once

#include "kap/KAPClientBase.h"
#include "kap/KAPStream.h"
#include "pos/POSObject.h"

namespace NPOSStreamerImpl {

// What the handle of a streamer stands for: documents, which are a version's name, a space and
// an object in that version's format. Has no state: a stream may release the streamer that uses it.
// Failures are POSExceptions, or errors of the host.
class KAPImpl final : public KAP_T_MT::CKAPVirtualClientBase {
 public:
  static constexpr const char* kNotInstance = "instance was not an POSStreamer";

  // `version` null: the default. What was written before a failure stays in the stream.
  static void Serialize(KAP_T_MT::CKAPPositionableStream stream, const KAP_T_MT::CPOSObject& object,
                        const char* version);
  // Leaves the stream just after the object.
  static KAP_T_MT::CPOSObject Deserialize(KAP_T_MT::CKAPPositionableStream stream);
};

// The deletion procedure of streamers; null is ignored.
void DeletePOSStreamerImpl(void* streamer) noexcept;

// Registers the interfaces of POSStreamerInterfaceSet. Returns false if a registration fails.
bool RegisterPOSStreamerImpl();
void UnregisterPOSStreamerImpl();

}  // namespace NPOSStreamerImpl
