// SPDX-License-Identifier: MIT
// kap_tables: prints the tables of all interfaces.
// kap_tables --add FILE: adds what is new to the published tables in the file. Refuses, with a
// message for each, when published lines have changed.

#include <cstdio>
#include <cstring>

#include "Tables.h"

int main(int argc, char** argv) {
  const bool adds = argc == 3 && std::strcmp(argv[1], "--add") == 0;
  if (argc != 1 && !adds) {
    std::fprintf(stderr, "usage: kap_tables [--add FILE]\n");
    return 2;
  }
  const std::vector<std::string> declared = DeclaredTables();
  if (!adds) {
    for (const std::string& line : declared) std::puts(line.c_str());
    return 0;
  }
  const std::vector<std::string> broken = AddToPublished(argv[2], declared);
  for (const std::string& line : broken) std::fprintf(stderr, "%s\n", line.c_str());
  return broken.empty() ? 0 : 1;
}
