// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace KAPHost {

class FaultRules;

// The registry of procedures by interface, method and procedure name. Thread-safe; look-ups do not
// wait for each other.
class Binder {
 public:
  explicit Binder(const FaultRules& faultRules) : fFaultRules(faultRules) {}

  // Returns the procedure to hand out for one that is registered.
  using Wrap = std::function<void*(const char* interfaceName, const char* methodName,
                                   const char* procName, void* proc)>;
  // Applies to what is registered from now on. Not to be called while the binder is in use.
  void SetWrap(Wrap wrap) { fWrap = std::move(wrap); }

  Binder(const Binder&) = delete;
  Binder& operator=(const Binder&) = delete;

  // Replaces a procedure under the same names. False when a name or the procedure is null. Throws
  // std::bad_alloc.
  bool Register(const char* interfaceName, const char* methodName, const char* procName,
                void* proc);
  // The same with fault injection, noexcept for use across the boundary: false when out of memory.
  bool RegisterForComponent(const char* interfaceName, const char* methodName, const char* procName,
                            void* proc) noexcept;
  // When the interface has any procedures, removes them and increments the unregister counter.
  void Unregister(const char* interfaceName) noexcept;
  // Removes the procedures for which matches(procedure) is true. Returns the names of their
  // interfaces, for each of which the unregister counter grows by one. Throws std::bad_alloc.
  std::vector<std::string> UnregisterIf(const std::function<bool(void* proc)>& matches);
  // Null when there is no such procedure, when it is hidden, and when a name is null.
  void* Find(const char* interfaceName, const char* methodName,
             const char* procName) const noexcept;

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
  struct Registered {
    void* fProc;
    void* fHandedOut;  // the procedure, or what wraps it
  };
  using Procs =
      std::unordered_map<std::pair<std::string, std::string>, Registered, NamesHash, NamesEqual>;

  const FaultRules& fFaultRules;
  Wrap fWrap;
  mutable std::shared_mutex fMutex;
  std::unordered_map<std::string, Procs, TextHash, std::equal_to<>> fInterfaces;
};

}  // namespace KAPHost
