// SPDX-License-Identifier: MIT
// TypeA documents to property objects and back.

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "Folder.h"
#include "Posutil.h"

namespace {

const std::string kTag = "POSStreamerTypeA_Version1.0 ";

Outcome Print(const std::string& document, const std::string& to = "json") {
  return RunPosutil({"print", "--from", "typea", "--to", to, "-"}, document);
}

const char kEveryKind[] =
    "<\n\t\"a\" [\n\t\t#1 \n\t\t\"x\\n\\303\\251\\\\\\\"\"\n\t\t`00c903b1`\n\t]\n"
    "\t\"b\" {\"t\" #3  \n\t\t00FF10\n\t}\n\t\"c d\" <\n\t>\n\t\"e\" #-0.5 \n>";

TEST(TypeATest, RoundTripsEveryKind) {
  const std::string json =
      R"({"a":[1,"x\né\\\"",{"$unicode":"Éα"}],"b":{"$binary":"t","base64":"AP8Q"},)"
      R"("c d":{},"e":-0.5})";
  const Outcome typeA = RunPosutil({"convert", "--from", "json", "--to", "typea", "-", "-"}, json);
  EXPECT_EQ(typeA, (Outcome{0, kTag + kEveryKind, ""}));
  EXPECT_EQ(RunPosutil({"get", "--from", "typea", "-", "a", "b", "e"}, typeA.fOut),
            (Outcome{0,
                     "[1,\"x\\né\\\\\\\"\",{\"$unicode\":\"Éα\"}]\n"
                     "{\"$binary\":\"t\",\"base64\":\"AP8Q\"}\n-0.5\n",
                     ""}));
  EXPECT_EQ(Print(typeA.fOut, "typea"), (Outcome{0, typeA.fOut + "\n", ""}));
  EXPECT_EQ(Print(kTag + "[#1 \"x\"] \t\r\n\n", "tree"),
            (Outcome{0, "array of 2\n[0]: 1\n[1]: \"x\"\n", ""}));
  EXPECT_EQ(Print("\n " + kTag + "#5 "), (Outcome{0, "5\n", ""}));
}

TEST(TypeATest, ErrorsShowTheirPlace) {
  const struct {
    std::string in;
    std::string err;
  } rows[] = {
      {"", "1:1: the document ends inside the version name (after 0 bytes)\n  \n  ^\n"},
      {" \n", "1:1: the document ends inside"},
      {"POSStreamerTypeA_Version2.0 #1 ",
       "1:1: a document must start with POSStreamerTypeA_Version1.0 and a space (after 28 bytes)\n"
       "  POSStreamerTypeA_Version2.0 #1...\n  ^\n"},
      {kTag + "?", "1:29: no value starts with this character (after 29 bytes)\n"},
      {kTag + "[\n\t#1 \n\t%]", "3:2: no value starts with this character (after 37 bytes)\n"},
      {kTag + "\"é\\q\"", "1:31: unknown escape sequence (after 33 bytes)\n"},
      {kTag + "{\"a\" #2 00}", "1:39: binary data is shorter than its declared length"},
      {kTag + "{\"a\" #1 000}", "1:39: binary data is longer than its declared length"},
      {kTag + "{#1 }", "1:30: expected a string"},
      {kTag + "< `0041` #2 >", "1:31: expected a string"},
      {kTag + "< [ ] #2 >", "1:33: expected a string"},
      {kTag + "<< > #2 >", "1:32: expected a string"},
      {kTag + "<{\"\" #0 } #2 >", "1:37: expected a string"},
      {kTag + "`0041zz`", "1:29: malformed Unicode string"},
      {kTag + "[ #1#2 ]", "1:31: malformed number"},
      {kTag + "[\"a\"#1,2 ]", "1:33: malformed number"},
      {kTag + "<\"a\">", "1:33: key without a value"},
      {kTag + "$0x1 ", "1:29: cannot read a raw pointer"},
      {kTag + std::string(1, '\0'), "1:29: a zero character, which ends a text"},
      {kTag + "[\"\\\\000\" \"a\\400b\"]", "1:40: a zero character, which ends a text"},
      {kTag + "[\"" + std::string(65'503, 'x') + "\\000\"]", "1:65534: a zero character"},
      {kTag + "#1,5 ", "1:29: malformed number"},
      {kTag + "#1 \n#2 ", "2:1: unexpected text after the document (see --all)\n  #2 \n  ^\n"},
      {kTag + "\"" + std::string(300000, 'x') + "\n\n" + std::string(70000, 'y') + "\\q",
       "3:70001: unknown escape sequence (after 370033 bytes)\n  ...yyy"},
  };
  const Folder folder;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in.substr(0, 100));
    const Outcome piped = Print(row.in);
    EXPECT_EQ(piped.fStatus, 3);
    EXPECT_EQ(piped.fOut, "");
    EXPECT_EQ(piped.fErr.rfind("<stdin>:" + row.err, 0), 0U) << piped.fErr;
    const Outcome named = RunPosutil({"print", folder.Put("a.typea", row.in)});
    EXPECT_EQ(named.fErr, folder.Path("a.typea") + piped.fErr.substr(7));
  }
}

TEST(TypeATest, TruncatedAnywhere) {
  const std::string whole = kTag + kEveryKind;
  for (std::size_t size = 1; size < whole.size(); size += 7) {
    const Outcome outcome = Print(whole.substr(0, size));
    EXPECT_EQ(outcome.fStatus, 3);
    EXPECT_NE(outcome.fErr.find("(after " + std::to_string(size) + " bytes)"), std::string::npos)
        << outcome.fErr;
  }
}

TEST(TypeATest, RejectsWhatItCannotHold) {
  EXPECT_EQ(
      RunPosutil({"convert", "--from", "json", "--to", "typea", "-", "-"}, "{\"a\":[1,null]}"),
      (Outcome{3, "",
               "<stdin>:1:9: a[1]: TypeA cannot hold an empty slot\n  {\"a\":[1,null]}\n"
               "          ^\n"}));
  for (const auto& [to, name] :
       {std::pair("typea", "TypeA"), {"json", "JSON"}, {"text", "text notation"}}) {
    const Outcome outcome = Print(kTag + "[#1 #-1e999 ]", to);
    EXPECT_EQ(outcome.fStatus, 3);
    EXPECT_EQ(outcome.fErr, std::string("<stdin>:1:33: [1]: ") + name +
                                " cannot hold infinities or NaN\n  " + kTag + "[#1 #-1e999 ]\n" +
                                std::string(34, ' ') + "^\n");
  }
}

TEST(TypeATest, RejectsTwoGibibytes) {
  const Folder folder;
  const std::string large = folder.Put("large.typea", kTag);
  ASSERT_EQ(::truncate(large.c_str(), 1L << 31), 0);
  EXPECT_EQ(
      RunPosutil({"convert", large, large}),
      (Outcome{3, "", "posutil: " + large + ": a TypeA document must be smaller than 2 GiB\n"}));
  EXPECT_EQ(std::filesystem::file_size(large), 1UL << 31);
}

TEST(AllTest, ReadsEveryDocument) {
  const std::string two = kTag + "[\n\t#1 \n]" + kTag + "\"x\"";
  const struct {
    const char* to;
    std::string converted;
    std::string printed;
  } rows[] = {
      {"typea", two, two + "\n"},
      {"json", "[1]\n\"x\"\n", "[1]\n\"x\"\n"},
      {"text", "[1]\nx\n", "[1]\nx\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.to);
    EXPECT_EQ(RunPosutil({"convert", "--all", "--from", "typea", "--to", row.to, "-", "-"}, two),
              (Outcome{0, row.converted, ""}));
    EXPECT_EQ(RunPosutil({"print", "--all", "--from", "typea", "--to", row.to, "-"}, two),
              (Outcome{0, row.printed, ""}));
  }
  EXPECT_EQ(
      RunPosutil({"print", "--all", "--from", "typea", "-"}, kTag + "[#1 ]\n" + kTag + "#2 \n"),
      (Outcome{0, "array of 1\n[0]: 1\n\n2\n", ""}));
  EXPECT_EQ(RunPosutil({"convert", "--all", "--from", "json", "--to", "typea", "-", "-"},
                       "\n[1]\r\n\n\"x\""),
            (Outcome{0, two, ""}));
}

TEST(AllTest, JsonWithAnySpaceBetweenDocuments) {
  const struct {
    const char* in;
    const char* out;
  } rows[] = {{"", ""},
              {" \n", ""},
              {"1 2[3]\"x\"\n\n{\"a\"\n:1}", "1\n2\n[3]\n\"x\"\n{\"a\":1}\n"},
              {"[1][2]{}\"a\"\"b\"1", "[1]\n[2]\n{}\n\"a\"\n\"b\"\n1\n"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.in);
    EXPECT_EQ(RunPosutil({"print", "--all", "--from", "json", "--to", "json", "-"}, row.in),
              (Outcome{0, row.out, ""}));
  }
  EXPECT_EQ(RunPosutil({"print", "--all", "--from", "json", "-"}, "\n"), (Outcome{0, "", ""}));
  EXPECT_EQ(
      RunPosutil({"get", "--all", "--from", "json", "-", "a"}, "{\"a\":1}{\"b\":2}{\"a\":\"x\"}"),
      (Outcome{1, "1\nx\n", "posutil: <stdin>, document 2: no value at \"a\"\n"}));
}

// Whatever the sizes of the buffers.
TEST(AllTest, DocumentsBeforeAFailureAreWhole) {
  std::string strings;
  for (int i = 0; i < 9; ++i) strings += '"' + std::string(20'000, 'x') + "\"\n";
  const struct {
    const char* why;
    std::vector<std::string> arguments;
    std::string in;
    std::string out;
    std::string err;
  } rows[] = {
      {"a syntax error", {"print", "--to=json", "-"}, "1\n2\n[tru]", "1\n2\n", "<stdin>:3:2: "},
      {"long documents", {"print", "--to=json", "-"}, strings + "x", strings, "<stdin>:10:1: "},
      {"a long document that is not whole",
       {"print", "--to=text", "-"},
       "1\n[" + std::string(200'000, '1') + "e-200000,null]",
       "1\n",
       "<stdin>:2:2: warning: "},
      {"a value that the writer cannot hold",
       {"print", "--to=text", "-"},
       "[true]\n[null]",
       "[true]\n",
       "<stdin>:1:2: warning: true is read as the string \"true\"\n<stdin>:2:2: [0]: "},
      {"get", {"get", "-", "[0]"}, "[1][2]x", "1\n2\n", "<stdin>:1:7: "},
      {"paths", {"paths", "-"}, "[1][2]x", "1: [0] = 1\n2: [0] = 2\n", "<stdin>:1:7: "},
      {"no documents", {"get", "-", "[0]"}, " \n", "", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    std::vector<std::string> arguments = row.arguments;
    arguments.emplace_back("--all");
    if (!row.out.empty()) arguments.emplace_back("--from=json");
    const Outcome outcome = RunPosutil(arguments, row.in);
    EXPECT_EQ(outcome.fStatus, row.err.empty() ? 0 : 3);
    EXPECT_EQ(outcome.fOut, row.out);
    EXPECT_TRUE(outcome.fErr.starts_with(row.err)) << outcome.fErr;
  }
}

// Endless input: the reader gets each document at once and may leave.
TEST(AllTest, DocumentsFlow) {
  int in[2];
  int out[2];
  ASSERT_EQ(::pipe2(in, O_CLOEXEC), 0);
  ASSERT_EQ(::pipe2(out, O_CLOEXEC), 0);
  for (const std::string from : {"json", "typea"}) {
    const Running posutil({"print", "--all", "--from", from, "--to", "json", "-"},
                          {in[0], out[1], STDERR_FILENO});
    const std::string document = from == "json" ? "[1]" : kTag + "[#1 ]";
    char line[10] = {};
    for (int i = 0; i < 3; ++i) {
      ASSERT_EQ(::write(in[1], document.data(), document.size()),
                static_cast<ssize_t>(document.size()));
      EXPECT_EQ(::read(out[0], line, sizeof line), 4);
      EXPECT_STREQ(line, "[1]\n");
    }
    ::kill(posutil.Process(), SIGTERM);
    posutil.Wait();
  }
  for (const int each : {in[0], in[1], out[0], out[1]}) ::close(each);
}

TEST(AllTest, ErrorsNameTheirPlace) {
  EXPECT_EQ(FirstMessage(RunPosutil({"print", "--all", "--from", "typea", "--to", "text", "-"},
                                    kTag + "#1 \n" + kTag + "{\"\" #0 }")),
            "<stdin>:2:29: the document: text notation cannot hold binary data");
  const Outcome second =
      RunPosutil({"print", "--all", "--from", "typea", "-"}, kTag + "#1 \n\nx y");
  EXPECT_EQ(second.fErr.rfind("<stdin>:3:1: a document must start with", 0), 0U) << second.fErr;
  EXPECT_EQ(FirstMessage(RunPosutil({"print", "--all", "--from", "json", "-"}, "[1]\n[2]\n\n [3")),
            "<stdin>:4:4: unexpected end of input; expected ',' or ']' (at [1])");
  const Folder folder;
  const std::string file = folder.Put("a.json", "[1]\n[2]\n[null]\n");
  EXPECT_EQ(FirstMessage(RunPosutil({"print", "--all", "--to", "text", file})),
            file + ":3:2: [0]: text notation cannot hold an empty slot");
}

}  // namespace
