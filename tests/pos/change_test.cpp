// SPDX-License-Identifier: MIT
#include <string_view>

#include "World.h"

// Changes that throw when they did not happen, and the texts that name what to change.

namespace {

using namespace KAP_T_MT;

// What a call throws, as text; "" when it does not.
std::string Thrown(const auto& call) {
  try {
    call();
    return "";
  } catch (const std::exception& exception) {
    return exception.what();
  }
}

class ChangeTest : public WrapperTest {};

struct Fixture {
  CPOSArray array = CPOSArray(CPOSObject::CreateFromText("[1]", nullptr));
  CPOSDict dict = CPOSDict(CPOSObject::CreateFromText("< a 1 >", nullptr));
  CPOSNumber added = CPOSNumber(2);
};

const struct {
  const char* name;
  void (*change)(Fixture&);
  bool (*happened)(Fixture&);
} kChanges[] = {{"CPOSArray::Append failed", [](Fixture& f) { f.array.AppendOrThrow(f.added); },
                 [](Fixture& f) { return f.array.Count() == 2; }},
                {"CPOSArray::SetAt failed", [](Fixture& f) { f.array.SetAtOrThrow(40, f.added); },
                 [](Fixture& f) { return f.array.Count() == 41; }},
                {"CPOSDict::Put failed", [](Fixture& f) { f.dict.PutOrThrow("b", f.added); },
                 [](Fixture& f) { return f.dict.NumKeys() == 2; }}};

// Whichever host call fails: no exception means that the change happened.
TEST_F(ChangeTest, ThrowsWhenTheHostFails) {
  for (const auto& row : kChanges) {
    int silent = 0;
    for (unsigned long n = 1; n < 20; ++n) {
      SCOPED_TRACE(testing::Message() << row.name << ", call " << n);
      Fixture fixture;
      FailCall(KAPFault::kAny, n);
      const std::string thrown = Thrown([&] { row.change(fixture); });
      const bool fired = Fired();
      StopFaults();
      if (thrown.empty()) {
        EXPECT_TRUE(row.happened(fixture));
        ++silent;
      }
      EXPECT_EQ(thrown.empty(), TakeReports().empty() && !(fired && !row.happened(fixture)));
    }
    EXPECT_GT(silent, 0);
    EXPECT_LT(silent, 19) << "no call failed";
  }
}

TEST_F(ChangeTest, ThrowsForWhatIsRefused) {
  Fixture f;
  const CPOSObject empty;
  EXPECT_EQ(Thrown([&] { f.array.AppendOrThrow(empty); }), "CPOSArray::Append failed");
  EXPECT_EQ(Thrown([&] { f.array.SetAtOrThrow(0, empty); }), "CPOSArray::SetAt failed");
  EXPECT_EQ(Thrown([&] { f.array.SetAtOrThrow(0xFFFFFFFF, f.added); }), "CPOSArray::SetAt failed");
  EXPECT_EQ(Thrown([&] { f.dict.PutOrThrow("a", empty); }), "CPOSDict::Put failed");
  EXPECT_EQ(TakeReports().size(), 4u);
  EXPECT_EQ(Show(f.array.Handle()) + Show(f.dict.Handle()), "[1]<a 1>");
}

// A null text is an error of its own; it does not look like exhausted memory.
TEST_F(ChangeTest, Texts) {
  Fixture f;
  const char* const none = nullptr;
  const std::string text = "a.b";
  const std::string_view a = std::string_view(text).substr(0, 1);
  for (const std::string& thrown :
       {Thrown([&] { f.dict.Get(none, true); }), Thrown([&] { f.dict.DeepGetNumber(none, true); }),
        Thrown([&] { f.dict[none]; }), Thrown([&] { f.dict.Put(none, f.added); }),
        Thrown([&] { f.dict.Remove(none); }), Thrown([&] { (void)f.dict.HasKey(none); })}) {
    EXPECT_EQ(thrown, "a key, path or type name is null");
  }
  EXPECT_EQ(f.dict.GetNumber(a).Get() + f.dict.DeepGetNumber(a).Get(), 2);
  f.dict.PutOrThrow(std::string_view("bc").substr(1), CPOSString(a));
  EXPECT_EQ(Show(f.dict.Handle()), R"(<a 1 c "a">)");
  f.dict.Remove(a);
  EXPECT_TRUE(f.dict.Get(text.substr(0, 1), true).IsNull());
}

}  // namespace
