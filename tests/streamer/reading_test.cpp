// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <random>

#include "StreamerWorld.h"

namespace {

using namespace KAP_T_MT;
using namespace std::string_literals;

class ReadingTest : public StreamerTest {};

TEST_F(ReadingTest, Tags) {
  const std::string unrecognized = "error: StreamerBase::LookupStreamer unrecognized version";
  const std::string x63(63, 'x');
  EXPECT_EQ(Outcome("   " + Tagged("  #1 x")), "1 | x");
  for (const std::string& tag : {""s, "   "s, "POSStreamerTypeA_Version1.0"s, x63}) {
    EXPECT_EQ(Outcome(tag), "error: getNextChar unexpected EOF") << tag;
  }
  for (const std::string& tag :
       {"\nPOSStreamerTypeA_Version1.0"s, "POSStreamerTypeA"s, x63, "POSStreamerTypeA_Version1.1"s,
        "POSStreamerTypeA_Version1.0\0"s}) {
    EXPECT_EQ(Outcome(tag + " #1 "), unrecognized + " | #1 ") << tag;
  }
  EXPECT_EQ(Outcome(x63 + "x"), unrecognized);
  EXPECT_EQ(Outcome(x63 + "x "), unrecognized + " |  ");
}

TEST_F(ReadingTest, Values) {
  const struct {
    const char* why;
    std::string value;
    std::string outcome;
  } rows[] = {
      {"white space before", " \t\r\n#1 #", "1 | #"},
      {"white space ends a number", "#1\n\n", "1 | \n"},
      {"a fraction", "#-1.25e-2\t", "-0.012500000000000001"},
      {"a plus", "#+5 ", "5"},
      {"no number is 0", "[#+-5 #--5 #e5 #. #E #+ ]", "[0 0 0 0 0 0]"},
      {"the part that is a number", "[#1e #1e+ #1.5.2 #1+2 #-12- ]", "[1 1 1.5 1 -12]"},
      {"too large, too small", "[#1e400 #-1e400 #1e-400 #-1e-400 ]", "[inf -inf 0 -0]"},
      {"by exponents beyond all numbers",
       "[#1e99999999999999999999 #-1e-99999999999999999999 #+0.1e+99999999999999999999 ]",
       "[inf -0 inf]"},
      {"zero with a sign", "[#-0 #-.0 #-00000000000000000 ]", "[-0 -0 -0]"},
      {"many digits", "[#999999999999999 #9007199254740993 #18446744073709551617 ]",
       "[999999999999999 9007199254740992 1.8446744073709552e+19]"},
      {"62 characters", "#" + std::string(61, '0') + "1 ", "1"},
      {"an escaped digit", R"(#1\065\065e1 )", "1550"},
      {"escapes of a string", R"("a\n\r\t\"\\")", "\"a\n\r\t\"\\\""},
      {"bytes as they are", "\"\1\x7f\xff#]}>` \"", "\"\1\x7f\xff#]}>` \""},
      {"white space is a space", "\"a\n\t\r\"", R"("a   ")"},
      {"escaped white space is itself", R"("\011\012\015")", "\"\t\n\r\""},
      {"octal", R"("\001\101\377\042\134")", "\"\1A\xff\"\\\""},
      {"nines, and no look at the others", R"("\999\1ab\8\"")", "\"\x91\xfaR\""},
      {"an escaped NUL ends the text", R"("a\000b")", R"("a")"},
      {"and one that is not", "\"a\0b\""s, R"("a")"},
      {"either case", "`4e2DABcd`", "u(4e2d abcd)"},
      {"no units, a zero unit", "[``\n`004100000042`]", "[u() u(0041)]"},
      {"digits by escapes", R"([`00\0641`{"t"#1 \0611}])", "[u(0041) t(11)]"},
      {"bytes", R"({"t"#2 0aFF}x)", "t(0aff) | x"},
      {"white space among bytes", "\t{ \"t\"\r\n#3 \n 0 1\t0\n2 \\012\\0400\\0113 }", "t(010203)"},
      {"lengths are cut", R"([{"t"#1.9 00}{""#-0.9 }])", "[t(00) ()]"},
      {"arrays", "[ #1 \"a\"[]\n<>]]", "[1 \"a\" [] <>] | ]"},
      {"an escaped space before a value", R"([\040#1 \040])", "[1]"},
      {"an escape that begins a value", R"([\0431 \133]])", "[1 []]"},
      {"keys", R"(<"b"#1 "a>"[]""#2 "b" #3 >>)", "<() 2 a> [] b 3> | >"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(OutcomeOfValue(row.value), row.outcome);
  }
}

// A bar marks where the reading stops.
TEST_F(ReadingTest, Errors) {
  const std::string digits(63, '1');
  const struct {
    std::string message;
    std::vector<std::string> values;
  } rows[] = {
      {"POSObjectStreamerImpl::Deserialize failure", {" \0|#1 "s}},
      {"Cannot determine streaming params", {"%|", "]|#1 ", "[\v|]", R"(\\|)"}},
      {"Cannot determine streaming params", {R"([\]|])", R"([\135|])", R"([\011|])"}},
      {"malformed number", {"# |1 ", "#1,5 |2", "#0x10 |", "#inf |", "#nan |", R"(#1\ 2 |)"}},
      {"malformed number", {"#" + digits + "| ", "#" + digits + "|1 "}},
      {"malformed Unicode string", {"`004`|#", "`0041004`|", "`004g|`", "`00 4|1`", "`+0x1|`"}},
      {"downcast from CPOSObject to CPOSString failed", {"{}|#", "{[#1 ]|#1 00}", "<#1 |#2 >"}},
      {"downcast from CPOSObject to CPOSNumber failed", {R"({"t"}|)", R"({"t""1"|00})"}},
      {"malformed number", {R"({"t"#-1 |})", R"({"t"#1e400 |})"}},
      {"malformed number", {R"({"t"#18446744073709551616 |00})"}},
      {"GetChars ran out of input", {R"({"t"#18446744073709550000 00}|#)", R"({"t"#1 0}|#)"}},
      {"malformed binary data", {R"({"t"#1 0g|})", R"({"t"#1 -1|})", R"({"t"#2 0a\}b|})"}},
      {"Unexpected chars after binary data", {R"({"t"#1 00 1|})", R"({"t"#0 \175|})"}},
      {"Cannot meaningfully read in a raw pointer (write is for debugging only)", {"[$|0x10 ]"}},
      {"missing dictionary value", {R"(<"a" >|#)"}},
      {"unexpected EOF", {"|", " |", "#1|", R"("\0|)", R"(<"a" [`0041` |)"}},
  };
  for (const auto& row : rows) {
    for (const std::string& value : row.values) {
      SCOPED_TRACE(value);
      const std::size_t bar = value.find('|');
      const std::string rest = value.substr(bar + 1);
      EXPECT_EQ(OutcomeOfValue(value.substr(0, bar) + rest),
                "error: " + row.message + (rest.empty() ? "" : " | " + rest));
    }
  }
}

// A backslash and any byte, in every kind of value.
TEST_F(ReadingTest, LettersOfEscapes) {
  const struct {
    const char* begin;
    std::string letters;
  } rows[] = {{"", "\\"},   {"#1", "\\ "}, {"\"", "\\\"nrt"}, {"`", "\\`"}, {R"({"t"#1 )", "\\}"},
              {"[", "\\]"}, {"<", "\\>"}};
  for (const auto& row : rows) {
    for (int byte = 0; byte < 256; ++byte) {
      const char c = static_cast<char>(byte);
      if (c >= '0' && c <= '9') continue;
      SCOPED_TRACE(row.begin + "\\"s + c);
      const std::string outcome = OutcomeOfValue(row.begin + "\\"s + c + "#");
      const bool isLetter = row.letters.find(c) != std::string::npos;
      EXPECT_EQ(outcome == "error: Unexpected escape sequence | #", !isLetter) << outcome;
    }
  }
}

TEST_F(ReadingTest, NumbersAgreeWithStrtod) {
  constexpr unsigned kSeed = 20240618;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937 random(kSeed);
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    for (auto length = random() % (i % 4 == 0 ? 62 : 8) + 1; length > 0; --length) {
      text += random() % 4 == 0 ? "+-.Ee"[random() % 5] : static_cast<char>('0' + random() % 10);
    }
    ASSERT_EQ(OutcomeOfValue("#" + text + " "), Show(Number(std::strtod(text.c_str(), nullptr))))
        << text;
  }
}

TEST_F(ReadingTest, CallsOfTheStream) {
  using Calls = std::vector<std::string>;
  const std::string text = Tagged('"' + std::string(600, 'x') + "\"#");
  const std::pair<std::string, Calls> rows[] = {
      {Tagged("[]"), {"28 Read(1) = 1", "Read(512) = 2", "Mark() = 30", "Seek(30, 0)"}},
      {Tagged("[]#12 "), {"28 Read(1) = 1", "Read(512) = 6", "Mark() = 34", "Seek(30, 0)"}},
      {text,
       {"28 Read(1) = 1", "Read(512) = 512", "Read(512) = 91", "Mark() = 631", "Seek(630, 0)"}},
      {Tagged("[%]"), {"28 Read(1) = 1", "Read(512) = 3", "Mark() = 31", "Seek(30, 0)"}},
      {Tagged("["),
       {"28 Read(1) = 1", "Read(512) = 1", "Read(512) = 0", "Mark() = 29", "Seek(29, 0)"}},
      {" ", {"Read(1) = 1", "Read(1) = 0"}},
      {"x #1 ", {"2 Read(1) = 1"}},
  };
  for (const auto& [document, calls] : rows) {
    const Object stream = NewBuffer(document);
    EXPECT_EQ(CallsOf([&] { Deserialize(stream); }), calls);
    TakeReports();
  }
}

TEST_F(ReadingTest, OneDocumentBehindAnother) {
  const Object stream = NewMemory();
  const Object everything = Everything();
  Serialize(stream, everything);
  Serialize(stream, Number(2));
  Call<KAPRewindableStreamInterface, "Rewind">(stream.get());
  EXPECT_EQ(Show(Deserialize(stream)), Show(everything));
  EXPECT_EQ(Show(Deserialize(stream)), "2");
  EXPECT_EQ(Deserialize(stream), nullptr);
  EXPECT_EQ(TakeReport(), "getNextChar unexpected EOF");
}

}  // namespace
