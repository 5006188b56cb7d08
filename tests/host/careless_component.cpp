// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <utility>

#include "CarelessInterface.h"
#include "kap/KAPHostInterfaces.h"

// A component that misuses its host on request, each time in one way.

namespace {

using namespace KAP_T_MT;

KAPGetProcAddressProc gGetProc = nullptr;

template <class Interface, TKAPName Method, class... Args>
auto Call(Args... args) {
  constexpr auto entry = Interface::kEntries[Interface::template kSlot<Method>];
  return reinterpret_cast<typename Interface::template Proc<Method>>(
      gGetProc(Interface::kName, entry.fMethodName, entry.fProcName))(args...);
}

KAPStringAtom* NewAtom(const char* text) { return Call<KAPStringInterface, "NewStringAtom">(text); }
void DeleteAtom(KAPStringAtom* atom) { Call<KAPStringInterface, "DeleteStringAtom">(atom); }

KAPContainer* NewContainer() {
  KAPContainer* container = nullptr;
  KAPStringAtom* const name = NewAtom("Thing");
  Call<KAPContainerInterface, "NewFullContainer">(&container, nullptr, name, name, nullptr);
  DeleteAtom(name);
  return container;
}
void Release(KAPContainer* container) { Call<KAPContainerInterface, "Release">(container); }

KAPError* NewError() {
  return Call<KAPErrorInterface, "NewError">("careless", "Careless", 1L, nullptr, nullptr);
}

KAPSharedBuffer* NewBuffer() {
  return Call<KAPSharedBuffInterface, "NewBuffer">(8ul, nullptr, nullptr, nullptr, nullptr);
}

char* Alloc(std::size_t size) {
  return static_cast<char*>(Call<KAPMemoryInterface, "Alloc">(size));
}
void Free(void* block) { Call<KAPMemoryInterface, "Free">(block); }

// What is leaked, for leak detectors: only the host has to complain.
void* gLeaked[32];
std::size_t gLeakedCount = 0;

void Leak(void* thing) { gLeaked[gLeakedCount++ % std::size(gLeaked)] = thing; }

// Guarded ones would make every later host guard its blocks.
void* gLeakedBlocks[2];
std::size_t gLeakedBlockCount = 0;

// Volatile: the compiler knows what is wrong otherwise.
void WriteAt(char* block, std::size_t index) { static_cast<volatile char*>(block)[index] = 'x'; }

void Misuse(const char* how) noexcept {
  const struct {
    const char* how;
    void (*act)();
  } kWays[] = {
      {"release a dead container",
       [] {
         KAPContainer* const container = NewContainer();
         Release(container);
         Release(container);
       }},
      {"refer to a dead container",
       [] {
         KAPContainer* const container = NewContainer();
         Release(container);
         Call<KAPContainerInterface, "AddRef">(container);
       }},
      {"release a dead error",
       [] {
         KAPError* const error = NewError();
         Call<KAPErrorInterface, "Release">(error);
         Call<KAPErrorInterface, "Release">(error);
       }},
      {"use a dead atom",
       [] {
         KAPStringAtom* const atom = NewAtom("gone");
         DeleteAtom(atom);
         Call<KAPStringInterface, "GetCString">(atom);
       }},
      {"release a dead buffer",
       [] {
         KAPSharedBuffer* const buffer = NewBuffer();
         Call<KAPSharedBuffInterface, "Release">(buffer);
         Call<KAPSharedBuffInterface, "Release">(buffer);
       }},
      {"refer to a dead buffer",
       [] {
         KAPSharedBuffer* const buffer = NewBuffer();
         Call<KAPSharedBuffInterface, "Release">(buffer);
         Call<KAPSharedBuffInterface, "AddRef">(buffer);
       }},
      {"pass an error as a container",
       [] {
         KAPError* const error = NewError();
         Release(reinterpret_cast<KAPContainer*>(error));
         Call<KAPErrorInterface, "Release">(error);
       }},
      {"pass no handle",
       [] {
         long words[8] = {};
         Release(reinterpret_cast<KAPContainer*>(words));
       }},
      {"write past a block",
       [] {
         char* const block = Alloc(10);
         WriteAt(block, 10);
         Free(block);
       }},
      {"write before a block",
       [] {
         char* const block = Alloc(10);
         WriteAt(block, ~std::size_t{0});
         Free(block);
       }},
      {"free a block with free", [] { std::free(Alloc(10)); }},
      {"release too often what the host holds",
       [] {
         KAPStringAtom* const name = NewAtom("Thing");
         KAPContainer* const container = NewContainer();
         DeleteAtom(name);
         DeleteAtom(name);
         Call<KAPStringInterface, "AddRef">(name);  // the host's reference
         Release(container);
       }},
      {"bind and unbind",
       [] {
         const KAPClientPurgeProc purge = [] {};
         Call<KAPCacheInterface, "AddClientPurge">(purge, 1);
         Call<KAPCacheInterface, "RemoveClientPurge">(purge, 1);
       }},
      {"write past a buffer",
       [] {
         KAPSharedBuffer* const buffer = NewBuffer();
         WriteAt(reinterpret_cast<char*>(Call<KAPSharedBuffInterface, "GetBuffer">(buffer)), 8);
         Call<KAPSharedBuffInterface, "Release">(buffer);
       }},
      {"free a block twice",
       [] {
         char* const block = Alloc(10);
         Free(block);
         Free(block);
       }},
      {"reallocate a freed block",
       [] {
         char* const block = Alloc(10);
         Free(block);
         Call<KAPMemoryInterface, "Realloc">(static_cast<void*>(block), 20ul);
       }},
      {"reallocate memory of malloc",
       [] {
         void* const block = std::malloc(10);
         Call<KAPMemoryInterface, "Realloc">(block, 20ul);
         std::free(block);
       }},
      {"free memory of malloc",
       [] {
         void* const block = std::malloc(10);
         Free(block);
         std::free(block);
       }},
      {"leak an atom", [] { Leak(NewAtom("leaked")); }},
      {"leak a container", [] { Leak(NewContainer()); }},
      {"leak an error", [] { Leak(NewError()); }},
      {"leak a buffer", [] { Leak(NewBuffer()); }},
      {"leak a block", [] { gLeakedBlocks[gLeakedBlockCount++ % 2] = Alloc(24); }},
      {"free the leaked blocks",
       [] {
         for (void*& block : gLeakedBlocks) Free(std::exchange(block, nullptr));
       }},
      {"leak a stream",
       [] {
         KAPContainer* stream = nullptr;
         Call<KAPStreamFactoryInterface, "NewPositionableMemoryStream">(&stream);
         Leak(stream);
       }},
      {"write to a freed block",
       [] {
         char* const block = Alloc(10);
         Free(block);
         WriteAt(block, 3);
       }},
  };
  for (const auto& way : kWays) {
    if (std::strcmp(way.how, how) == 0) return way.act();
  }
  Call<KAPBinderInterface, "KAPReportError">("no such misuse");
}

KAPError* LeaveUnset(double*) noexcept { return nullptr; }
KAPError* ReturnBoth(double* out) noexcept {
  *out = 1;
  return NewError();
}
KAPError* ReturnErrorOnly(double*) noexcept { return NewError(); }
KAPError* ReturnErrorAndZero(double* out) noexcept {
  *out = 0;
  return NewError();
}
void Throw() { throw 5; }
KAPStringAtom* ReturnDead() noexcept {
  KAPStringAtom* const atom = NewAtom("returned");
  DeleteAtom(atom);
  return atom;
}
KAPError* ReturnOther() noexcept { return reinterpret_cast<KAPError*>(NewContainer()); }
KAPError* PlaceOther(KAPStringAtom** out) noexcept {
  static long words[8];
  *out = reinterpret_cast<KAPStringAtom*>(words);
  return nullptr;
}
KAPError* ReturnByte(unsigned char* out) noexcept {
  *out = 0xE5;
  return nullptr;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int CarelessInitialize(KAPGetProcAddressProc getProc) {
  gGetProc = getProc;
  for (const auto& entry : CarelessInterface::Registration(
           &Misuse, &LeaveUnset, &ReturnBoth, &ReturnErrorOnly, &ReturnErrorAndZero, &Throw,
           &ReturnDead, &ReturnOther, &PlaceOther, &ReturnByte)) {
    Call<KAPBinderInterface, "KAPRegisterProcAddress">(CarelessInterface::kName, entry.fMethodName,
                                                       entry.fProcName, entry.fProc);
  }
  return 1;
}

__attribute__((visibility("default"))) void CarelessTerminate() {
  Call<KAPBinderInterface, "KAPUnregisterInterface">(CarelessInterface::kName);
}

__attribute__((visibility("default"))) int CarelessGetVersion() { return 1; }

}  // extern "C"
