#include "Procedures.h"

using namespace KAP_T_MT;

int Given::gReleased = 0;

namespace {

constexpr const char* kDict = "< a < b [1 (s)] > c `0041` >";

// The objects of OneOfEachKind stand in the order of their interfaces.
Object SubjectOf(const World& world, std::string_view interfaceName, const Object& dict) {
  constexpr const char* kTyped[] = {POSNumberInterface::kName,        POSStringInterface::kName,
                                    POSUnicodeStringInterface::kName, POSBinDataInterface::kName,
                                    POSRawPointerInterface::kName,    POSArrayInterface::kName};
  std::vector<Object> objects = world.OneOfEachKind();
  for (std::size_t i = 0; i < std::size(kTyped); ++i) {
    if (interfaceName == kTyped[i]) return std::move(objects[i]);
  }
  if (interfaceName == POSDictIteratorInterface::kName) {
    return world.Own(world.Call<POSDictIteratorInterface, "NewPOSDictIterator">(dict.get()));
  }
  world.Containers<"AddRef">(dict.get());
  return world.Own(dict.get());
}

}  // namespace

Given::Given(const World& world, std::string_view interfaceName, std::string_view method)
    : fWorld(world),
      fDict(world.Read(kDict)),
      fSubject(SubjectOf(world, method == "NewPOSDictIterator" ? "" : interfaceName, fDict)),
      fOther(method == "IsEqual" ? world.Read(kDict) : world.Number(7)),
      fWatched(world.Own(nullptr)),
      fKey(world.Key(method == "DeepGet" ? "a.b[0]"
                     : method == "Put"   ? "new"
                                         : "a")),
      fNumber(method == "NewPOSBinData" ? 3
              : method == "SetAt"       ? 9
                                        : 0),
      fText(method == "CreateFromText" ? kDict : "text") {
  gReleased = 0;
  const bool isIterator =
      interfaceName == POSDictIteratorInterface::kName && method != "NewPOSDictIterator";
  fWatched.reset(isIterator ? fDict.get() : fSubject.get());
  world.Containers<"AddRef">(fWatched.get());
}
