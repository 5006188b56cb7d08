#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What KAPUtilsC.h must accept quietly, and what it must reject: c_header_slips.py INCLUDE_FOLDER
C_COMPILER CXX_COMPILER

Each row is the interface of a component that declares it in the one source that uses it, and the
words that the compiler must say; no words: it compiles without a warning. C and C++ agree.
"""
import pathlib
import subprocess
import sys
import tempfile

SOURCE = """
#include "KAPUtilsC.h"
#define OwnInterface_NAME "OwnInterface"
#define OwnInterface_METHODS(X) %s
typedef struct OwnInterfaceProcs {
  %s
} OwnInterfaceProcs;
KAP_TABLE_FUNCTIONS(OwnInterface)
int Use(OwnInterfaceProcs* own, KAPGetProcAddressProc getProc);
int Use(OwnInterfaceProcs* own, KAPGetProcAddressProc getProc) { %s }
"""
METHODS = 'X(Get, "OwnGetProc") X(Set, "OwnSetProc")'
PROCS = "int (*Get)(void); void (*Set)(int value);"
LOAD = "return OwnInterfaceLoad(own, getProc);"
NOT_ONE_EACH = "OwnInterfaceProcs does not have one procedure for each of the methods"

ROWS = [
    ("as it should be, though not every function is used", METHODS, PROCS, LOAD, ""),
    ("methods in another order", 'X(Set, "OwnSetProc") X(Get, "OwnGetProc")', PROCS, LOAD,
     "is not in its slot"),
    ("a method without a procedure", METHODS, "int (*Get)(void);", LOAD, NOT_ONE_EACH),
    ("a procedure without a method", METHODS, PROCS + " void (*Clear)(void);", LOAD, NOT_ONE_EACH),
    ("a misspelt procedure", METHODS, "int (*Gte)(void); void (*Set)(int value);", LOAD, "Get"),
    ("a table that may not be loaded", METHODS, PROCS,
     "OwnInterfaceLoad(own, getProc); return own->Get();", "unused"),
]
FLAGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Wcast-qual", "-Wundef",
         "-Werror", "-c", "-o", "/dev/null"]


def compiled(command, suffix, row, folder):
    """What the compiler says."""
    source = pathlib.Path(folder) / f"own.{suffix}"
    source.write_text(SOURCE % row[1:4], encoding="utf-8")
    return subprocess.run([*command, *FLAGS, source], capture_output=True, text=True,
                          check=False).stderr


def main():
    include, c_compiler, cxx_compiler = sys.argv[1:]
    languages = (
        ([c_compiler, "-std=c11", "-I", include], "c"),
        ([cxx_compiler, "-std=c++20", "-fvisibility=hidden", "-Wold-style-cast", "-I", include],
         "cpp"))
    faults = []
    with tempfile.TemporaryDirectory() as folder:
        for row in ROWS:
            for command, suffix in languages:
                said = compiled(command, suffix, row, folder)
                if (row[-1] not in said) if row[-1] else said:
                    faults.append(f"{row[0]} ({suffix}): expected {row[-1]!r}, got\n{said}")
    if faults:
        sys.exit("\n".join(faults))
    print(f"{len(ROWS)} interfaces in {len(languages)} languages")


if __name__ == "__main__":
    main()
