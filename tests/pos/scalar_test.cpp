// SPDX-License-Identifier: MIT
#include <bit>
#include <cmath>
#include <limits>

#include "World.h"

namespace {

using namespace KAP_T_MT;

// A scalar is its own clone, deliberately without a reference; an array or dictionary is copied.
TEST_F(PosTest, TypesEqualityAndClones) {
  const std::vector<Object> objects = OneOfEachKind();
  for (std::size_t i = 0; i < objects.size(); ++i) {
    SCOPED_TRACE("kind " + std::to_string(i + 1));
    const BalancedScope balanced(*this);
    EXPECT_EQ((Call<POSObjectInterface, "GetType">(objects[i].get())), static_cast<int>(i) + 1);
    for (const Object& other : objects) EXPECT_EQ(IsEqual(objects[i], other), objects[i] == other);
    KAPContainer* clone = Call<POSObjectInterface, "Clone">(objects[i].get());
    EXPECT_EQ(clone == objects[i].get(), i < 5);
    if (i < 5) continue;
    const Object copy = Own(clone);
    EXPECT_TRUE(IsEqual(copy, objects[i]));
    EXPECT_EQ(Show(copy), Show(objects[i]));
  }
}

TEST_F(PosTest, Numbers) {
  using Limits = std::numeric_limits<double>;
  for (double value : {0.0, -0.0, 0.1, Limits::max(), Limits::denorm_min(), -Limits::infinity(),
                       Limits::quiet_NaN()}) {
    const Object number = Number(value);
    const double got = Call<POSNumberInterface, "Get">(number.get());
    EXPECT_EQ(std::bit_cast<std::uint64_t>(got), std::bit_cast<std::uint64_t>(value));
    EXPECT_EQ(IsEqual(number, number), !std::isnan(value));
  }
}

TEST_F(PosTest, Texts) {
  for (const std::string& text :
       {std::string(), std::string("\x01\x7f\x80\xff"), std::string(100000, 'x')}) {
    const Object string = Own(Call<POSStringInterface, "NewPOSString">(text.c_str()));
    EXPECT_EQ((Call<POSStringInterface, "Get">(string.get())), text);
  }
  using Units = std::basic_string<unsigned short>;
  for (const Units& text : {Units(), Units{0xd800}, Units{0xffff, 1, 0xdc00}, Units(1000000, 7)}) {
    const Object string = Own(Call<POSUnicodeStringInterface, "NewPOSUnicodeString">(text.c_str()));
    EXPECT_TRUE(Units(Call<POSUnicodeStringInterface, "Get">(string.get())) == text);
  }
}

TEST_F(PosTest, BinData) {
  std::string all;
  for (int i = 0; i < 256; ++i) all.push_back(static_cast<char>(i));
  for (const std::string& bytes : {std::string(), std::string(1, '\0'), all}) {
    const Object data = BinData("", bytes);
    const unsigned char* got = Call<POSBinDataInterface, "GetBinData">(data.get());
    const unsigned long size = Call<POSBinDataInterface, "GetSize">(data.get());
    EXPECT_STREQ((Call<POSBinDataInterface, "GetTypeName">(data.get())), "");
    EXPECT_EQ(std::string(got, got + size), bytes);
  }
  const auto make = Proc<POSBinDataInterface, "NewPOSBinData">();
  EXPECT_TRUE(IsEqual(Own(make("t", nullptr, 0)), BinData("t", "")));

  const unsigned char byte = 0;
  EXPECT_EQ(make("t", &byte, ~0ul), nullptr);
  EXPECT_EQ(TakeReport(), "std::bad_alloc");
}

TEST_F(PosTest, Equality) {
  int a = 0;
  int b = 0;
  const auto withEmptySlot = [this] {
    Object array = Read("[1]");
    Call<POSArrayInterface, "SetAt">(array.get(), 2ul, Number(3).get());
    return array;
  };
  const struct {
    const char* why;
    Object a;
    Object b;
    bool equal;
  } rows[] = {
      {"zeros of either sign", Number(0.0), Number(-0.0), true},
      {"numbers", Number(1), Number(2), false},
      {"one text", Read("ab"), Read("(ab)"), true},
      {"same characters, other kind", Read("A"), Read("`0041`"), false},
      {"a unit more", Read("`0041`"), Read("`00410042`"), false},
      {"another unit", Read("`0041`"), Read("`0141`"), false},
      {"data", BinData("t", "ab"), BinData("t", "ab"), true},
      {"bytes", BinData("t", "ab"), BinData("t", "ac"), false},
      {"size", BinData("t", "ab"), BinData("t", "abc"), false},
      {"type name", BinData("t", "ab"), BinData("T", "ab"), false},
      {"pointer, other procedure", RawPointer(&a, nullptr), RawPointer(&a, [](void*) {}), true},
      {"pointer", RawPointer(&a, nullptr), RawPointer(&b, nullptr), false},
      {"arrays", Read("[1 [x]]"), Read("[1 [x]]"), true},
      {"count", Read("[1]"), Read("[1 2]"), false},
      {"order", Read("[1 2]"), Read("[2 1]"), false},
      {"empty slots", withEmptySlot(), withEmptySlot(), true},
      {"an empty slot and an object", withEmptySlot(), Read("[1 2 3]"), false},
      {"dictionaries", Read("<a 1 b <c 2>>"), Read("<b <c 2> a 1>"), true},
      {"a superset, deliberately", Read("<a 1 b 2>"), Read("<a 1 aa 0 b 2 c 0>"), true},
      {"a subset", Read("<a 1 b 2>"), Read("<a 1>"), false},
      {"another key between", Read("<a 1 c 2>"), Read("<a 1 b 2 d 3>"), false},
      {"value", Read("<a 1>"), Read("<a 2>"), false},
      {"of nothing", Read("<>"), Read("<a 1>"), true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(IsEqual(row.a, row.b), row.equal);
  }
}

TEST_F(PosTest, RawPointerIsReleasedOnce) {
  static int released;
  released = 0;
  const auto release = [](void* pointer) { ++*static_cast<int*>(pointer); };
  {
    const Object pointer = RawPointer(&released, release);
    EXPECT_EQ((Call<POSRawPointerInterface, "GetRawPointer">(pointer.get())), &released);
    EXPECT_EQ((Call<POSRawPointerInterface, "GetReleaseProc">(pointer.get())), +release);
    Object array = Read("[1]");
    Call<POSArrayInterface, "Append">(array.get(), pointer.get());
    const Object clone = Own(Call<POSObjectInterface, "Clone">(array.get()));
    array.reset();
    EXPECT_EQ(released, 0);
  }
  EXPECT_EQ(released, 1);
  RawPointer(nullptr, nullptr);
}

}  // namespace
