// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "probe/Services.h"

// Calls of a stream's methods, which are looked up through its container as any client does.

namespace KAPProbe {

// Throws NotOffered when the container has no such method.
template <class Interface, TKAPName Method, class... Args>
KAPError* CallStream(KAPContainer* stream, const Args&... args) {
  constexpr auto entry = Interface::kEntries[Interface::template kSlot<Method>];
  void* proc = nullptr;
  MustSucceed(Call<KAPContainerInterface, "GetMethod">(&proc, stream, MakeAtom(entry.fMethodName),
                                                       MakeAtom(entry.fProcName), 0),
              "GetMethod");
  if (!proc) throw NotOffered(std::string("a stream without ") + entry.fMethodName);
  return reinterpret_cast<typename Interface::template Proc<Method>>(proc)(args...);
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

}  // namespace KAPProbe
