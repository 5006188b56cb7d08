// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "kap/KAPHostInterfaces.h"

// How the checks call the host: by declaration, with a look-up for each call, so that a host that
// lacks one procedure is still checked for the others. The client runtime is not used: it would
// hide what it makes up for.

namespace KAPProbe {

using namespace KAP_T_MT;

// The host does not do what the contract says; the text says what it does.
class Broken : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The host lacks a procedure, which the text names.
class NotOffered : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The host's callback. Null: no host.
void SetHost(KAPGetProcAddressProc getProcAddress);
void* Find(const char* interfaceName, const char* methodName, const char* procName);
// Throws NotOffered.
void* MustFind(const char* interfaceName, const char* methodName, const char* procName);

// Throws Broken with the text unless the condition holds.
inline void Expect(bool isRight, const std::string& otherwise) {
  if (!isRight) throw Broken(otherwise);
}

template <class Interface, TKAPName Method>
auto Proc() {
  constexpr auto entry = Interface::kEntries[Interface::template kSlot<Method>];
  return reinterpret_cast<typename Interface::template Proc<Method>>(
      MustFind(Interface::kName, entry.fMethodName, entry.fProcName));
}

template <class Interface, TKAPName Method, class... Args>
auto Call(const Args&... args) {
  return Proc<Interface, Method>()(args...);
}

// Owns one reference. `Release` is a method of `Interface`.
template <class Handle, class Interface, TKAPName Release>
class TOwned {
 public:
  TOwned() = default;
  explicit TOwned(Handle* handle) : fHandle(handle) {}
  TOwned(TOwned&& other) noexcept : fHandle(std::exchange(other.fHandle, nullptr)) {}
  TOwned& operator=(TOwned&& other) noexcept {
    std::swap(fHandle, other.fHandle);
    return *this;
  }
  ~TOwned() { Reset(); }

  operator Handle*() const { return fHandle; }  // NOLINT: it stands for its handle
  Handle* Get() const { return fHandle; }
  // A place for a result.
  Handle** Place() { return &fHandle; }
  void Reset() {
    constexpr auto entry = Interface::kEntries[Interface::template kSlot<Release>];
    Handle* const handle = std::exchange(fHandle, nullptr);
    if (!handle) return;
    // A destructor: a host without the procedure cannot have made the handle in good faith.
    void* const proc = Find(Interface::kName, entry.fMethodName, entry.fProcName);
    if (proc) reinterpret_cast<typename Interface::template Proc<Release>>(proc)(handle);
  }
  // Gives up the reference.
  Handle* Detach() { return std::exchange(fHandle, nullptr); }

 private:
  Handle* fHandle = nullptr;
};

using Atom = TOwned<KAPStringAtom, KAPStringInterface, "DeleteStringAtom">;
using Error = TOwned<KAPError, KAPErrorInterface, "Release">;
using Container = TOwned<KAPContainer, KAPContainerInterface, "Release">;
using Buffer = TOwned<KAPSharedBuffer, KAPSharedBuffInterface, "Release">;
using CacheID = TOwned<KAPCacheID, KAPCacheInterface, "Release">;
using CacheSet = TOwned<KAPCacheSet, KAPCacheInterface, "DeleteCacheSet">;
using CachePurge = TOwned<KAPCachePurge, KAPCacheInterface, "DeleteCachePurge">;
using Sink = TOwned<KAPDataSink, KAPFilterInterface, "Release">;
using Progress = TOwned<KAPProgress, KAPProgressInterface, "Release">;

// Throws Broken when the host does not make one.
Atom MakeAtom(const char* text);
std::string TextOf(KAPStringAtom* atom);

// Take over a result of a call. Throw Broken when it is an error, or when it is not.
void MustSucceed(KAPError* error, const std::string& call);
void MustFail(KAPError* error, const std::string& call);

}  // namespace KAPProbe
