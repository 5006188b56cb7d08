#pragma once

#include <memory>
#include <string>
#include <utility>

namespace KAPHost {

// A loaded shared library. Components of the same file share one, as they share its static objects.
// Threads: different libraries may be used on different threads.
class Library {
 public:
  // Opens `path`, searched for as by dlopen. `component` is the name in reports. Throws LoadError.
  static std::shared_ptr<Library> Open(const std::string& path, const std::string& component);

  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  // Unloads the library. When procedures of it are still registered, unregisters them, reports each
  // interface and leaves the library in memory: a caller may keep the address of a procedure, and
  // nothing else can stand at that address.
  ~Library();

  // Null when there is no such symbol; dlerror says why.
  void* Find(const std::string& symbol) const;

  bool fIsInitialised = false;

 private:
  struct Close {
    void operator()(void* handle) const noexcept;
  };
  using Handle = std::unique_ptr<void, Close>;

  Library(Handle handle, const std::string& path, const std::string& component)
      : fHandle(std::move(handle)), fPath(path), fComponent(component) {}

  bool UnregisterProcs() const noexcept;

  Handle fHandle;
  const std::string fPath;
  const std::string fComponent;
};

}  // namespace KAPHost
