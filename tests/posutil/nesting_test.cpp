// SPDX-License-Identifier: MIT
// Documents with a million levels: a result or an error, but no crash.

#include "Posutil.h"

namespace {

constexpr std::size_t kMillion = 1000000;

std::string Repeated(const std::string& text, std::size_t count) {
  std::string out;
  for (std::size_t i = 0; i < count; ++i) out += text;
  return out;
}

TEST(NestingTest, JsonThereAndBack) {
  const std::string document =
      Repeated("[{\"a\":", kMillion / 2) + "[null]" + Repeated("}]", kMillion / 2);
  const Outcome once = RunPosutil({"print", "--from", "json", "--to", "json", "-"}, document);
  EXPECT_EQ(once.fStatus, 0) << once.fErr;
  EXPECT_LT(once.fOut.size(), 2 * document.size());  // not mostly indentation
  EXPECT_TRUE(RunPosutil({"print", "--from", "json", "--to", "json", "-"}, once.fOut) == once);
}

TEST(NestingTest, OtherFormats) {
  const std::string document = Repeated("[", kMillion / 10) + Repeated("]", kMillion / 10);
  for (const std::string format : {"tree", "text"}) {
    const Outcome outcome = RunPosutil({"print", "--from", "json", "--to", format, "-"}, document);
    EXPECT_EQ(outcome.fStatus, 0) << outcome.fErr;
  }
}

TEST(NestingTest, UnclosedJsonIsASyntaxError) {
  const Outcome outcome =
      RunPosutil({"print", "--from", "json", "-"}, Repeated("[{\"a\":", kMillion));
  EXPECT_EQ(outcome.fStatus, 3);
  EXPECT_EQ(outcome.fErr.rfind("<stdin>:1:6000001: ", 0), 0U) << outcome.fErr;
  EXPECT_LT(outcome.fErr.size(), 1000U);  // the path is a million segments long
}

TEST(NestingTest, TextIsLimitedByTheLibrary) {
  const Outcome outcome = RunPosutil({"print", "--from", "text", "-"}, Repeated("[", kMillion));
  EXPECT_EQ(outcome.fStatus, 3);
  EXPECT_EQ(outcome.fOut, "");
  EXPECT_EQ(outcome.fErr.rfind("posutil: <stdin>: the library reports: ", 0), 0U) << outcome.fErr;
  EXPECT_NE(outcome.fErr.find("deep"), std::string::npos) << outcome.fErr;
}

}  // namespace
