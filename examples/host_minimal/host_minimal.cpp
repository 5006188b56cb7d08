// SPDX-License-Identifier: MIT

// A host: loads the library, binds itself, parses a text and prints two of its values.

#include <cstdio>

#include "KAP.h"
#include "POSDict.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

int main(int argc, char** argv) {
  KAPHost::Host host;
  const KAPHost::Component library = host.Load(argc > 1 ? argv[1] : "libKAPUtils.so");
  const KAPClient client(host.GetProcAddress());

  const char* text = "< name (Ada Lovelace) born [10 December 1815] >";
  const CPOSDict person(CPOSObject::CreateFromText(text, nullptr));
  std::printf("%s was born in %.0f.\n", person.GetString("name").Get(),
              person.DeepGetNumber("born[2]").Get());
  return 0;
}
