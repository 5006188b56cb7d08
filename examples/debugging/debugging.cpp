// SPDX-License-Identifier: MIT

// A host that checks: calls each procedure of the component "Labels" and prints what the host
// reports, and what is held at the end.

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

#include "LabelsInterface.h"
#include "POSDict.h"
#include "kap/KAPClient.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

namespace {

using Labels = TKAPInterfaceClient<LabelsInterface>;

CPOSObject Read(const char* text) { return CPOSObject(CPOSObject::CreateFromText(text, nullptr)); }

void UseLabels() {
  const CPOSObject found(Labels::Call<"Find">(Read("< label (Total) >").Handle()), KAPAdopt());
  Labels::Call<"Length">("Total");
  unsigned long count = 0;
  KAPCheck(Labels::Call<"Count">(&count, Read("[]").Handle()));
  static_cast<void>(Labels::Call<"StartsWithNumber">(Read("[1 2]").Handle()));
  Labels::Call<"RestLength">("Total");
  static_cast<void>(Labels::Call<"Text">(Read("< label (Total) >").Handle()));
  double number = 0;
  const CKAPError error(Labels::Call<"Parse">(&number, "1x"), KAPAdopt());
  static_cast<void>(Labels::Call<"IsSame">("Sum", "Total"));
}

// Leaves out the frames of stacks that are not in the sources of this example: they change.
void Print(const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const bool isOwn = line.find("labels.cpp:") != std::string::npos ||
                       line.find("debugging.cpp:") != std::string::npos;
    if (!line.starts_with("    ") || isOwn) std::cout << line << '\n';
  }
}

KAPHost::HostOptions Options(bool stacks) {
  KAPHost::HostOptions options;
  options.fChecks = true;
  options.fOnReport = [](const std::string& report) { Print(report + "\n\n"); };
  options.fOnLeak = [](const KAPHost::Snapshot&) {};  // the list below says more
  options.fDebug.fStacks = stacks;
  options.fDebug.fDeclared = KAPHost::Declare<POSInterfaceSet, TKAPInterfaceSet<LabelsInterface>>();
  return options;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: debugging KAPUTILS LABELS [stacks] (two shared libraries)\n");
    return 2;
  }
  KAPHost::Host host(Options(argc > 3));
  {
    const KAPHost::Component utils = host.Load(argv[1]);
    const KAPHost::Component labels = host.Load(argv[2], "Labels");
    const KAPClient client(host.GetProcAddress());
    UseLabels();
  }
  std::cout << "still held:\n";
  for (const KAPHost::LiveThing& thing : host.LiveThings()) {
    std::ostringstream text;
    text << thing;
    Print(text.str());
  }
}
