// SPDX-License-Identifier: MIT

// A program with one value of each kind that the printers of gdb know. printers_test.py stops it
// in Stop, and damages some of the values.

#include "KAP.h"
#include "POSDict.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

[[gnu::noinline]] static void Stop() { asm volatile(""); }
static KAPError* NewError() {
  return TKAPInterfaceClient<KAPErrorInterface>::Call<"NewError">("no room", "Printed", 7l, nullptr,
                                                                  nullptr);
}

class Person : public CPOSDict {
  using CPOSDict::CPOSDict;
};

static KAPError* Update(void*, float, const char*, int) { return nullptr; }
static KAPError* Delete(void*) { return nullptr; }

static int Print(const char* library) {
  KAPHost::HostOptions options;
  options.fChecks = true;
  KAPHost::Host host(options);
  const KAPHost::Component component = host.Load(library);
  const KAPClient client(host.GetProcAddress());

  const CKAPStringAtom atom("a \"text\"\n\x01\xff");
  KAPStringAtom* const atomHandle = atom.Handle();
  KAPStringAtom* const noAtom = nullptr;
  const CKAPStringAtom longAtom(std::string(300, 'x').c_str());
  const CKAPError error(NewError(), KAPAdopt());
  KAPError* const errorHandle = error.Handle();
  const CPOSNumber number(0.1 + 0.2), whole(9007199254740992.0);
  const CPOSString string("Ada Lovelace");
  const CPOSObject unicode(CPOSObject::CreateFromText("`00480065006A0022000A`", nullptr));
  const CPOSArray array(CPOSObject::CreateFromText("[1 (two) [3]]", nullptr));
  const CPOSDict dict(CPOSObject::CreateFromText("< b 2 a < c (text) > >", nullptr));
  const Person person(dict);
  const CPOSDict& byReference = dict;
  POSObject* const handle = dict.Handle();
  POSObject* const noHandle = nullptr;
  const CPOSObject nothing;
  const CKAPPositionableStream stream(CKAPStreamFactory::NewPositionableMemoryStream());
  const unsigned char bytes[] = {1, 2, 3};
  const CPOSBinData data("image", bytes, sizeof bytes);
  const CPOSRawPointer pointer(reinterpret_cast<void*>(0x10), nullptr);

  CPOSArray ring(CPOSObject::CreateFromText("[1]", nullptr));
  ring.Append(ring);
  ring.Append(ring);
  CPOSArray longArray = CPOSArray::New();
  CPOSDict longDict = CPOSDict::New();
  for (int i = 0; i < 301; ++i) {
    longArray.Append(CPOSNumber(i));
    longDict.Put(std::to_string(i).c_str(), CPOSNumber(i));
  }
  // Shared 2^30 times.
  CPOSArray shared = CPOSArray::New();
  for (int i = 0; i < 30; ++i) {
    CPOSArray next = CPOSArray::New();
    next.Append(shared);
    next.Append(shared);
    shared = next;
  }
  POSObject* const dead = CPOSNumber(1).Detach();
  TKAPInterfaceClient<KAPContainerInterface>::Call<"Release">(dead);

  KAPSharedBuffer* const buffer = TKAPInterfaceClient<KAPSharedBuffInterface>::Call<"NewBuffer">(
      100ul, nullptr, nullptr, nullptr, nullptr);
  KAPProgress* const progress =
      TKAPInterfaceClient<KAPProgressInterface>::Call<"NewClientProgress">(
          reinterpret_cast<void*>(0x20), &Update, &Delete);
  KAPCacheID* const identity = TKAPInterfaceClient<KAPCacheInterface>::Call<"NewCacheID">();
  const CKAPCacheID identityWrapper(identity, KAPAdopt());
  KAPDataSink* sink = nullptr;
  static_cast<void>(TKAPInterfaceClient<KAPFilterInterface>::Call<"NewNullDataSink">(&sink));
  const CKAPDataSink sinkWrapper(sink, KAPAdopt());
  const KAPDataBlock block = {"some text", 9, nullptr, nullptr};

  Stop();
  while (ring.Count() != 0) ring.Remove(0);
  TKAPInterfaceClient<KAPSharedBuffInterface>::Call<"Release">(buffer);
  TKAPInterfaceClient<KAPProgressInterface>::Call<"Release">(progress);
  // g++ warns of variables that only a debugger reads.
  const void* const all[] = {&atomHandle, &noAtom, &errorHandle, &handle,     &noHandle,
                             &dead,       &block,  &person,      &byReference};
  return all[0] == nullptr;
}

int main(int, char** argv) { return Print(argv[1]); }
