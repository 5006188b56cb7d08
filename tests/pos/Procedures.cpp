// SPDX-License-Identifier: MIT
#include "Procedures.h"

using namespace KAP_T_MT;

int Given::gReleased = 0;

namespace {

constexpr const char* kDict = "< a < b [1 (s)] > c `0041` >";

// The kind whose interface has this name; a dictionary for an interface that takes any object.
POSType TypeOf(std::string_view interfaceName) {
  POSType type = kPOSDict;
  POSInterfaceSet::ForEach([&]<class Interface>() {
    if constexpr (requires { Interface::kType; }) {
      if (interfaceName == Interface::kName) type = Interface::kType;
    }
  });
  return type;
}

Object SubjectOf(const World& world, std::string_view interfaceName, const Object& dict) {
  if (interfaceName == POSDictIteratorInterface::kName) {
    return world.Own(world.Call<POSDictIteratorInterface, "NewPOSDictIterator">(dict.get()));
  }
  if (interfaceName == POSStreamerInterface::kName) {
    return world.Own(world.Call<POSStreamerInterface, "NewPOSStreamer">());
  }
  if (TypeOf(interfaceName) != kPOSDict) return world.OneOfKind(TypeOf(interfaceName));
  world.Containers<"AddRef">(dict.get());
  return world.Own(dict.get());
}

Object OtherOf(const World& world, std::string_view method) {
  constexpr std::string_view kDocument =
      "POSStreamerTypeA_Version1.0 <\"a\"[#1 `0041`{\"t\"#1 ff}]>";
  const auto* const bytes = reinterpret_cast<const unsigned char*>(kDocument.data());
  KAPContainer* stream = nullptr;
  if (method == "Serialize")
    world.Do<KAPStreamFactoryInterface, "NewPositionableMemoryStream">(&stream);
  if (method == "Deserialize")
    world.Do<KAPStreamFactoryInterface, "NewPositionableBufferStream">(&stream, bytes,
                                                                       kDocument.size());
  if (stream) return world.Own(stream);
  return method == "IsEqual" ? world.Read(kDict) : world.Number(7);
}

}  // namespace

Given::Given(const World& world, std::string_view interfaceName, std::string_view method)
    : fWorld(world),
      fDict(world.Read(kDict)),
      fSubject(SubjectOf(world, method == "NewPOSDictIterator" ? "" : interfaceName, fDict)),
      fOther(OtherOf(world, method)),
      fThird(method == "Serialize" ? fDict.get() : fOther.get()),
      fWatched(world.Own(nullptr)),
      fKey(world.Key(method == "DeepGet" ? "a.b[0]"
                     : method == "Put"   ? "new"
                                         : "a")),
      fNumber(method == "NewPOSBinData" ? 3
              : method == "SetAt"       ? 9
                                        : 0),
      fText(method == "CreateFromText" ? kDict
            : method == "Serialize"    ? nullptr
                                       : "text") {
  gReleased = 0;
  const bool isObject =
      method == "NewPOSDictIterator" || (interfaceName != POSDictIteratorInterface::kName &&
                                         interfaceName != POSStreamerInterface::kName);
  fWatched.reset(isObject ? fSubject.get() : fDict.get());
  world.Containers<"AddRef">(fWatched.get());
}
