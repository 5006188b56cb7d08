// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace KAPHost {

// Which code is where in memory: the components that were loaded, those unloaded since included,
// whose addresses are still in stacks. Thread-safe; lives as long as the process.

// The addresses that a shared library takes up.
struct Span {
  std::uintptr_t fBegin = ~std::uintptr_t{0};
  std::uintptr_t fEnd = 0;

  template <class Address>
  bool Contains(Address address) const noexcept {
    const auto value = reinterpret_cast<std::uintptr_t>(address);
    return fBegin <= value && value < fEnd;
  }
};

// Of a handle of dlopen; empty when the loader does not know it.
Span SpanOf(void* handle) noexcept;

// Notes a component that was loaded, and one that is about to be unloaded. Throws std::bad_alloc.
void NoteLoaded(const std::string& component, void* handle);
void NoteUnloaded(const Span& span) noexcept;

// Counts the changes. A stack remembers it, because an address may belong to one library before and
// to another one after a change.
unsigned long ModulesTime() noexcept;

struct Module {
  std::string fPath;         // absolute where the system knows it
  std::uintptr_t fBase = 0;  // where it was loaded
  std::string fName;         // of the component, else of the file
};
Module ModuleAt(const void* address, unsigned long time);

// The name of the component, else the file, whose code is at an address. Lives as long as the
// process. "?" when out of memory.
const char* NameOfCodeAt(const void* address) noexcept;

}  // namespace KAPHost
