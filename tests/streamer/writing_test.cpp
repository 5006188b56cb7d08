// SPDX-License-Identifier: MIT
#include <bit>
#include <clocale>
#include <cmath>
#include <limits>
#include <random>

#include "StreamerWorld.h"

namespace {

using namespace KAP_T_MT;

class WritingTest : public StreamerTest {
 protected:
  Object String(const std::string& text) const {
    return Own(Call<POSStringInterface, "NewPOSString">(text.c_str()));
  }
};

TEST_F(WritingTest, Values) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::string line40 =
      "\n\tAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAFAF";
  const auto pointer = [this](std::uintptr_t address) {
    return RawPointer(reinterpret_cast<void*>(address), [](void*) {});
  };
  const struct {
    const char* why;
    Object object;
    std::string bytes;
  } rows[] = {
      {"a whole number", Number(1), "#1 "},
      {"a half", Number(0.5), "#0.5 "},
      {"32 digits", Number(0.1), "#0.10000000000000000555111512312578 "},
      {"an exponent", Number(1e100), "#1.0000000000000000159028911097599e+100 "},
      {"the sign of zero", Number(-0.0), "#-0 "},
      {"what cannot be read back", Number(-kInfinity), "#-inf "},
      {"an empty string", String(""), R"("")"},
      {"escapes of strings", String("a\n\"\1"), R"("a\n\"\001")"},
      {"no others", String("\t\r\\ ]}>`'#/"), R"("\t\r\\ ]}>`'#/")"},
      {"octal", String("\x7f\x80\xff\v\x1f\b~"), R"("\177\200\377\013\037\010~")"},
      {"upper-case and lower-case digits", Read("`4e2dabcd00e9`"), "`4E2dABcd00e9`"},
      {"40 bytes in a line", BinData("t}\n", std::string(81, '\xaf')),
       "{\"t}\\n\" #81 \x20" + line40 + line40 + "\n\tAF\n}"},
      {"no bytes", BinData("", ""), "{\"\" #0 \x20\n}"},
      {"a pointer", pointer(0x1aB2), "$0x1ab2 "},
      {"a null pointer", pointer(0), "$(nil) "},
      {"an empty array", Read("[]"), "[\n]"},
      {"an empty dictionary", Read("<>"), "<\n>"},
      {"levels", Read("[[] <e [(x)]>]"),
       "[\n\t[\n\t]\n\t<\n\t\t\"e\" [\n\t\t\t\"x\"\n\t\t]\n\t>\n]"},
      {"keys in order", Read("< (b>) 1 () 2 a [(]) `0041`] >"),
       "<\n\t\"\" #2 \n\t\"a\" [\n\t\t\"]\"\n\t\t`0041`\n\t]\n\t\"b>\" #1 \n>"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Value(row.object), row.bytes);
  }
}

TEST_F(WritingTest, NumbersAgreeWithPrintfInAnyLocale) {
  constexpr unsigned kSeed = 20240617;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937_64 random(kSeed);
  std::vector<double> numbers = {5e-324, 1.7976931348623157e308, 2.2250738585072014e-308, 1e22};
  for (const double limit :
       {1e1, 1e4, 1e8, 1e9, 4e9, 0x1p32, 1e15, 0x1p53, 9.2e18, 0x1p63, -0x1p63, 0x1p64}) {
    numbers.insert(numbers.end(), {limit - 1, limit, limit + 1, limit + 0.5});
    numbers.insert(numbers.end(), {std::nextafter(limit, 0.0), std::nextafter(limit, 1e300)});
  }
  for (int i = 0; i < 3000; ++i) {
    numbers.push_back(std::bit_cast<double>(random()));
    numbers.push_back(std::bit_cast<double>(random() >> 12));           // denormal
    numbers.push_back(std::ldexp(static_cast<double>(random()), -40));  // with a fraction
    const auto whole = static_cast<double>(random() >> (random() % 64));
    numbers.insert(numbers.end(), {whole, -whole});
  }
  for (const double number : numbers) {
    char text[64];
    std::snprintf(text, sizeof text, "#%.32g ", number);
    ASSERT_EQ(Value(Number(number)), text);
    if (!std::isfinite(number)) continue;
    ASSERT_EQ(OutcomeOfValue(text), Show(Number(number)));
  }
  if (!std::getenv("LOCPATH")) return;  // ctest sets it: the locale is our own
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  const std::string half = Value(Number(0.5));
  const std::string read = OutcomeOfValue("#1.5 ") + OutcomeOfValue("#1,5 ");
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(half, "#0.5 ");
  EXPECT_EQ(read, "1,5error: malformed number");  // shown with a comma, which proves the locale
}

TEST_F(WritingTest, Versions) {
  const Object stream = NewMemory();
  for (const char* version : {"POSStreamerTypeA_Version1.1", "POSStreamerTypeA_Version1.0 ", ""}) {
    Serialize(stream, Number(1), version);
    EXPECT_EQ(TakeReport(), "StreamerBase::LookupStreamer unrecognized version");
  }
  Serialize(stream, Number(1), "POSStreamerTypeA_Version1.0");
  EXPECT_EQ(Contents(stream), "POSStreamerTypeA_Version1.0 #1 ");
}

TEST_F(WritingTest, CallsOfTheStream) {
  const std::pair<std::size_t, std::vector<std::string>> rows[] = {
      {3, {"Write(27)", "Write(1)", "Write(3)"}},
      {512, {"Write(27)", "Write(1)", "Write(512)"}},
      {513, {"Write(27)", "Write(1)", "Write(512)", "Write(1)"}},
      {700, {"Write(27)", "Write(1)", "Write(512)", "Write(188)"}},
      {1536, {"Write(27)", "Write(1)", "3 Write(512)"}}};
  for (const auto& [bytes, calls] : rows) {
    const Object stream = NewMemory();
    const Object object = String(std::string(bytes - 2, 'x'));
    EXPECT_EQ(CallsOf([&] { Serialize(stream, object); }), calls);
  }
}

// A failure that the objects cause: what comes before it has been written.
TEST_F(WritingTest, ObjectsThatCannotBeWritten) {
  Object withHole = Read("[1]");
  Call<POSArrayInterface, "SetAt">(withHole.get(), 2ul, Number(3).get());
  const Object stream = NewMemory();
  Serialize(stream, withHole);
  EXPECT_EQ(TakeReport(), "CPOSArray::GetAt subscript failed");
  EXPECT_TRUE(Contents(stream).starts_with(Tagged("[\n\t#1 ")));

  const auto none = [](POSObject*) -> POSObject* { return nullptr; };
  const auto no = [](POSObject*, POSObject*) { return false; };
  const auto type = [](POSObject*) { return 99; };
  const auto entries = POSObjectInterface::Registration(+none, +no, +type);
  for (const auto& entry : entries) {
    Register("TestKind", entry.fMethodName, entry.fProcName, entry.fProc);
  }
  Serialize(NewMemory(), Foreign("TestKind"));
  EXPECT_EQ(TakeReport(), "Cannot determine writing params");
}

}  // namespace
