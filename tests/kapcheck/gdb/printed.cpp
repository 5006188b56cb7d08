// SPDX-License-Identifier: MIT

// A program with one value of each kind that the printers of gdb know. printers_test.py stops it
// in Stop.

#include "KAP.h"
#include "POSDict.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

[[gnu::noinline]] static void Stop() { asm volatile(""); }

static KAPError* NewError() {
  return TKAPInterfaceClient<KAPErrorInterface>::Call<"NewError">("no room", "Printed", 7l, nullptr,
                                                                  nullptr);
}

int main(int, char** argv) {
  KAPHost::Host host;
  const KAPHost::Component library = host.Load(argv[1]);
  const KAPClient client(host.GetProcAddress());

  const CKAPStringAtom atom("a \"text\"");
  KAPStringAtom* const atomHandle = atom.Handle();
  KAPStringAtom* const noAtom = nullptr;
  const CKAPError error(NewError(), KAPAdopt());
  KAPError* const errorHandle = error.Handle();
  const CPOSNumber number(-0.25);
  const CPOSString string("Ada Lovelace");
  const CPOSObject unicode(CPOSObject::CreateFromText("`00480065006A0021`", nullptr));
  const CPOSArray array(CPOSObject::CreateFromText("[1 (two) [3]]", nullptr));
  const CPOSDict dict(CPOSObject::CreateFromText("< b 2 a < c (text) > >", nullptr));
  POSObject* const handle = dict.Handle();
  POSObject* const noHandle = nullptr;
  const CPOSObject nothing;
  const CKAPPositionableStream stream(CKAPStreamFactory::NewPositionableMemoryStream());
  const unsigned char bytes[] = {1, 2, 3};
  const CPOSBinData data("image", bytes, sizeof bytes);
  const CPOSRawPointer pointer(reinterpret_cast<void*>(0x10), nullptr);
  Stop();
  // g++ warns of variables that only a debugger reads.
  const void* const all[] = {&atomHandle, &noAtom, &errorHandle, &handle, &noHandle};
  return all[0] == nullptr;
}
