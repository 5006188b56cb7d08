// SPDX-License-Identifier: MIT
#include <cstdio>
#include <functional>

#include "KAPUtilsDir.h"
#include "POSStreamer.h"
#include "POSValidator.h"
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
  } catch (const std::bad_alloc& error) {
    return error.what();
  }
}

std::string DowncastMessage(const char* wrapper) {
  return std::string("downcast from CPOSObject to ") + wrapper + " failed";
}

TEST_F(WrapperTest, Getters) {
  CPOSDict dict = CPOSDict::New();
  for (const Object& object : OneOfEachKind()) {
    dict.Put(std::to_string(dict.NumKeys() + 1).c_str(), CPOSObject(object.get()));
  }
  const auto checkOne = [&](const char* name, const std::string& key, auto get,
                            const char* missing) {
    SCOPED_TRACE(std::string(name) + ", " + missing);
    const BalancedScope balanced(*this);
    for (const char* other : {"1", "2", "3", "4", "5", "6", "7"}) {
      const auto getOther = [&] { return (dict.*get)(other, false).Handle(); };
      EXPECT_EQ((dict.*get)(other, true).Handle(), other == key ? dict[other].Handle() : nullptr);
      EXPECT_EQ(Thrown([&] { EXPECT_EQ(getOther(), dict[other].Handle()); }),
                other == key ? "" : DowncastMessage(name));
    }
    EXPECT_TRUE((dict.*get)("absent", true).IsNull());
    EXPECT_EQ(Thrown([&] { (dict.*get)("absent", false); }), missing);
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
  EXPECT_EQ(Thrown([&] { dict["absent"]; }), "CPOSDict::Get failed");
  EXPECT_EQ(Thrown([&] { dict.DeepGet("a.b", false); }), "CPOSArray::GetAt subscript failed");
  EXPECT_EQ(dict.GetNumber(CKAPStringAtom("1"), false).Get(), 1.5);
}

TEST_F(WrapperTest, ArraysAndIterators) {
  const unsigned short units[] = {1, 2, 3, 0};
  CPOSArray array = CPOSArray::New();
  array.Append(CPOSNumber(1));
  array.SetAt(2, CPOSUnicodeString(units));
  array.SetAt(4, CPOSString("x"));
  array.Remove(0);
  EXPECT_EQ(Show(array.Handle()), R"([~ u(0001 0002 0003) ~ "x"])");
  EXPECT_EQ(CPOSUnicodeString::GetLength(CPOSUnicodeString(array[1], false).Get()), 3u);
  for (unsigned long index : {2ul, 4ul}) {
    EXPECT_TRUE(array.GetAt(index, true).IsNull());
    EXPECT_EQ(Thrown([&] { array[index]; }), "CPOSArray::GetAt subscript failed");
  }
  const CPOSDict dict(CPOSObject::CreateFromText("< b 2 a 1 >", nullptr), false);
  std::string keys;
  for (CPOSDictIterator i(dict); !i.IsDone(); i.Next()) keys += i.CurKey();
  EXPECT_EQ(keys, "ab");
}

// The bytes after such a text are not part of it.
TEST_F(WrapperTest, TextsWithoutATerminator) {
  for (const std::string text : {"[1 2]", "[1 2", "1 2 3", ""}) {
    SCOPED_TRACE(text);
    const std::string longer = text + "]";
    const auto view = std::string_view(longer).substr(0, text.size());
    const char *end = "", *endOfView = "";
    const CPOSObject object = CPOSObject::CreateFromText(text.c_str(), &end);
    const CPOSObject ofView = CPOSObject::CreateFromText(view, &endOfView);
    EXPECT_EQ(object.IsNull(), ofView.IsNull());
    EXPECT_TRUE(object.IsNull() || object.IsEqual(ofView));
    EXPECT_EQ(end ? end - text.c_str() : -1, endOfView ? endOfView - longer.data() : -1);
  }
  const std::string_view key = std::string_view("a.b").substr(0, 1), absent = key.substr(1);
  const CPOSDict dict(CPOSObject::CreateFromText("< a 1 >", nullptr), false);
  EXPECT_EQ(dict[key].Handle(), dict["a"].Handle());
  EXPECT_EQ(dict[CKAPStringAtom(key)].Handle(), dict["a"].Handle());
  EXPECT_FALSE(dict.HasKey(absent) || dict.DeepHasKey(std::string_view("a.b")));
  const CPOSBinData data(std::string("image/png, long").substr(0, 9), nullptr, 0);
  EXPECT_STREQ(data.GetTypeName(), "image/png");
  for (const std::u16string_view text : {u"", u"Hi", u"\xD83D\xDE00"}) {
    EXPECT_TRUE(CPOSUnicodeString(text).Text() == text);
    const std::u16string longer = std::u16string(text) + u"!";
    const std::u16string_view view = longer;
    EXPECT_TRUE(CPOSUnicodeString(view.substr(0, text.size())).Text() == text);
  }
  EXPECT_THROW(CPOSUnicodeString(std::u16string_view(u"a\0b", 3)), TOQException);
}

TEST_F(WrapperTest, CloneCountsItsReferences) {
  for (const Object& object : OneOfEachKind()) {
    const BalancedScope balanced(*this);
    const CPOSObject original(object.get());
    const CPOSObject again = original.Clone().Clone();
    EXPECT_TRUE(original.IsEqual(again));
  }
}

// A wrapper adds a reference to a handle, and takes over that of a new one.
TEST_F(WrapperTest, WaysToTakeAHandle) {
  const auto check = [this]<class Wrapper>(const Wrapper& wrapper) {
    const BalancedScope balanced(*this);
    const Wrapper added(wrapper.Handle());
    EXPECT_EQ(Wrapper(TKAPNewHandle(Wrapper(added).Detach())).Handle(), wrapper.Handle());
  };
  check(CPOSObject(CPOSNumber(1)));
  check(CPOSStreamer::New());
  check(CKAPUtilsDir::GetTempDir());
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
  CPOSDict dict = CPOSDict::New();
  Object container = Foreign("Referenced", nullptr, [](void*) { ++deleted; });
  dict.Put("r", CPOSRawPointer::NewKAPObjRef(container.get()));
  EXPECT_EQ(dict.GetKAPObjRef("r", false).GetRawPointer(), container.get());
  {
    const BalancedScope balanced(*this);
    FailCall(KAP_T_MT::KAPFault::kContainer, 1);
    EXPECT_EQ(Thrown([&] { (void)CPOSRawPointer::NewKAPObjRef(container.get()); }),
              "CKAPError invalid container");
    StopFaults();
    EXPECT_NE(TakeReport(), "");
  }
  container.reset();
  EXPECT_EQ(deleted, 0);
  dict.Remove("r");
  EXPECT_EQ(deleted, 1);
  // The reference of a new container goes over, or is released when there can be no object.
  const auto make = [this] {
    return TKAPNewHandle(Foreign("Made", nullptr, [](void*) { ++deleted; }).release());
  };
  dict.Put("r", CPOSRawPointer::NewKAPObjRef(make()));
  EXPECT_EQ(deleted, 1);
  dict.Remove("r");
  EXPECT_EQ(deleted, 2);
  auto made = make();
  FailCall(KAP_T_MT::KAPFault::kContainer, 1);
  EXPECT_EQ(Thrown([&] { (void)CPOSRawPointer::NewKAPObjRef(std::move(made)); }),
            "CKAPError invalid container");
  StopFaults();
  EXPECT_NE(TakeReport(), "");
  EXPECT_EQ(deleted, 3);
  EXPECT_EQ(
      Thrown([] { (void)CPOSRawPointer::NewKAPObjRef(TKAPNewHandle<KAPContainer>(nullptr)); }),
      "CKAPError invalid container");
}

TEST_F(WrapperTest, EmptyObjects) {
  const CPOSObject empty;
  EXPECT_TRUE(CPOSNumber(empty, true).IsNull());
  EXPECT_EQ(CPOSUnicodeString(empty, true).Text(), u"");
  EXPECT_NE(TakeReport(), "");
  EXPECT_EQ(Thrown([&] { CPOSNumber(empty, false); }), DowncastMessage("CPOSNumber"));
  EXPECT_EQ(Thrown([&] { (void)empty.Clone(); }), "CKAPError invalid container");
  EXPECT_EQ(Thrown([&] { (void)empty.GetType(); }), "CKAPError invalid container");
  const Object foreign = Foreign("NoPropertyObject");
  EXPECT_EQ(Thrown([&] { CPOSObject object(foreign.get()); }), "CKAPError invalid container");
  const char* none = nullptr;
  EXPECT_EQ(Thrown([&] { CPOSString text(none); }), "CKAPError invalid container");
  EXPECT_NE(TakeReport(), "");
  EXPECT_TRUE(CPOSStreamer().IsNull());
  const CKAPPositionableStream stream = CKAPPositionableStream::New();
  EXPECT_EQ(Thrown([&] { (void)CPOSStreamer().Deserialize(stream); }),
            "CKAPError invalid container");
  EXPECT_EQ(Thrown([&] { CPOSStreamer().Serialize(stream, CPOSNumber(1)); }),
            "CKAPError invalid container");
}

// Like an object of another kind, until it can be loaded.
TEST_F(WrapperTest, InterfaceThatCannotBeLoaded) {
  const CPOSObject number = CPOSNumber(5);
  MoveUnregisterCounter();
  HideInterface("POSNumberInterface");
  EXPECT_TRUE(CPOSNumber(number, true).IsNull());
  EXPECT_EQ(Thrown([&] { CPOSNumber(number, false); }), DowncastMessage("CPOSNumber"));
  EXPECT_EQ(Thrown([&] { CPOSNumber(6.0); }), DowncastMessage("CPOSNumber"));
  StopFaults();
  EXPECT_EQ(CPOSNumber(number, false).Get(), 5);

  // Even where a failure would not throw.
  const CPOSDict dict = CPOSDict::New();
  const CPOSArray array = CPOSArray::New();
  const std::pair<std::string, std::function<void()>> calls[] = {
      {"POSDict", [&] { (void)dict.Get("a", true); }},
      {"POSDict", [&] { (void)dict.DeepGet("a.b", true); }},
      {"POSArray", [&] { (void)array.GetAt(0, true); }}};
  for (const auto& [name, call] : calls) {
    MoveUnregisterCounter();
    HideInterface((name + "Interface").c_str());
    EXPECT_EQ(Thrown(call), DowncastMessage(("C" + name).c_str()));
    StopFaults();
  }
}

int gPointee;

void Need(bool isDone) {
  if (!isDone) throw POSException("a call has failed");
}

// Whether the first unit of a text or of data, which is null after a failure, is this one.
bool Starts(const auto* data, int first) { return data && *data == first; }

CPOSDict Dict(const char* text) { return {CPOSObject::CreateFromText(text, nullptr), false}; }

// What of a wrapper calls the library or the host. If a call fails, a use throws or leaves a
// report.
const struct {
  const char* wrapper;
  void (*use)();
} kUses[] = {
    {"object",
     [] {
       const CPOSObject object = CPOSObject::CreateFromText(std::string("[1 < a (b) >]"));
       Need(!object.IsNull() && object.Clone().IsEqual(object));
     }},
    {"number", [] { Need(CPOSNumber(CPOSObject(CPOSNumber(1.5)), false).Get() == 1.5); }},
    {"string", [] { Need(Starts(CPOSString(CPOSString("text"), false).Get(), 't')); }},
    {"Unicode string",
     [] { Need(Starts(CPOSUnicodeString(CPOSUnicodeString(u"text"), false).Get(), 't')); }},
    {"binary data",
     [] {
       const unsigned char bytes[] = {1, 2};
       const CPOSBinData data("type", bytes, 2);
       Need(Starts(data.GetTypeName(), 't') && data.GetSize() == 2);
       Need(Starts(data.GetBinData(), 1));
     }},
    {"raw pointer",
     [] {
       const CPOSRawPointer pointer(&gPointee, nullptr);
       Need(pointer.GetRawPointer() == &gPointee && !pointer.GetReleaseProc());
       Need(CPOSRawPointer::NewKAPObjRef(pointer.Handle()).GetRawPointer() == pointer.Handle());
     }},
    {"array",
     [] {
       CPOSArray array = CPOSArray::New();
       array.Append(CPOSNumber(1));
       array.SetAt(2, CPOSNumber(3));
       array.Remove(1);
       Need(array.Count() == 2 && CPOSNumber(array[1], false).Get() == 3);
     }},
    {"dictionary",
     [] {
       CPOSDict dict = Dict("< a 1 b < c [2] > >");
       dict.Put("d", CPOSNumber(4));
       dict.Remove("a");
       Need(dict.NumKeys() == 2 && dict.DeepGetNumber("b.c[0]", false).Get() == 2);
       Need(dict.GetDict("b", false).GetArray("c", false).Count() == 1);
     }},
    {"iterator",
     [] {
       const CPOSDict dict = Dict("< a 1 >");
       CPOSDictIterator iterator(dict);
       iterator.Next();
       iterator.Begin();
       Need(!iterator.IsDone() && Starts(iterator.CurKey(), 'a'));
     }},
    {"streamer",
     [] {
       const CPOSStreamer streamer = CPOSStreamer::New();
       CKAPPositionableStream stream;
       streamer.Serialize(stream, Dict("< a [1] >"));
       stream.Rewind();
       Need(!streamer.Deserialize(stream).IsNull());
     }},
    {"validator",
     [] {
       const CPOSDict schema = Dict("< T < category int > >");
       CPOSStructValidator validator(schema);
       validator.RegisterCallbackProc(
           "T", [](auto...) { return 1L; }, nullptr);
       Need(CPOSStructValidator::ValidateSchema(schema, nullptr));
       Need(CPOSStructValidator(validator.Handle()).Validate(CPOSNumber(1), "T", nullptr));
     }},
    {"directory", [] {
       const CKAPUtilsDir folder = CKAPUtilsDir::GetTempDir();
       const CKAPStringAtom name = folder.CreateUniqueFilename("wrapper");
       const std::unique_ptr<const CKAPStringAtom, void (*)(const CKAPStringAtom*)> file(
           &name, [](const CKAPStringAtom* each) { std::remove(each->Text()); });
       folder.OpenStream(name, "w").Write(reinterpret_cast<const unsigned char*>("x"), 1);
       Need(folder.FileExists(name) && folder.GetFilePathSpec(name).Text());
       const std::string text = name.Text();
       folder.Rename(text, std::string_view(text));
       (void)CKAPUtilsDir::New(folder.GetFilePathSpec("").Text()).OpenStream(text.c_str(), "r");
       folder.Delete(text);
       Need(!CKAPUtilsDir::GetCurrent().IsNull());
     }}};

// Whichever call of the host fails, alone or with all after it: the caller learns of it, and
// neither side keeps anything.
TEST_F(WrapperTest, NthCallOfTheHostFails) {
  for (const auto& row : kUses) {
    row.use();  // fills method tables
    SCOPED_TRACE(row.wrapper);
    FailingCall::Sweep([&](const FailingCall& call) {
      const BalancedScope balanced(*this);
      std::string thrown;
      const bool fails = call.During(*this, [&] { thrown = Thrown(row.use); });
      EXPECT_EQ(!TakeReports().empty() || !thrown.empty(), fails) << thrown;
      return fails;
    });
  }
}

}  // namespace
