// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "kaphost/KAPHost.h"

using Log = std::vector<std::pair<std::string, std::string>>;

// Stands between a host and its components and records their requests: look-ups as (interface,
// method), calls as (method, the strings among its first arguments, separated by slashes). The
// test's own calls are included. One tap at a time, one thread at a time.
class HostTap {
 public:
  explicit HostTap(KAPHost::Host& host) {
    fGetProc = host.GetProcAddress();
    KAP_T_MT::KAPHostInterfaceSet::ForEach([&]<class Interface>() { Tap<Interface>(host); });
    Clear();
  }

  // The callback for components.
  static void* GetProc(const char* interfaceName, const char* methodName, const char* procName) {
    Note(fLookUps, interfaceName, methodName);
    return fGetProc(interfaceName, methodName, procName);
  }

  static void Clear() {
    fLookUps.clear();
    fCalls.clear();
  }
  static Log TakeLookUps() { return std::exchange(fLookUps, {}); }
  static Log TakeCalls() { return std::exchange(fCalls, {}); }
  // The strings of the calls of one method; the calls stay in the log.
  static std::vector<std::string> TextsOf(const std::string& method) {
    std::vector<std::string> texts;
    for (const auto& [name, text] : fCalls) {
      if (name == method) texts.push_back(text);
    }
    return texts;
  }

  // After this call, a look-up or a call of the host ends the process with status 7.
  static void Forbid() { fForbidden = true; }

 private:
  static void Note(Log& log, const char* first, std::string second) {
    if (fForbidden) _exit(7);
    log.emplace_back(first, std::move(second));
  }

  template <class Interface, std::size_t Slot, class Proc>
  struct TTap;
  template <class Interface, std::size_t Slot, class Result, class... Args>
  struct TTap<Interface, Slot, Result (*)(Args...)> {
    static constexpr auto kEntry = Interface::kEntries[Slot];
    static inline Result (*fProc)(Args...) = nullptr;

    static Result Call(Args... args) {
      Note(fCalls, kEntry.fMethodName, TextOf(args...));
      return fProc(args...);
    }
    static void Install(KAPHost::Host& host) {
      void* proc = host.Find(Interface::kName, kEntry.fMethodName, kEntry.fProcName);
      fProc = reinterpret_cast<decltype(fProc)>(proc);
      host.Register(Interface::kName, kEntry.fMethodName, kEntry.fProcName,
                    reinterpret_cast<void*>(&Call));
    }
  };

  template <class... Args>
  static std::string TextOf(const char* text, Args... rest) {
    const std::string after = TextOf(rest...);
    return (text ? text : "(null)") + (after.empty() ? "" : "/" + after);
  }
  static std::string TextOf(KAPStringAtom* atom) {
    using Strings = KAP_T_MT::KAPStringInterface;
    constexpr std::size_t slot = Strings::kSlot<"GetCString">;
    return TextOf(TTap<Strings, slot, Strings::Proc<"GetCString">>::fProc(atom));
  }
  template <class... Args>
  static std::string TextOf(Args...) {
    return "";
  }

  template <class Interface>
  static void Tap(KAPHost::Host& host) {
    [&]<std::size_t... Slots>(std::index_sequence<Slots...>) {
      (TTap<Interface, Slots, typename Interface::template ProcAt<Slots>>::Install(host), ...);
    }
    (std::make_index_sequence<Interface::kCount>());
  }

  static inline KAPGetProcAddressProc fGetProc = nullptr;
  static inline Log fLookUps;
  static inline Log fCalls;
  static inline bool fForbidden = false;
};
