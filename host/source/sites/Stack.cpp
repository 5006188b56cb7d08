// SPDX-License-Identifier: MIT
#include "sites/Stack.h"

#include <cxxabi.h>
#include <execinfo.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "base/Modules.h"
#include "sites/Symbols.h"

namespace KAPHost {

namespace {

constexpr int kMostFrames = 32;
constexpr std::size_t kMostShown = 12;

// Without arguments and what stands in angle brackets: a frame of a template is longer than a line
// otherwise.
std::string Shortened(const std::string& function) {
  std::string text;
  int depth = 0;
  for (const char letter : function) {
    if (letter == '(' && depth == 0 && !text.empty() && !text.ends_with("::")) break;
    if (letter == '<' || letter == '(') ++depth;
    if (depth == 0) text += letter;
    if ((letter == '>' || letter == ')') && depth != 0) --depth;
  }
  if (text.starts_with("::")) text.erase(0, 2);  // of an anonymous namespace
  if (const std::size_t gap = text.find("::::"); gap != std::string::npos) text.erase(gap, 2);
  const std::size_t space = text.find_last_of(' ');  // after the type of the result
  return space == std::string::npos || text.find("operator") != std::string::npos
             ? text
             : text.substr(space + 1);
}

std::string Demangled(const std::string& symbol) {
  int status = 0;
  char* const name = abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status);
  std::string text = status == 0 && name ? Shortened(name) : symbol;
  std::free(name);
  return text;
}

struct Frame {
  std::uintptr_t fAddress;
  Module fModule;
};

// A return address may stand past the end of its function or line.
Frame FrameAt(const void* returnAddress, unsigned long time) {
  const auto address = reinterpret_cast<std::uintptr_t>(returnAddress) - 1;
  return {address, ModuleAt(reinterpret_cast<const void*>(address), time)};
}

std::string Line(const Frame& frame) {
  const auto& [address, module] = frame;
  const Symbol symbol = FindSymbol(module.fPath, module.fBase, address);
  if (symbol.fFunction.empty()) {
    std::array<char, 24> offset{};
    std::snprintf(offset.data(), offset.size(), "+0x%lx", address - module.fBase);
    return module.fName + offset.data();
  }
  std::string line = Demangled(symbol.fFunction);
  if (symbol.fFile.empty()) return line;
  const std::string file = symbol.fFile.substr(symbol.fFile.rfind('/') + 1);
  return line + " (" + file + ':' + std::to_string(symbol.fLine) + ')';
}

}  // namespace

std::shared_ptr<const Stack> CaptureStack(const void* returnAddress) noexcept {
  try {
    std::array<void*, kMostFrames> frames{};
    const int count = ::backtrace(frames.data(), kMostFrames);
    const auto end = frames.begin() + std::max(count, 0);
    auto begin = std::find(frames.begin(), end, returnAddress);
    if (begin == end) begin = frames.begin();
    auto stack = std::make_shared<Stack>();
    stack->fTime = ModulesTime();
    stack->fFrames.assign(begin, end);
    return stack;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

// Frames of the host and of the client runtime say nothing: each component has a copy of the
// runtime, and calls the host through it alone.
std::vector<std::string> DescribeStack(const Stack& stack) {
  std::vector<std::string> lines;
  for (const void* frame : stack.fFrames) {
    if (lines.size() == kMostShown) break;
    std::string line = Line(FrameAt(frame, stack.fTime));
    if (line.starts_with("KAP_T_MT::") || line.starts_with("KAPHost::")) continue;
    lines.push_back(std::move(line));
    if (lines.back() == "main" || lines.back().starts_with("main (")) break;
  }
  return lines;
}

}  // namespace KAPHost
