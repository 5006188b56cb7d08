// SPDX-License-Identifier: MIT
#include <bit>
#include <clocale>
#include <cstdlib>
#include <random>

#include "World.h"

namespace {

using namespace KAP_T_MT;

class TextTest : public PosTest {
 protected:
  // The object as Show writes it, or "error at" and the place.
  std::string Outcome(const std::string& text) const {
    // In a block of its own size, so that AddressSanitizer finds a read past the end.
    const std::vector<char> copy(text.c_str(), text.c_str() + text.size() + 1);
    const char* end = "untouched";
    const Object object = Own(fCreate(copy.data(), &end));
    EXPECT_EQ(Own(fCreate(copy.data(), nullptr)) == nullptr, object == nullptr);
    if (!object) return "error at " + std::to_string(end - copy.data());
    EXPECT_EQ(end, nullptr);
    return Show(object);
  }

  double NumberIn(const std::string& text) const {
    return Call<POSNumberInterface, "Get">(Own(fCreate(text.c_str(), nullptr)).get());
  }

  POSObjectStatics::Proc<"CreateFromText"> fCreate = Proc<POSObjectStatics, "CreateFromText">();
};

std::string Times(int count, const std::string& text) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

TEST_F(TextTest, Objects) {
  const struct {
    const char* why;
    std::string text;
    std::string object;
  } rows[] = {
      {"a schema", "< category string oneof [int] >", R"(<category "string" oneof ["int"]>)"},
      {"no separators", "[1(a)b`0041`<>[]]", R"([1 "a" "b" u(0041) <> []])"},
      {"no keywords", "[true null _a9]", R"(["true" "null" "_a9"])"},
      {"an escaped parenthesis", R"((a\)b))", R"("a)b")"},
      {"an escaped backslash ends nothing", R"((a\\))", R"("a\")"},
      {"no other escapes", R"((\n\())", R"("n(")"},
      {"white space and any byte in parentheses", "( \n\xff\")", "\" \n\xff\"\""},
      {"the empty string", "()", R"("")"},
      {"a dictionary by key", "<(b c)1a()(\\))[]>", R"(<) [] a "" b c 1>)"},
      {"the later key", "< a 1 a 2 >", "<a 2>"},
      {"units", "`00410aBcDeF0`", "u(0041 0abc def0)"},
      {"numbers", "[1 -2 +5 007 .5 -.5 +.5 5. 1.5]", "[1 -2 5 7 0.5 -0.5 0.5 5 1.5]"},
      {"the part that is a number", "[1.2.3 1..2 - + . -. +. ..1]", "[1.2 1 0 0 0 0 0 0]"},
      {"a sign begins a token", "[1-2+3 +-5]", "[1 -2 3 0 -5]"},
      {"no exponent", "[1e5 2e+1]", R"([1 "e5" 2 "e" 1])"},
      {"no hexadecimal number", "[0x10]", R"([0 "x10"])"},
      {"100 characters of a word", Times(100, "a"), '"' + Times(100, "a") + '"'},
      {"100 between parentheses", "(" + Times(100, " ") + ")", '"' + Times(100, " ") + '"'},
      {"100 characters of a number", "." + Times(98, "0") + "1", "1e-99"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Outcome(row.text), row.object);
  }
}

TEST_F(TextTest, SyntaxErrors) {
  const struct {
    const char* why;
    std::string text;
    std::size_t place;
  } rows[] = {
      {"nothing", "", 0},
      {"< alone", "<", 1},
      {"an open array", "[1", 2},
      {"a key without a value", "<a", 2},
      {"open inside", "[[1] <a [2]", 11},
      {"> for a value", "< a >", 5},
      {"> alone", ">", 1},
      {"] closes a dictionary", "< a 1 ]", 7},
      {"a comma", "[1,2]", 2},
      {"a byte above 127 after a word", "ab\xe4", 2},
      {"other white space", "\v1", 0},
      {"no token for a key", "<a 1 ,>", 5},
      {"no token for a value", "<a ,>", 3},
      {"a number as key", "< 1 a >", 3},
      {"more", "[1 2 3] x", 8},
      {"more, without space", "1e5", 1},
      {"an open string", "(a", 2},
      {"an escaped end", R"((a\))", 4},
      {"a backslash at the end", R"((a\)", 3},
      {"open units", "`0041", 5},
      {"an open string longer than any", "(" + Times(5000, "x"), 5001},
      {"open units longer than any", "`" + Times(5000, "0"), 5001},
      {"five digits", "`00410`]", 7},
      {"no digit", "`004g`", 6},
      {"a sign is not a digit", "`00+1`", 6},
      {"101 characters of a word", Times(101, "a"), 101},
      {"150 characters of a word", Times(150, "a"), 150},
      {"101 between parentheses", "(" + Times(101, "a") + ")", 103},
      {"401 digits", "`" + Times(401, "0") + "`", 403},
      {"404 digits", "`" + Times(404, "0") + "`", 406},
      {"101 characters of a number", Times(101, "0"), 101},
      {"101 characters of a key", "<" + Times(101, "k") + " 1>", 102},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(Outcome(row.text), "error at " + std::to_string(row.place));
  }
}

// A failing host is not a syntax error: there is a report, and the end pointer holds the position
// reached.
TEST_F(TextTest, FailuresKeepThePlace) {
  const char* const text = "[1 <a (b)> 4]";
  for (unsigned long n = 1;; ++n) {
    SCOPED_TRACE(n);
    const char* end = nullptr;
    FailCall(KAP_T_MT::KAPFault::kContainer, n);
    const Object object = Own(fCreate(text, &end));
    StopFaults();
    if (object) break;
    static constexpr int kPlaces[] = {1, 2, 4, 9, 12};
    EXPECT_EQ(end - text, kPlaces[n - 1]);
    EXPECT_NE(TakeReport(), "");
  }
}

std::string RandomNumberToken(std::mt19937& random) {
  std::string token(1, "0123456789+-."[random() % 13]);
  // Mostly at most one point, and lengths around the digits that a double holds.
  const auto length = random() % 4 == 0 ? random() % 100 : random() % 20;
  for (std::size_t i = 0; i < length; ++i) {
    token += random() % 15 == 0 ? '.' : static_cast<char>('0' + random() % 10);
  }
  return token;
}

TEST_F(TextTest, NumbersAgreeWithStrtodInAnyLocale) {
  constexpr unsigned kSeed = 20240503;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937 random(kSeed);
  std::vector<std::string> tokens = {"9007199254740993",
                                     "123456789012345",
                                     "1234567890123456",
                                     "000000000000000001",
                                     "18446744073709551616",
                                     "0.1",
                                     "-.0",
                                     "+0",
                                     "1.0000000000000002"};
  while (tokens.size() < 20000) tokens.push_back(RandomNumberToken(random));
  std::vector<double> values;
  for (const std::string& token : tokens) values.push_back(std::strtod(token.c_str(), nullptr));

  const auto expectAll = [&] {
    for (std::size_t i = 0; i < tokens.size(); ++i) {
      ASSERT_EQ(std::bit_cast<std::uint64_t>(NumberIn(tokens[i])),
                std::bit_cast<std::uint64_t>(values[i]))
          << tokens[i];
    }
  };
  expectAll();
  if (!std::getenv("LOCPATH")) return;  // ctest sets it: the locale is our own
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  EXPECT_EQ(std::strtod("1,5", nullptr), 1.5);
  expectAll();
  std::setlocale(LC_ALL, "C");
}

}  // namespace
