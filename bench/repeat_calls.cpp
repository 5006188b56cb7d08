// SPDX-License-Identifier: MIT

// repeat_calls LIBRARY KIND COUNT: makes calls of one kind, one after the other, for tools that
// count instructions. docs/debugging.md compares the instructions with and without observing.

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "POSDict.h"
#include "kap/KAPClient.h"
#include "kaphost/KAPHost.h"

using namespace KAP_T_MT;

namespace RepeatCalls {

CPOSObject Read(const char* text) { return CPOSObject(CPOSObject::CreateFromText(text, nullptr)); }

constexpr const char* kDocument = "< first [1 2 3] second (text) third < a 1 b 2.5 c true > >";

// What a kind of calls works on, made before the calls that count.
struct Things {
  CPOSObject fDocument = Read(kDocument);
  CPOSDict fDict = CPOSDict(fDocument);
};

constexpr struct {
  std::string_view fName;
  void (*fAct)(Things& things);
} kKinds[] = {
    {"get", [](Things& things) { static_cast<void>(things.fDict.Get("second", false)); }},
    {"put", [](Things& things) { things.fDict.Put("second", CPOSNumber(7)); }},
    {"number", [](Things&) { static_cast<void>(CPOSNumber(41.5)); }},
    {"parse", [](Things&) { static_cast<void>(Read(kDocument)); }},
};

// Tools find it by name.
[[gnu::noinline]] void Repeat(void (*act)(Things&), Things& things, long count) {
  for (long i = 0; i < count; ++i) act(things);
}

}  // namespace RepeatCalls

int main(int argc, char** argv) {
  using namespace RepeatCalls;
  for (const auto& kind : kKinds) {
    if (argc != 4 || kind.fName != argv[2]) continue;
    KAPHost::Host host;
    const KAPHost::Component library = host.Load(argv[1]);
    const KAPClient client(host.GetProcAddress());
    Things things;
    Repeat(kind.fAct, things, 100);  // what the first calls look up
    Repeat(kind.fAct, things, std::atol(argv[3]));
    return 0;
  }
  std::fprintf(stderr, "usage: repeat_calls LIBRARY get|put|number|parse COUNT\n");
  return 2;
}
