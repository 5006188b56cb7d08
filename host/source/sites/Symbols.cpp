// SPDX-License-Identifier: MIT
#include "sites/Symbols.h"

#ifdef KAP_HOST_SYMBOLS
#include <elfutils/libdwfl.h>

#include <map>
#include <memory>
#include <mutex>
#include <utility>
#else
#include <dlfcn.h>
#include <link.h>
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
//
// No lock of the loader is taken under the mutex: a thread that unloads a component holds that one
// and may report misuse.
Symbol FindSymbol(const std::string& path, std::uintptr_t base, std::uintptr_t address) {
  static auto* const mutex = new std::mutex;
  const std::lock_guard lock(*mutex);
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

// Another library may be where the file was. The program stays, under a name that need not be its
// path.
Symbol FindSymbol(const std::string& path, std::uintptr_t base, std::uintptr_t address) {
  Dl_info info{};
  link_map* map = nullptr;
  const int found = ::dladdr1(reinterpret_cast<void*>(address), &info,
                              reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP);
  if (found == 0 || !info.dli_sname || map->l_addr != base) return {};
  if (map->l_prev && path != info.dli_fname) return {};
  return {info.dli_sname, "", 0};
}

#endif

}  // namespace KAPHost
