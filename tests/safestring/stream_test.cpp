// SPDX-License-Identifier: MIT

// Functions that search a text, and the functions on standard input and output.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "SafeStringAPIs.h"

namespace KAP_T_MT {
namespace {

TEST(SafeText, LengthAndSearch) {
  const char open[] = {'a', 'b', 'a'};  // no terminator: the sanitizer sees a read too far
  EXPECT_EQ(strnlen_safe(open, 3), 3u);
  EXPECT_EQ(strnlen_safe("ab", SIZE_MAX), 2u);
  EXPECT_EQ(strnlen_safe("ab", 0), 0u);
  EXPECT_EQ(strnlen_safe(nullptr, 3), 0u);

  EXPECT_EQ(strchr_safe(open, 3, 'a'), open);
  EXPECT_EQ(strchr_safe(open, 3, 0x100 + 'b'), open + 1) << "compared as a byte";
  EXPECT_EQ(strchr_safe(open, 3, 0), nullptr);
  EXPECT_EQ(strchr_safe(open, 1, 'b'), nullptr);
  const char text[] = "a\xE9\0b";
  EXPECT_EQ(strchr_safe(text, sizeof text, '\xE9'), text + 1) << "a negative char";
  EXPECT_EQ(strchr_safe(text, sizeof text, 'b'), nullptr) << "after the terminator";
  EXPECT_EQ(strchr_safe(text, 3, 0), text + 2);
  EXPECT_EQ(strchr_safe(text, 2, 0), nullptr);
  EXPECT_EQ(strchr_safe(text, 0, 'a'), nullptr);
  EXPECT_EQ(strchr_safe(nullptr, 1, 'a'), nullptr);
}

std::vector<std::string> Tokens(std::string text, std::size_t size, const char* delimiters) {
  std::vector<std::string> tokens;
  char* context = nullptr;
  char* token = strtok_safe(text.data(), size, delimiters, &context);
  for (; token; token = strtok_safe(nullptr, size, delimiters, &context)) {
    tokens.emplace_back(token);
  }
  EXPECT_EQ(strtok_safe(nullptr, size, delimiters, &context), nullptr) << "stays at the end";
  return tokens;
}

TEST(SafeText, Tokens) {
  using Texts = std::vector<std::string>;
  EXPECT_EQ(Tokens("  a,b ", 7, " ,"), (Texts{"a", "b"}));
  EXPECT_EQ(Tokens("ab", 3, " ,"), (Texts{"ab"})) << "ended by the terminator";
  EXPECT_EQ(Tokens(" , ", 4, " ,"), Texts{});
  EXPECT_EQ(Tokens("a b", 4, ""), (Texts{"a b"}));
  EXPECT_EQ(Tokens("ab cd", 5, " "), (Texts{"ab", "c"})) << "the byte at size - 1 is lost";
}

TEST(SafeText, TokenArguments) {
  char text[] = "a;b c";
  char* context = nullptr;
  EXPECT_EQ(strtok_safe(nullptr, 6, " ", &context), nullptr);
  EXPECT_EQ(strtok_safe(text, 0, " ", &context), nullptr);
  EXPECT_STREQ(text, "a;b c");
  EXPECT_EQ(strtok_safe(text, 6, " ", nullptr), nullptr);
  EXPECT_EQ(strtok_safe(text, 5, nullptr, &context), nullptr);
  EXPECT_STREQ(text, "a;b ") << "cut before the arguments are checked";
  EXPECT_STREQ(strtok_safe(text, 5, ";", &context), "a");
  EXPECT_STREQ(strtok_safe(nullptr, 5, " ", &context), "b") << "other delimiters at a later call";
  EXPECT_EQ(context, text + 4);
}

// Standard input reads `text`, until the end of the scope.
class InputText {
 public:
  explicit InputText(const std::string& text) : fSaved(dup(STDIN_FILENO)) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    EXPECT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(ends[1]);
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
    std::clearerr(stdin);
  }
  InputText(const InputText&) = delete;
  InputText& operator=(const InputText&) = delete;
  ~InputText() {
    while (std::getchar() != EOF) continue;
    dup2(fSaved, STDIN_FILENO);
    close(fSaved);
    std::clearerr(stdin);
  }

 private:
  int fSaved;
};

TEST(SafeInput, Lines) {
  const InputText input("abc\nabcd\nabcde\n\nab");
  const struct {
    const char* why;
    std::string image;  // the 4 bytes of the buffer and one more
  } rows[] = {{"fits exactly", {"abc\0#", 5}},
              {"as long as the size: discarded", {"\0bcd#", 5}},
              {"longer: read to its end", {"\0bcd#", 5}},
              {"empty line", {"\0bcd#", 5}},
              {"ended by the end of input", {"ab\0d#", 5}},
              {"nothing left", {"\0b\0d#", 5}}};
  std::string buffer = "#####";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    EXPECT_EQ(gets_safe(buffer.data(), 4), buffer.data());
    EXPECT_EQ(buffer, row.image);
  }
}

TEST(SafeInput, Arguments) {
  const InputText input("a\n\n");
  char buffer[] = "##";
  EXPECT_EQ(gets_safe(nullptr, 2), nullptr);
  EXPECT_EQ(gets_safe(buffer, 0), nullptr);
  EXPECT_EQ(std::string(buffer, 2), std::string("\0#", 2));
  EXPECT_STREQ(gets_safe(buffer, 2), "a") << "a failed call reads nothing";
  EXPECT_STREQ(gets_safe(buffer, 1), "");
}

// What `print` writes. On a stream of its own, because wide and narrow output do not mix on one.
template <class Print>
std::string Printed(Print print) {
  FILE* const saved = stdout;
  stdout = std::tmpfile();
  print();
  std::fflush(stdout);
  char bytes[32];
  const ssize_t count = pread(fileno(stdout), bytes, sizeof bytes, 0);
  std::fclose(stdout);
  stdout = saved;
  return {bytes, static_cast<std::size_t>(count)};
}

TEST(SafeOutput, Prints) {
  int result = 0;
  EXPECT_EQ(Printed([&] { result = printf_safe("%s %d", "ab", 12); }), "ab 12");
  EXPECT_EQ(result, 5);
  EXPECT_EQ(Printed([&] { result = wprintf_safe(L"%ls %d", L"ab", 123); }), "ab 123");
  EXPECT_EQ(result, 6);
  EXPECT_EQ(printf_safe(nullptr), -1);
  EXPECT_EQ(wprintf_safe(nullptr), -1);
}

}  // namespace
}  // namespace KAP_T_MT
