// SPDX-License-Identifier: MIT

// host LIBRARY OLDER NEWER: two components with clients of different versions share an array.

#include <cstdio>

#include "POSDict.h"
#include "VersionInterface.h"
#include "kap/KAPClient.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

template <class Interface>
static void Ask(const CPOSObject& list) {
  using Component = TKAPInterfaceClient<Interface>;
  Component::template Call<"Sign">(list.Handle());
  const bool hasProgress = Component::template Call<"HasProgress">();
  std::printf("%s: %s progress\n", Interface::kName, hasProgress ? "has" : "lacks");
}

int main(int, char** argv) {
  KAPHost::Host host;
  const KAPHost::Component library = host.Load(argv[1]);
  const KAPHost::Component older = host.Load(argv[2], "Older");
  const KAPHost::Component newer = host.Load(argv[3], "Newer");
  const KAPClient client(host.GetProcAddress());

  const CPOSObject list = CPOSObject::CreateFromText("[]", nullptr);
  Ask<VersionInterface<"OlderInterface">>(list);
  Ask<VersionInterface<"NewerInterface">>(list);
  const CPOSArray signatures(list, false);
  for (unsigned i = 0; i < signatures.Count(); ++i) {
    std::printf("signed by %s\n", CPOSDict(signatures[i], false).GetString("by", false).Get());
  }
  for (const std::string& report : host.TakeReports()) std::printf("report: %s\n", report.c_str());
  return 0;
}
