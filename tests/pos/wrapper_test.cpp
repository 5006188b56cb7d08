#include "World.h"

namespace {

using namespace KAP_T_MT;

// What a call throws, as text; "" when it does not.
std::string Thrown(const auto& call) {
  try {
    call();
    return "";
  } catch (const POSException& exception) {
    return exception.what();
  } catch (const CKAPError& error) {
    return std::string("CKAPError ") + error.what();
  }
}

std::string DowncastMessage(const char* wrapper) {
  return std::string("downcast from CPOSObject to ") + wrapper + " failed";
}

TEST_F(WrapperTest, Downcasts) {
  std::vector<CPOSObject> objects(1);  // an empty one, then those of each type
  for (const Object& object : OneOfEachKind()) objects.emplace_back(object.get());
  const auto check = [&]<class Wrapper>(int type, const char* name, const Wrapper&) {
    SCOPED_TRACE(name);
    for (int i = 0; i <= kPOSDict; ++i) {
      const CPOSObject& object = objects[static_cast<std::size_t>(i)];
      const BalancedScope balanced(*this);
      EXPECT_EQ(Wrapper(object, true).Handle(), i == type ? object.Handle() : nullptr);
      EXPECT_EQ(Thrown([&] { EXPECT_EQ(Wrapper(object, false).Handle(), object.Handle()); }),
                i == type ? "" : DowncastMessage(name));
    }
  };
  check(kPOSNumber, "CPOSNumber", CPOSNumber());
  check(kPOSString, "CPOSString", CPOSString());
  check(kPOSUnicodeString, "CPOSUnicodeString", CPOSUnicodeString());
  check(kPOSBinData, "CPOSBinData", CPOSBinData());
  check(kPOSRawPointer, "CPOSRawPointer", CPOSRawPointer());
  check(kPOSArray, "CPOSArray", CPOSArray());
  check(kPOSDict, "CPOSDict", CPOSDict());
}

TEST_F(WrapperTest, Getters) {
  CPOSDict dict = CPOSDict::New();
  for (const Object& object : OneOfEachKind()) {
    dict.Put(std::to_string(dict.NumKeys() + 1).c_str(), CPOSObject(object.get()));
  }
  const auto checkOne = [&](const char* name, const char* key, auto get, const char* missing) {
    SCOPED_TRACE(std::string(name) + ", " + missing);
    const BalancedScope balanced(*this);
    for (bool noThrow : {true, false}) {
      EXPECT_EQ((dict.*get)(key, noThrow).Handle(), dict[key].Handle());
    }
    const char* other = *key == '1' ? "2" : "1";
    EXPECT_TRUE((dict.*get)("absent", true).IsNull());
    EXPECT_TRUE((dict.*get)(other, true).IsNull());
    EXPECT_EQ(Thrown([&] { (dict.*get)("absent", false); }), missing);
    EXPECT_EQ(Thrown([&] { (dict.*get)(other, false); }), DowncastMessage(name));
  };
  const auto check = [&](const char* name, const char* key, auto get, auto deepGet) {
    checkOne(name, key, get, "CPOSDict::Get failed");
    checkOne(name, key, deepGet, "CPOSArray::GetAt subscript failed");  // deliberate
  };
  using D = CPOSDict;
  using Text = const char*;
  check("CPOSNumber", "1", &D::GetNumber<Text>, &D::DeepGetNumber<Text>);
  check("CPOSString", "2", &D::GetString<Text>, &D::DeepGetString<Text>);
  check("CPOSUnicodeString", "3", &D::GetUnicodeString<Text>, &D::DeepGetUnicodeString<Text>);
  check("CPOSBinData", "4", &D::GetBinData<Text>, &D::DeepGetBinData<Text>);
  check("CPOSRawPointer", "5", &D::GetRawPointer<Text>, &D::DeepGetRawPointer<Text>);
  check("CPOSArray", "6", &D::GetArray<Text>, &D::DeepGetArray<Text>);
  check("CPOSDict", "7", &D::GetDict<Text>, &D::DeepGetDict<Text>);
  check("CPOSKAPObjRef", "5", &D::GetKAPObjRef<Text>, &D::DeepGetKAPObjRef<Text>);

  EXPECT_EQ(dict.NumKeys(), 7u);
  EXPECT_EQ(CPOSDict::New().NumKeys(), 0u);
  EXPECT_TRUE(dict.Get("absent", true).IsNull());
  EXPECT_EQ(Thrown([&] { dict["absent"]; }), "CPOSDict::Get failed");
  EXPECT_EQ(Thrown([&] { dict.DeepGet("a.b", false); }), "CPOSArray::GetAt subscript failed");
  EXPECT_EQ(dict.GetNumber(CKAPStringAtom("1"), false).Get(), 1.5);
}

TEST_F(WrapperTest, WrappersForward) {
  const unsigned short units[] = {1, 2, 3, 0};
  const unsigned char bytes[] = {4, 5};
  const auto release = [](void*) {};
  CPOSArray array = CPOSArray::New();
  array.Append(CPOSNumber(1));
  array.Append(CPOSString("x"));
  array.SetAt(5, CPOSBinData("type", bytes, 2));
  array.SetAt(2, CPOSUnicodeString(units));
  array.SetAt(4, CPOSRawPointer(&array, release));
  array.Remove(0);
  EXPECT_EQ(Show(array.Handle()), R"(["x" u(0001 0002 0003) ~ * type(0405)])");
  EXPECT_EQ(array.Count(), 5u);
  EXPECT_EQ(CPOSUnicodeString::GetLength(CPOSUnicodeString(array[1], false).Get()), 3u);
  EXPECT_EQ(CPOSRawPointer(array[3], false).GetRawPointer(), &array);
  EXPECT_EQ(CPOSRawPointer(array[3], false).GetReleaseProc(), +release);
  for (unsigned long index : {2ul, 5ul}) {
    EXPECT_TRUE(array.GetAt(index, true).IsNull());
    EXPECT_EQ(Thrown([&] { array[index]; }), "CPOSArray::GetAt subscript failed");
  }

  CPOSDict dict(CPOSObject::CreateFromText("< b 2 a 1 c 3 >", nullptr), false);
  dict.Remove("b");
  std::string keys;
  for (CPOSDictIterator i(dict); !i.IsDone(); i.Next()) keys += i.CurKey();
  EXPECT_EQ(keys, "ac");
  EXPECT_TRUE(CPOSObject::CreateFromText("<", nullptr).IsNull());
}

TEST_F(WrapperTest, CloneCountsItsReferences) {
  for (const Object& object : OneOfEachKind()) {
    const BalancedScope balanced(*this);
    const CPOSObject original(object.get());
    const CPOSObject clone = original.Clone();
    const CPOSObject again = clone.Clone();
    EXPECT_EQ(original.GetType(), again.GetType());
    EXPECT_TRUE(original.IsEqual(again));
  }
}

// Deliberate: each "true" leaves a reference.
TEST_F(WrapperTest, HasKeyLeavesAReference) {
  CPOSDict dict(CPOSObject::CreateFromText("< a [1] >", nullptr), false);
  const CPOSObject value = dict["a"];
  const auto references = [&] { return *Containers<"DebugGetRefCountAddr">(value.Handle()); };
  const int before = references();
  EXPECT_FALSE(dict.HasKey("absent"));
  EXPECT_FALSE(dict.DeepHasKey("a[1]"));
  EXPECT_TRUE(dict.HasKey("a"));
  EXPECT_EQ(references(), before + 1);
  EXPECT_TRUE(dict.DeepHasKey(".a"));
  EXPECT_EQ(references(), before + 2);
  for (int i = 0; i < 2; ++i) Containers<"Release">(value.Handle());
}

TEST_F(WrapperTest, ObjectReferences) {
  static int deleted;
  deleted = 0;
  {
    CPOSDict dict = CPOSDict::New();
    Object container = Foreign("Referenced", nullptr, [](void*) { ++deleted; });
    dict.Put("r", CPOSRawPointer::NewKAPObjRef(container.get()));
    EXPECT_EQ(dict.GetKAPObjRef("r", false).GetRawPointer(), container.get());
    container.reset();
    EXPECT_EQ(deleted, 0);
    dict.Remove("r");
    EXPECT_EQ(deleted, 1);
  }
  const Object container = Foreign("Referenced");
  const BalancedScope balanced(*this);
  Refuse(KAPHost::Call::kContainer, 1);
  EXPECT_EQ(Thrown([&] { CPOSRawPointer::NewKAPObjRef(container.get()); }),
            "CKAPError invalid container");
  StopRefusing();
  EXPECT_NE(TakeReport(), "");
}

TEST_F(WrapperTest, EmptyObjects) {
  const CPOSObject empty;
  EXPECT_EQ(Thrown([&] { (void)empty.Clone(); }), "CKAPError invalid container");
  EXPECT_EQ(Thrown([&] { (void)empty.GetType(); }), "CKAPError invalid container");
  const Object foreign = Foreign("NoPropertyObject");
  EXPECT_EQ(Thrown([&] { CPOSObject object(foreign.get()); }), "CKAPError invalid container");
  const char* none = nullptr;
  EXPECT_EQ(Thrown([&] { CPOSString text(none); }), "CKAPError invalid container");
  EXPECT_NE(TakeReport(), "");
}

// Like an object of another kind, until it can be loaded.
TEST_F(WrapperTest, InterfaceThatCannotBeLoaded) {
  const CPOSObject number = CPOSNumber(5);
  MoveUnregisterCounter();
  HideInterface("POSNumberInterface");
  EXPECT_TRUE(CPOSNumber(number, true).IsNull());
  EXPECT_EQ(Thrown([&] { CPOSNumber(number, false); }), DowncastMessage("CPOSNumber"));
  EXPECT_EQ(Thrown([&] { CPOSNumber(6.0); }), DowncastMessage("CPOSNumber"));
  StopRefusing();
  EXPECT_EQ(CPOSNumber(number, false).Get(), 5);
}

}  // namespace
