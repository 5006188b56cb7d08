// SPDX-License-Identifier: MIT
#include "World.h"

#include <algorithm>
#include <cstdio>

using namespace KAP_T_MT;

// Cloning once fills the method table that stays, so that it counts in no balance.
World::World() : fLibrary(Load(KAP_LIBRARY_PATH)) {
  Own(Call<POSObjectInterface, "Clone">(Read("[[]]").get()));
}

Object World::Own(KAPContainer* handle) const {
  return Object(handle, Proc<KAPContainerInterface, "Release">());
}

OwnedAtom World::Key(const char* text) const {
  return OwnedAtom(Atom(text), Proc<KAPStringInterface, "DeleteStringAtom">());
}

Object World::Number(double value) const {
  return Own(Call<POSNumberInterface, "NewPOSNumber">(value));
}

Object World::BinData(const char* typeName, const std::string& bytes) const {
  return Own(Call<POSBinDataInterface, "NewPOSBinData">(
      typeName, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()));
}

Object World::RawPointer(void* pointer, POSReleaseProc release) const {
  return Own(Call<POSRawPointerInterface, "NewPOSRawPointer">(pointer, release));
}

Object World::Read(const char* text) const {
  Object object = Own(Call<POSObjectStatics, "CreateFromText">(text, nullptr));
  EXPECT_NE(object, nullptr) << text;
  return object;
}

Object World::OneOfKind(POSType type) const {
  switch (type) {
    case kPOSNumber:
      return Read("1.5");
    case kPOSString:
      return Read("(s)");
    case kPOSUnicodeString:
      return Read("`0041`");
    case kPOSBinData:
      return BinData("type", "\1\2\3");
    case kPOSRawPointer:
      return RawPointer(const_cast<World*>(this), [](void*) {});
    case kPOSArray:
      return Read("[1 2 3 4]");
    case kPOSDict:
      return Read("< a < b [1 (s)] > >");
  }
  return Own(nullptr);
}

std::vector<Object> World::OneOfEachKind() const {
  std::vector<Object> objects;
  for (const POSType type : kPOSTypes) objects.push_back(OneOfKind(type));
  return objects;
}

Object World::Foreign(const char* name, void* instance, KAPDeleteProc release) const {
  const OwnedAtom atom = Key(name);
  KAPContainer* container = nullptr;
  EXPECT_EQ(TakeMessage(Containers<"NewFullContainer">(&container, instance, atom.get(), atom.get(),
                                                       release)),
            "");
  return Own(container);
}

Object World::EmptyContainer() const {
  KAPContainer* container = nullptr;
  EXPECT_EQ(TakeMessage(Containers<"NewContainer">(&container)), "");
  return Own(container);
}

void World::Put(const Object& dict, const char* key, const Object& value) const {
  Call<POSDictInterface, "Put">(dict.get(), Key(key).get(), value.get());
}

void World::Remove(const Object& dict, const char* key) const {
  Call<POSDictInterface, "Remove">(dict.get(), Key(key).get());
}

Object World::Get(const Object& dict, const char* key) const {
  return Own(Call<POSDictInterface, "Get">(dict.get(), Key(key).get()));
}

Object World::DeepGet(const Object& dict, const char* path) const {
  return Own(Call<POSDictInterface, "DeepGet">(dict.get(), Key(path).get()));
}

void World::Empty(const Object& container) const {
  KAPContainer* const handle = container.get();
  if (Call<POSArrayInterface, "IsPOSArray">(handle)) {
    while (Call<POSArrayInterface, "Count">(handle) != 0) {
      Call<POSArrayInterface, "Remove">(handle, 0ul);
    }
    return;
  }
  for (;;) {
    const Object iterator = Own(Call<POSDictIteratorInterface, "NewPOSDictIterator">(handle));
    if (Call<POSDictIteratorInterface, "IsDone">(iterator.get())) return;
    const std::string key = Call<POSDictIteratorInterface, "CurKey">(iterator.get());
    Remove(container, key.c_str());
  }
}

bool World::IsEqual(const Object& a, const Object& b) const {
  return Call<POSObjectInterface, "IsEqual">(a.get(), b.get());
}

void World::MoveUnregisterCounter() {
  static int unrelated;
  Register("Unrelated", "Method", "Proc", &unrelated);
  Unregister("Unrelated");
}

namespace {

std::string Format(const char* format, auto value) {
  char text[40];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

}  // namespace

std::string World::Show(KAPContainer* object) const {
  if (!object) return "~";
  std::string text;
  switch (static_cast<POSType>(Call<POSObjectInterface, "GetType">(object))) {
    case kPOSNumber:
      return Format("%.17g", Call<POSNumberInterface, "Get">(object));
    case kPOSString:
      return '"' + std::string(Call<POSStringInterface, "Get">(object)) + '"';
    case kPOSUnicodeString: {
      const unsigned short* units = Call<POSUnicodeStringInterface, "Get">(object);
      for (; *units != 0; ++units) text += Format("%04x", *units) + (units[1] != 0 ? " " : "");
      return "u(" + text + ")";
    }
    case kPOSBinData: {
      const unsigned char* bytes = Call<POSBinDataInterface, "GetBinData">(object);
      const unsigned long size = Call<POSBinDataInterface, "GetSize">(object);
      for (unsigned long i = 0; i < size; ++i) text += Format("%02x", bytes[i]);
      return Call<POSBinDataInterface, "GetTypeName">(object) + ("(" + text + ")");
    }
    case kPOSRawPointer:
      return "*";
    case kPOSArray:
      return ShowArray(object);
    case kPOSDict:
      return ShowDict(object);
  }
  return "?";
}

std::string World::ShowArray(KAPContainer* array) const {
  std::string text;
  for (unsigned int i = 0; i < Call<POSArrayInterface, "Count">(array); ++i) {
    text += (i != 0 ? " " : "") +
            Show(Own(Call<POSArrayInterface, "GetAt">(array, static_cast<unsigned long>(i))));
  }
  return "[" + text + "]";
}

std::string World::ShowDict(KAPContainer* dict) const {
  std::string text;
  const Object iterator = Own(Call<POSDictIteratorInterface, "NewPOSDictIterator">(dict));
  while (!Call<POSDictIteratorInterface, "IsDone">(iterator.get())) {
    const std::string key = Call<POSDictIteratorInterface, "CurKey">(iterator.get());
    const Object value = Own(Call<POSDictInterface, "Get">(dict, Key(key.c_str()).get()));
    text += (text.empty() ? "" : " ") + (key.empty() ? "()" : key) + " " + Show(value);
    Call<POSDictIteratorInterface, "Next">(iterator.get());
  }
  return "<" + text + ">";
}

bool AnyContains(const std::vector<std::string>& texts, const std::string& word) {
  return std::any_of(texts.begin(), texts.end(),
                     [&](const std::string& text) { return text.find(word) != std::string::npos; });
}
