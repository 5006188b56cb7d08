// SPDX-License-Identifier: MIT
#include "sites/Symbols.h"

#ifdef KAP_HOST_SYMBOLS
#include <elfutils/libdwfl.h>

#include <map>
#include <memory>
#include <utility>
#else
#include <dlfcn.h>
#endif

namespace KAPHost {

#ifdef KAP_HOST_SYMBOLS

namespace {

struct EndDwfl {
  void operator()(Dwfl* dwfl) const noexcept { dwfl_end(dwfl); }
};
using DwflOwner = std::unique_ptr<Dwfl, EndDwfl>;

// One for each file and place: a file that was unloaded and another one now there do not mix.
DwflOwner Open(const std::string& path, std::uintptr_t base) {
  static char* debugPath = nullptr;  // the default places
  static const Dwfl_Callbacks kCallbacks = {.find_elf = &dwfl_linux_proc_find_elf,
                                            .find_debuginfo = &dwfl_standard_find_debuginfo,
                                            .section_address = nullptr,
                                            .debuginfo_path = &debugPath};
  DwflOwner dwfl(dwfl_begin(&kCallbacks));
  if (!dwfl) return nullptr;
  dwfl_report_begin(dwfl.get());
  const bool isReported = dwfl_report_elf(dwfl.get(), "", path.c_str(), -1, base, true);
  dwfl_report_end(dwfl.get(), nullptr, nullptr);
  return isReported ? std::move(dwfl) : nullptr;
}

}  // namespace

// The files stay open until the process ends, because reading debug information takes a second.
Symbol FindSymbol(const std::string& path, std::uintptr_t base, std::uintptr_t address) {
  static auto* const files = new std::map<std::pair<std::string, std::uintptr_t>, DwflOwner>;
  const auto [file, isNew] = files->try_emplace({path, base});
  if (isNew) file->second = Open(path, base);
  Dwfl_Module* const module = file->second ? dwfl_addrmodule(file->second.get(), address) : nullptr;
  if (!module) return {};
  Symbol symbol;
  if (const char* name = dwfl_module_addrname(module, address)) symbol.fFunction = name;
  if (Dwfl_Line* const line = dwfl_module_getsrc(module, address)) {
    const char* const name = dwfl_lineinfo(line, nullptr, &symbol.fLine, nullptr, nullptr, nullptr);
    if (name) symbol.fFile = name;
  }
  return symbol;
}

#else

Symbol FindSymbol(const std::string&, std::uintptr_t, std::uintptr_t address) {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<void*>(address), &info) == 0 || !info.dli_sname) return {};
  return {info.dli_sname, "", 0};
}

#endif

}  // namespace KAPHost
