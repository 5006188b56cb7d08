// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace KAPHost {

// What debug information and symbol tables say about an address. Empty or 0 for unknown.
struct Symbol {
  std::string fFunction;  // as in the symbol table
  std::string fFile;
  int fLine = 0;
};

// `base` is where the file at `path` was loaded; it may be unloaded since.
Symbol FindSymbol(const std::string& path, std::uintptr_t base, std::uintptr_t address);

}  // namespace KAPHost
