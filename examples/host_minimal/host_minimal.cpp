// SPDX-License-Identifier: MIT

// A host: loads the library, binds itself, parses a text and prints two of its values.

#include <cstdio>
#include <exception>
#include <stdexcept>

#include "KAP.h"
#include "POSDict.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

static void Work() {
  const char* text = "< name (Ada Lovelace) born [10 December 1815] >";
  const CPOSDict person(CPOSObject::CreateFromText(text));
  std::printf("%s was born in %.0f.\n", person.GetString("name").Get(),
              person.DeepGetNumber("born[2]").Get());
}

// Catches failures while the runtime is bound: a CKAPError refers to an error of the host.
static int Run(KAPHost::Host& host) {
  const KAPClient client(host.GetProcAddress());
  try {
    Work();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: host_minimal KAPUTILS (a shared library)\n");
    return 2;
  }
  KAPHost::Host host;
  try {
    const KAPHost::Component library = host.Load(argv[1]);
    return Run(host);
  } catch (const std::runtime_error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
