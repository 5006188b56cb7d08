// SPDX-License-Identifier: MIT
#include "commands/documents/LayoutOption.h"

#include <charconv>
#include <optional>

#include "base/Failure.h"

namespace PosUtil {

namespace {

constexpr std::size_t kWidest = 32;

std::optional<Indent> IndentOf(const std::string& text) {
  if (text == "tab") return Indent{'\t', 1};
  std::size_t count = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, count);
  if (result.ec != std::errc() || result.ptr != end || count > kWidest) return std::nullopt;
  return Indent{' ', count};
}

}  // namespace

void LayoutOption::Declare(Options& options) {
  const Option compact =
      options.Flag("--compact,-c", fIsCompact, "Writes each document on one line");
  options
      .Text("--indent", fIndent,
            "Spaces for each level, 0 to " + std::to_string(kWidest) + ", or a tab; default: 2")
      .Check([](const std::string& text) {
        return IndentOf(text)
                   ? ""
                   : "neither a number from 0 to " + std::to_string(kWidest) + " nor tab";
      })
      .NotWith(compact)
      .ShownAs("N|tab");
}

void LayoutOption::Apply(const Writer& writer, bool onOneLine, WriteOptions& options) const {
  const bool hasIndent = !fIndent.empty();
  if (fIsCompact ? writer.kLayouts != Layouts::kAll
                 : hasIndent && writer.kLayouts == Layouts::kFixed) {
    throw Failure(std::string(fIsCompact ? "--compact" : "--indent") + ": the format " +
                      writer.kName + " has no such layout",
                  kExitUsage);
  }
  options.fOnOneLine = fIsCompact || (onOneLine && !hasIndent);
  if (hasIndent) options.fIndent = IndentOf(fIndent).value();
}

}  // namespace PosUtil
