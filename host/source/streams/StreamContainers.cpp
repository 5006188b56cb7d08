// SPDX-License-Identifier: MIT
#include "streams/StreamContainers.h"

#include "errors/Errors.h"
#include "faults/Gate.h"
#include "kap/KAPStreamInterfaces.h"

namespace KAPHost {

namespace {

// The delete procedure distinguishes a stream's container from a component's container of the same
// name.
void DeleteStream(void* stream) noexcept { delete static_cast<Stream*>(stream); }

const char* Signature(StreamCapability capability) noexcept {
  constexpr const char* kSignatures[] = {"KAPHostSimpleStream", "KAPHostRewindableStream",
                                         "KAPHostPositionableStream"};
  return kSignatures[static_cast<int>(capability)];
}

const ContainerType* TypeOf(StreamCapability capability) noexcept {
  KAPStringAtom* const signature = gAtoms.Intern(Signature(capability));
  KAPStringAtom* const interfaceName = gAtoms.Intern(StreamInterfaceName(capability));
  const ContainerType* const type =
      !signature || !interfaceName ? nullptr
                                   : gContainerTypes.Find(signature, interfaceName, &DeleteStream);
  gAtoms.Release(interfaceName);
  gAtoms.Release(signature);
  return type;
}

}  // namespace

const char* StreamInterfaceName(StreamCapability capability) noexcept {
  constexpr const char* kNames[] = {KAP_T_MT::KAPSimpleStreamInterface::kName,
                                    KAP_T_MT::KAPRewindableStreamInterface::kName,
                                    KAP_T_MT::KAPPositionableStreamInterface::kName};
  return kNames[static_cast<int>(capability)];
}

KAPError* ContainStream(KAPContainer** out, std::unique_ptr<Stream>& stream) noexcept {
  if (Fails(KAPFault::kContainer)) return MemoryError();
  const ContainerType* const type = TypeOf(stream->Capability());
  if (type) *out = NewContainerRecord(*type, stream.get());
  if (!*out) return MemoryError();
  static_cast<void>(stream.release());  // owned by the container now
  return nullptr;
}

Stream* StreamOf(const KAPContainer* handle) noexcept {
  while (handle && handle->fType->fDelete != &DeleteStream) {
    handle = handle->fEquipment ? handle->fEquipment->Original() : nullptr;
  }
  return handle ? static_cast<Stream*>(handle->fPrimary) : nullptr;
}

}  // namespace KAPHost
