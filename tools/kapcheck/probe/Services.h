// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include "kap/KAPHostInterfaces.h"

// How the checks call the host: by declaration, with a look-up for each call, so that a host that
// lacks one procedure is still checked for the others. The client runtime is not used: it would
// hide what it makes up for.

namespace KAPProbe {

using namespace KAP_T_MT;

// The host does not do what the sentence of the check says; the text says what it does.
class Broken : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The host lacks a procedure, which the text names.
class NotOffered : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A procedure that the check needs and is not about does not do its part. The text begins with the
// procedure, "KAPContainerInterface, NewContainer".
class Blocked : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The host's callback. Null: no host. Takes an inventory of the host's procedures.
void SetHost(KAPGetProcAddressProc getProcAddress);
// The procedure that the next check is about.
void SetSubject(const char* interfaceName, const char* methodName);
// The first procedure of the inventory that the host no longer finds; "" when there is none.
std::string MissingProcedure();

void* Find(const char* interfaceName, const char* methodName, const char* procName);
// Throws NotOffered, or Broken when the host had the procedure before.
void* MustFind(const char* interfaceName, const char* methodName, const char* procName);

// Throws Broken with the text unless the condition holds.
inline void Expect(bool isRight, const std::string& otherwise) {
  if (!isRight) throw Broken(otherwise);
}
// The same for what a check needs and is not about: throws Blocked, but Broken in a check about
// this very procedure. `otherwise` continues a sentence that begins with the procedure.
void Need(bool isRight, const char* interfaceName, const char* methodName,
          const std::string& otherwise);
template <class Interface, TKAPName Method>
void Need(bool isRight, const std::string& otherwise) {
  Need(isRight, Interface::kName, Method.fText, otherwise);
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

// "returns the error "no room"". Takes over the error.
std::string Returns(KAPError* error);

// Calls a procedure that must succeed, as with Need.
template <class Interface, TKAPName Method, class... Args>
void Do(const Args&... args) {
  KAPError* const error = Call<Interface, Method>(args...);
  if (error) Need<Interface, Method>(false, Returns(error));
}

// Calls a procedure that must return an error; throws Broken. `what` continues the name of the
// method: "Close" and "of a sink".
void MustFail(KAPError* error, const std::string& call);
template <class Interface, TKAPName Method, class... Args>
void Fails(const char* what, const Args&... args) {
  MustFail(Call<Interface, Method>(args...), std::string(Method.fText) + ' ' + what);
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

Atom MakeAtom(const char* text);
std::string TextOf(KAPStringAtom* atom);
// The text of an atom that the procedure returns.
template <class Interface, TKAPName Method, class Handle>
std::string TextFrom(const Handle& handle) {
  const Atom atom(Call<Interface, Method>(handle));
  Need<Interface, Method>(atom, "returns null");
  return TextOf(atom);
}

// Two references to an object, the second of which ends it: `count` says how often, `what` begins
// with a verb, "deletes the instance".
template <class Interface, class Owned>
void CheckLastRelease(Owned first, const int& count, const std::string& what) {
  Call<Interface, "AddRef">(first);
  Owned second(first.Get());
  first.Reset();
  if (count != 0) second.Detach();  // it is dead
  Expect(count == 0, "the first of two releases " + what);
  second.Reset();
  Expect(count == 1, "the last release " + what + ' ' + std::to_string(count) + " times");
}

// Calls the body many times, which takes and gives back 1 MiB of the host each time. Throws Broken
// when the process keeps what was given back.
constexpr std::size_t kMebibyte = 1 << 20;
void CheckNothingStays(const std::function<void()>& body);

// Runs body(0), body(1), ... on threads of their own, at the same time, and throws what one of them
// throws. Throws NotOffered when the host does not call components on several threads.
void OnThreads(int count, const std::function<void(int)>& body);

}  // namespace KAPProbe
