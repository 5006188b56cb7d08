// SPDX-License-Identifier: MIT
// Prints the tables of all interfaces. A release adds what is new to the published ones:
//
//   out/debug/bin/kap_tables > tests/sdk/tables.txt

#include <cstdio>

#include "Tables.h"

int main() {
  for (const std::string& line : DeclaredTables()) std::puts(line.c_str());
  return 0;
}
