// SPDX-License-Identifier: MIT
#include "component/Library.h"

#include <dlfcn.h>

#include <map>
#include <mutex>
#include <new>
#include <utility>

#include "base/Current.h"
#include "base/Modules.h"
#include "base/Reports.h"
#include "binder/Binder.h"
#include "caches/ClientPurges.h"
#include "containers/ContainerTypes.h"
#include "kaphost/Component.h"
#include "trace/Watcher.h"

namespace KAPHost {

namespace {

std::recursive_mutex gLibrariesMutex;  // Open destroys a library that it cannot return

// The live libraries by handle: dlopen returns the same handle for the same file.
std::map<void*, std::weak_ptr<Library>>& Libraries() {
  static std::map<void*, std::weak_ptr<Library>> libraries;
  return libraries;
}

std::string LastError() {
  const char* text = dlerror();
  return text ? text : "unknown reason";
}

// Whether a container or an instance lives that a procedure of the library deletes.
bool DeletesContainers(const Span& span) noexcept {
  bool deletes = false;
  gContainerTypes.ForEach([&](const ContainerType& type) {
    deletes = deletes || (span.Contains(type.fDelete) && ContainerTypes::IsUsed(type));
  });
  return deletes;
}

}  // namespace

void Library::Close::operator()(void* handle) const noexcept { dlclose(handle); }

std::shared_ptr<Library> Library::Open(const std::string& path, const std::string& component) {
  if (path.empty()) throw LoadError("cannot load \"\": the path is empty");
  Handle handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!handle) throw LoadError("cannot load \"" + path + "\": " + LastError());
  const std::lock_guard lock(gLibrariesMutex);
  std::weak_ptr<Library>& known = Libraries()[handle.get()];
  if (auto library = known.lock()) return library;
  std::unique_ptr<Library> made(new Library(std::move(handle), path, component));
  std::shared_ptr<Library> library(std::move(made));
  NoteLoaded(component, library->fHandle.get());
  known = library;
  return library;
}

Library::~Library() {
  {
    const std::lock_guard lock(gLibrariesMutex);
    const auto known = Libraries().find(fHandle.get());
    if (known != Libraries().end() && known->second.expired()) Libraries().erase(known);
  }
  if (UnregisterProcs()) {
    static_cast<void>(fHandle.release());
  } else {
    NoteUnloaded(SpanOf(fHandle.get()));
  }
}

void* Library::Find(const std::string& symbol) const {
  return dlsym(fHandle.get(), symbol.c_str());
}

// The addresses are found beforehand: the dynamic loader has a lock of its own, under which a
// library's constructors may look procedures up. A library that was never initialised has
// registered nothing, and the program's own file, which may have entry points too, holds the host's
// procedures.
bool Library::UnregisterProcs() const noexcept {
  const Span span = SpanOf(fHandle.get());
  if (fTurn == 0 || span.Contains(&Library::Open)) return false;
  const bool deletesContainers = DeletesContainers(span);
  Binder* const binder = Current<Binder>();
  if (!binder) return deletesContainers;
  const auto report = [&](const std::string& what) {
    const std::string message =
        "KAP host: " + fComponent + " (\"" + fPath + "\") was unloaded while " + what;
    Report(message.c_str());
  };
  if (Watcher* const watcher = Current<Watcher>()) watcher->NoteUnloaded(span);
  try {
    const std::size_t purges = Current<ClientPurges>()->RemoveIf(
        [&](KAP_T_MT::KAPClientPurgeProc proc) { return span.Contains(proc); });
    const auto interfaces =
        binder->UnregisterIf([&](const void* proc) { return span.Contains(proc); });
    if (purges != 0) report("a client purge was registered");
    for (const std::string& name : interfaces) report("\"" + name + "\" was registered");
    return deletesContainers || purges != 0 || !interfaces.empty();
  } catch (const std::bad_alloc&) {
    return true;  // there may have been some
  }
}

}  // namespace KAPHost
