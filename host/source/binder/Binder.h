#pragma once

#include <functional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace KAPHost {

// The registry of procedures by interface, method and procedure name. Thread-safe; look-ups do not
// wait for each other.
class Binder {
 public:
  // Replaces a procedure under the same names. Throws std::bad_alloc.
  void Register(std::string_view interfaceName, std::string_view methodName,
                std::string_view procName, void* proc);
  // When the interface had any procedures, they are gone and the unregister counter has grown by
  // one.
  void Unregister(std::string_view interfaceName) noexcept;
  void* Find(std::string_view interfaceName, std::string_view methodName,
             std::string_view procName) const noexcept;

  // The counter of the process: it outlives every binder and never goes back.
  static unsigned long* UnregisterCountAddr() noexcept;

 private:
  using Names = std::pair<std::string_view, std::string_view>;

  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
      return std::hash<std::string_view>()(text);
    }
  };
  struct NamesHash {
    using is_transparent = void;
    std::size_t operator()(const Names& names) const noexcept {
      return TextHash()(names.first) * 31 + TextHash()(names.second);
    }
  };
  struct NamesEqual {
    using is_transparent = void;
    bool operator()(const Names& a, const Names& b) const noexcept { return a == b; }
  };
  using Procs =
      std::unordered_map<std::pair<std::string, std::string>, void*, NamesHash, NamesEqual>;

  mutable std::shared_mutex fMutex;
  std::unordered_map<std::string, Procs, TextHash, std::equal_to<>> fInterfaces;
};

}  // namespace KAPHost
