// SPDX-License-Identifier: MIT

// A host: loads the library, binds itself, parses a text and prints two of its values.

#include <cstdio>

#include "KAP.h"
#include "POSDict.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

static void Work() {
  const char* text = "< name (Ada Lovelace) born [10 December 1815] >";
  const CPOSDict person(CPOSObject::CreateFromText(text, nullptr));
  std::printf("%s was born in %.0f.\n", person.GetString("name").Get(),
              person.DeepGetNumber("born[2]").Get());
}

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: host_minimal KAPUTILS (a shared library)\n");
    return 2;
  }
  KAPHost::Host host;
  try {
    const KAPHost::Component library = host.Load(argv[1]);
    const KAPClient client(host.GetProcAddress());
    Work();
  } catch (const KAPHost::LoadError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
