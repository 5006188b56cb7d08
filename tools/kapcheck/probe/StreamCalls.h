// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "probe/Services.h"

// Calls of a stream's methods, which are looked up through its container as any client does.

namespace KAPProbe {

// Calls a method of the stream and returns its result.
template <class Interface, TKAPName Method, class... Args>
KAPError* CallStream(KAPContainer* stream, const Args&... args) {
  constexpr auto entry = Interface::kEntries[Interface::template kSlot<Method>];
  void* proc = nullptr;
  Do<KAPContainerInterface, "GetMethod">(&proc, stream, MakeAtom(entry.fMethodName),
                                         MakeAtom(entry.fProcName), 0);
  Need<KAPContainerInterface, "GetMethod">(
      proc, std::string("finds no method ") + entry.fMethodName + " of a stream");
  return reinterpret_cast<typename Interface::template Proc<Method>>(proc)(args...);
}

// The same for a call that must succeed.
template <class Interface, TKAPName Method, class... Args>
void DoStream(KAPContainer* stream, const Args&... args) {
  KAPError* const error = CallStream<Interface, Method>(stream, args...);
  if (error) Need<Interface, Method>(false, Returns(error));
}

// Reads up to `count` bytes with one call.
std::string ReadSome(KAPContainer* stream, std::size_t count);
// Reads up to `count` bytes, with as many calls as it takes.
std::string ReadAll(KAPContainer* stream, std::size_t count = 1 << 20);
void Write(KAPContainer* stream, const std::string& bytes);
long Mark(KAPContainer* stream);
void Seek(KAPContainer* stream, long offset, KAPSeekOrigin origin);
void Rewind(KAPContainer* stream);
// A stream over the same data.
Container View(KAPContainer* stream);
Container RewindableView(KAPContainer* stream);

// Throws Broken when the texts differ.
void ExpectText(const std::string& actual, const std::string& expected, const char* what);

}  // namespace KAPProbe
