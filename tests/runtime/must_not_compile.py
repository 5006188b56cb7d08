#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What must not compile: must_not_compile.py COMPILER INCLUDE_FOLDER

Each row is a slip, the code that makes it, and the words that the compiler must say. Exactly one
error may appear, so that the words are what the author of the slip reads first. Rows without words
must compile without a warning.
"""
import concurrent.futures
import pathlib
import subprocess
import sys
import tempfile

PRELUDE = """
#include "POSStreamer.h"
#include "KAP.h"
using namespace KAP_T_MT;
struct TotalsInterface : TKAPInterface<"TotalsInterface",
                                       TKAPMethod<"Sum", "TotalsSumProc", double(POSArray*)>,
                                       TKAPMethod<"Raw", "TotalsRawProc", int(), kKAPThrows>> {};
using Totals = TKAPInterfaceClient<TotalsInterface>;
double Sum(POSArray*) noexcept;
double Throwing(POSArray*);
int Raw();
int Other(int) noexcept;
[[maybe_unused]] void Use(KAPContainer* handle, POSArray* numbers) {
  static_cast<void>(handle), static_cast<void>(numbers);
  %s
}
"""

ROWS = [
    ("registered as it should be",
     "if (!KAPRegisterInterface<TotalsInterface>(&Sum, &Raw)) return;", ""),
    ("a procedure that may throw",
     "if (!KAPRegisterInterface<TotalsInterface>(&Throwing, &Raw)) return;",
     "a registered procedure must be noexcept"),
    ("a lambda that may throw, under a name of one's own",
     'if (!KAPRegisterMethods<TotalsInterface>("Own", [](POSArray*) { return 1.; }, &Raw)) return;',
     "a registered procedure must be noexcept"),
    ("a procedure of another type",
     "if (!KAPRegisterInterface<TotalsInterface>(&Other, &Raw)) return;",
     "a procedure does not have the type that its method declares"),
    ("a missing procedure", "if (!KAPRegisterInterface<TotalsInterface>(&Sum)) return;",
     "an interface needs one procedure for each method"),
    ("a misspelt method, called", 'double sum = Totals::Call<"Sun">(numbers, 1); (void)sum;',
     "the interface has no method of this name"),
    ("a registration that nobody checks", "KAPRegisterInterface<TotalsInterface>(&Sum, &Raw);",
     "nodiscard"),
    ("a binding that nobody checks", "KAPClientInit(nullptr);", "nodiscard"),
    ("a new reference that nobody takes", "CKAPStreamFactory::NewPositionableMemoryStream();",
     "nodiscard"),
    ("a cached item that may stay the caller's",
     "CKAPCache::Add(CKAPCacheID::New(), handle, 1, nullptr);", "nodiscard"),
    ("a bool where the way of adding is an int", "KAPContainerBaseGeneric base(handle, true);",
     "deleted"),
    ("a pointer of another kind as an atom", "CKAPStringAtom atom(handle);", "no matching"),
    ("a bool as a count", "TKAPSharedBuffer<char> buffer(true);",
     "no matching"),
]


def check(compiler, include, row, folder):
    why, code, words = row
    source = pathlib.Path(folder) / f"{abs(hash(why))}.cpp"
    source.write_text(PRELUDE % code, encoding="utf-8")
    # Without hidden visibility: the headers themselves must be quiet about that.
    done = subprocess.run(
        [compiler, "-std=c++20", "-Wall", "-Wextra", "-Werror", "-Wno-attributes", "-fsyntax-only",
         "-Wno-undefined-internal", "-I", include, source],
        capture_output=True, text=True, check=False)
    return judge(why, words, done.stderr)


def judge(why, words, output):
    """The fault of a compilation as a text, or None."""
    errors = [line for line in output.splitlines() if "error:" in line]
    if words and len(errors) == 1 and words in errors[0]:
        return None
    if not words and not output:
        return None
    return f"{why}: expected {words or 'no message'!r}\n{output}"


def check_language(compiler, include):
    """A compiler below C++20 gets one #error, and stops at the include that follows it."""
    command = [compiler, "-std=c++17", "-fsyntax-only", "-I", include, "-x", "c++", "-"]
    done = subprocess.run(command, input='#include "KAP.h"\n', capture_output=True, text=True,
                          check=False)
    errors = [line for line in done.stderr.splitlines() if " error:" in line]
    fatal = [line for line in errors if "fatal error:" in line]
    if len(errors) == 2 and len(fatal) == 1 and "KAPUtils needs C++20" in errors[0]:
        return None
    return f"C++17: {done.stderr}"


def main():
    compiler, include = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(2) as pool:
        faults = [*pool.map(lambda row: check(compiler, include, row, folder), ROWS),
                  check_language(compiler, include)]
    faults = [fault for fault in faults if fault]
    print("\n".join(faults) or f"{len(ROWS) + 1} cases")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
