// SPDX-License-Identifier: MIT
#include "base/Modules.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <mutex>
#include <new>
#include <set>
#include <shared_mutex>
#include <vector>

namespace KAPHost {

namespace {

struct Record {
  Span fSpan;
  Module fModule;
  unsigned long fLoaded;
  unsigned long fUnloaded;  // kLoaded while it is
};

constexpr unsigned long kLoaded = ~0ul;

struct Records {
  std::shared_mutex fMutex;
  std::vector<Record> fAll;
  std::set<std::string, std::less<>> fNames;  // never shrinks: calls keep the texts
  std::atomic<unsigned long> fTime = 0;       // read without the lock
};

// Never destroyed: static objects of components may call the host until the very end.
Records& TheRecords() {
  static auto* const records = new Records;
  return *records;
}

std::string FileName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string ProgramPath() {
  char path[PATH_MAX];
  const ssize_t size = ::readlink("/proc/self/exe", path, sizeof path);
  return size > 0 ? std::string(path, static_cast<std::size_t>(size)) : "program";
}

// The loader knows the program by the name under which it was started, which need not be a path.
Module LoadedAt(const void* address) {
  Dl_info info{};
  link_map* map = nullptr;
  if (::dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || !map) {
    return {"", 0, "?"};
  }
  const bool isProgram = !map->l_prev;
  const std::string path = isProgram ? ProgramPath() : info.dli_fname;
  return {path, map->l_addr, FileName(path)};
}

const Record* Find(const Records& records, const void* address, unsigned long time) {
  const auto found = std::find_if(records.fAll.rbegin(), records.fAll.rend(), [&](const auto& one) {
    return one.fSpan.Contains(address) && one.fLoaded <= time && time < one.fUnloaded;
  });
  return found == records.fAll.rend() ? nullptr : &*found;
}

}  // namespace

Span SpanOf(void* handle) noexcept {
  struct Search {
    const link_map* fLibrary = nullptr;
    Span fSpan;
  } search;
  link_map* library = nullptr;
  if (dlinfo(handle, RTLD_DI_LINKMAP, &library) != 0) return {};
  search.fLibrary = library;
  const auto visit = [](dl_phdr_info* info, std::size_t, void* data) {
    auto& [wanted, span] = *static_cast<Search*>(data);
    if (info->dlpi_addr != wanted->l_addr) return 0;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
      const auto& segment = info->dlpi_phdr[i];
      if (segment.p_type != PT_LOAD) continue;
      const std::uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
      span.fBegin = std::min(span.fBegin, begin);
      span.fEnd = std::max(span.fEnd, begin + segment.p_memsz);
    }
    return 1;
  };
  dl_iterate_phdr(visit, &search);
  return search.fSpan;
}

void NoteLoaded(const std::string& component, void* handle) {
  link_map* library = nullptr;
  const Span span = SpanOf(handle);
  if (dlinfo(handle, RTLD_DI_LINKMAP, &library) != 0) return;
  Records& records = TheRecords();
  const std::lock_guard lock(records.fMutex);
  ++records.fTime;
  const Record made{span, {library->l_name, library->l_addr, component}, records.fTime, kLoaded};
  // Loading the same file to the same place over and over needs no further record.
  for (Record& record : records.fAll) {
    const bool isSame = record.fSpan.fBegin == span.fBegin && record.fSpan.fEnd == span.fEnd &&
                        record.fModule.fPath == made.fModule.fPath &&
                        record.fModule.fName == component;
    if (isSame) {
      record.fUnloaded = kLoaded;
      return;
    }
  }
  records.fAll.push_back(made);
}

void NoteUnloaded(const Span& span) noexcept {
  Records& records = TheRecords();
  const std::lock_guard lock(records.fMutex);
  for (Record& record : records.fAll) {
    if (record.fSpan.fBegin == span.fBegin && record.fUnloaded == kLoaded) {
      record.fUnloaded = ++records.fTime;
    }
  }
}

unsigned long ModulesTime() noexcept { return TheRecords().fTime; }

Module ModuleAt(const void* address, unsigned long time) {
  Records& records = TheRecords();
  {
    const std::shared_lock lock(records.fMutex);
    if (const Record* record = Find(records, address, time)) return record->fModule;
  }
  return LoadedAt(address);
}

const char* NameOfCodeAt(const void* address) noexcept {
  try {
    const Module module = ModuleAt(address, ModulesTime());
    Records& records = TheRecords();
    {
      const std::shared_lock lock(records.fMutex);
      const auto known = records.fNames.find(module.fName);
      if (known != records.fNames.end()) return known->c_str();
    }
    const std::lock_guard lock(records.fMutex);
    return records.fNames.insert(module.fName).first->c_str();
  } catch (const std::bad_alloc&) {
    return "?";
  }
}

}  // namespace KAPHost
