// SPDX-License-Identifier: MIT

// A component, "Labels", with a bug in each procedure. docs/debugging.md shows how each one is
// found.

#include <cstdlib>
#include <cstring>

#include "KAP.h"
#include "LabelsInterface.h"
#include "POSDict.h"

using namespace KAP_T_MT;

namespace {

using Arrays = TKAPInterfaceClient<POSArrayInterface>;
using Containers = TKAPInterfaceClient<KAPContainerInterface>;
using Dicts = TKAPInterfaceClient<POSDictInterface>;
using Memory = TKAPInterfaceClient<KAPMemoryInterface>;
using Numbers = TKAPInterfaceClient<POSNumberInterface>;
using Strings = TKAPInterfaceClient<KAPStringInterface>;

// Bug: the atom is never released.
POSObject* Find(POSDict* dict) noexcept {
  KAPStringAtom* const key = Strings::Call<"NewStringAtom">("label");
  return Dicts::Call<"Get">(dict, key);
}

// Bug: the element is released twice. "GetAt" returns one reference.
bool StartsWithNumber(POSArray* array) noexcept {
  POSObject* const first = Arrays::Call<"GetAt">(array, 0u);
  Containers::Call<"Release">(first);
  const bool isNumber = Numbers::Call<"IsPOSNumber">(first);
  Containers::Call<"Release">(first);
  return isNumber;
}

// Bug: the block is one byte too small for the zero at the end.
unsigned long Length(const char* text) noexcept {
  const std::size_t length = std::strlen(text);
  char* const copy = static_cast<char*>(Memory::Call<"Alloc">(length));
  std::memcpy(copy, text, length + 1);
  Memory::Call<"Free">(copy);
  return length;
}

// Bug: an empty array leaves the result as it was.
KAPError* Count(unsigned long* out, POSArray* array) noexcept {
  const unsigned count = Arrays::Call<"Count">(array);
  if (count != 0) *out = count;
  return nullptr;
}

// Bug: the copy is not the host's memory.
unsigned long RestLength(const char* text) noexcept {
  const std::unique_ptr<char, decltype(&std::free)> copy(::strdup(text), &std::free);
  const std::size_t length = std::strlen(copy.get() + 1);
  Memory::Call<"Free">(copy.get());
  return length;
}

// Bug: a dictionary is not an atom, whatever the cast says.
const char* Text(POSDict* dict) noexcept {
  return Strings::Call<"GetCString">(reinterpret_cast<KAPStringAtom*>(dict));
}

// Bug: the result is set before the text is checked.
KAPError* Parse(double* out, const char* text) noexcept {
  char* end = nullptr;
  *out = std::strtod(text, &end);
  if (*end == '\0') return nullptr;
  return TKAPInterfaceClient<KAPErrorInterface>::Call<"NewError">("not a number", "Labels", 1L,
                                                                  nullptr, nullptr);
}

// Bug: the first atom is released before it is compared.
bool IsSame(const char* text, const char* other) noexcept {
  KAPStringAtom* const first = Strings::Call<"NewStringAtom">(text);
  KAPStringAtom* const second = Strings::Call<"NewStringAtom">(other);
  Strings::Call<"DeleteStringAtom">(first);
  const bool isSame = std::strcmp(Strings::Call<"GetCString">(first), other) == 0;
  Strings::Call<"DeleteStringAtom">(second);
  return isSame;
}

}  // namespace

extern "C" [[gnu::visibility("default")]] int LabelsInitialize(KAPGetProcAddressProc getProc) {
  return KAPReportingError([=] {
    return KAPClientInit(getProc) &&
           KAPRegisterInterface<LabelsInterface>(&Find, &StartsWithNumber, &Length, &Count,
                                                 &RestLength, &Text, &Parse, &IsSame);
  });
}

extern "C" [[gnu::visibility("default")]] void LabelsTerminate() {
  KAPUnregisterInterface(LabelsInterface::kName);
  KAPClientTerminate();
}

extern "C" [[gnu::visibility("default")]] int LabelsGetVersion() { return 1; }
