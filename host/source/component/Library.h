// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <utility>

namespace KAPHost {

// A loaded shared library. Components of the same file share one, as they share its static objects.
// Threads: different libraries may be used on different threads, one library on one at a time.
class Library {
 public:
  // Opens `path`, searched for as by dlopen. `component` is the name in reports. Throws LoadError;
  // also for an empty path, which dlopen takes for the program itself.
  static std::shared_ptr<Library> Open(const std::string& path, const std::string& component);

  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  // Unloads the library. When procedures of it are still registered, client purges included,
  // unregisters them, reports each interface and leaves the library in memory: a caller may keep
  // the address of a procedure, and no other code can be loaded at that address. It also stays
  // while a container lives whose delete procedure it has; the leak report names the container.
  ~Library();

  // Null when there is no such symbol; dlerror says why.
  void* Find(const std::string& symbol) const;

  // What the last entry point did that a Component called.
  enum class State {
    kIdle,    // nothing was called, or the library was terminated
    kFailed,  // the initialisation failed; termination is due
    kInitialised,
  };
  State fState = State::kIdle;
  // The number of Components that have initialised the library, failures included. The last one
  // has the same number and is the one that terminates it.
  unsigned long fTurn = 0;

 private:
  struct Close {
    void operator()(void* handle) const noexcept;
  };
  using Handle = std::unique_ptr<void, Close>;

  Library(Handle handle, const std::string& path, const std::string& component)
      : fHandle(std::move(handle)), fPath(path), fComponent(component) {}

  // True when the library must stay in memory.
  bool UnregisterProcs() const noexcept;

  Handle fHandle;
  const std::string fPath;
  const std::string fComponent;
};

}  // namespace KAPHost
