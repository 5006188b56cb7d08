#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What must not compile: must_not_compile.py COMPILER INCLUDE_FOLDER

Each row is a slip, the code that makes it, and the words that the compiler must say. Exactly one
error may appear, so that the words are what the author of the slip reads first. Rows without words
must compile without a warning. Deprecated forms compile, and warn on request.
"""
import concurrent.futures
import pathlib
import subprocess
import sys
import tempfile

PRELUDE = """
#include "POSStreamer.h"
#include "KAP.h"
#include "KAPUtilsDir.h"
#include "POSDict.h"
#include "POSValidator.h"
using namespace KAP_T_MT;
struct [[gnu::visibility("hidden")]] TotalsInterface
    : TKAPInterface<"TotalsInterface", TKAPMethod<"Sum", "TotalsSumProc", double(POSArray*)>,
                    TKAPMethod<"Raw", "TotalsRawProc", int(), kKAPThrows>> {};
using Totals = TKAPInterfaceClient<TotalsInterface>;
double Sum(POSArray*) noexcept;
double Throwing(POSArray*);
int Raw();
int Other(int) noexcept;
TKAPNewHandle<KAPContainer> Made();
[[maybe_unused]] constinit TDelVTabList<KAPSimpleStreamInterface> gTables;
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
    ("a misspelt method, released with", 'Totals::CallReleasing<"Relase">(numbers);',
     "the interface has no method of this name"),
    ("a misspelt method of a container", 'KAPCheck(gTables.Method<"Reed">(handle)(handle, 1));',
     "the interface has no method of this name"),
    ("a misspelt slot", 'Totals::Replace<"Sun">(&Other);',
     "the interface has no method of this name"),
    ("a procedure of another type in a slot", 'Totals::Replace<"Sum">(&Other);',
     "a procedure does not have the type that its method declares"),
    ("a registration that nobody checks", "KAPRegisterInterface<TotalsInterface>(&Sum, &Raw);",
     "nodiscard"),
    ("a binding that nobody checks", "KAPClientInit(nullptr);", "nodiscard"),
    ("a new reference that nobody takes", "CKAPStreamFactory::NewPositionableMemoryStream();",
     "nodiscard"),
    ("a reference that is dropped", "KAPContainerBaseGeneric(handle).Detach();",
     "nodiscard"),
    ("an error that is ignored",
     'KAPStreamFactoryClient::Call<"NewPositionableMemoryStream">(&handle);', "nodiscard"),
    ("a look-up that does nothing but leak", 'CPOSDict().HasKey("key");', "nodiscard"),
    ("owners of a new handle",
     "CKAPContainerHolder one(Made()), two(Made(), KAPAdopt()), three(Made(), true);"
     "auto made = Made(); KAPContainerBaseGeneric base(std::move(made));"
     "static_cast<void>(CPOSRawPointer::NewKAPObjRef(Made()));"
     "handle = Made(); if (Made() == nullptr) return;", ""),
    ("a new handle with two owners", "auto made = Made(); CKAPContainerHolder holder(made);",
     "deleted"),
    ("a new handle as a condition", "if (CKAPSharedBuff::NewBuffer(8)) return;", "deleted"),
    ("a second reference to a new container", "CKAPContainer::AddRef(Made());", "deleted"),
    ("the same, unchecked", "KAPContainerBaseGeneric base(Made(), 0);", "deleted"),
    ("a new container without an owner", "CKAPCachedContainerHolder cached(Made());", "deleted"),
    ("a lock under a new identity", "CKAPCacheLock lock(CKAPCache::NewCacheID(), handle);",
     "deleted"),
    ("a cached item that may stay the caller's",
     "CKAPCache::Add(CKAPCacheID::New(), handle, 1, nullptr);", "nodiscard"),
    ("a bool where the way of adding is an int", "KAPContainerBaseGeneric base(handle, true);",
     "deleted"),
    ("an int where the way of adopting is a bool", "CKAPContainerHolder holder(handle, 1);",
     "deleted"),
    ("the same for an atom", "CKAPStringAtom atom(static_cast<KAPStringAtom*>(nullptr), 1);",
     "deleted"),
    ("a bool as the number of a core error", "CKAPError error(true);", "deleted"),
    ("a pointer of another kind as an atom", "CKAPStringAtom atom(handle);", "no matching"),
    ("a bool as a count", "TKAPSharedBuffer<char> buffer(true);", "deleted"),
    ("a character as a count", "TKAPSharedBuffer<char> buffer('9');", "deleted"),
]

WARNED = [
    ("none of them in the headers, nor where there is a tag",
     "CKAPContainerHolder holder(handle, KAPAdopt()); CKAPError error(nullptr, KAPAdopt());", ""),
    ("an error adopted without saying so", "CKAPError one, two(one.Handle());", "deprecated"),
    ("a holder told by a bool", "CKAPContainerHolder holder(handle, true);", "deprecated"),
    ("an atom told by a bool", "CKAPStringAtom atom(CKAPStringAtom().Detach(), true);",
     "deprecated"),
    ("an unchecked reference", "KAPContainerBaseGeneric base(handle, 0);", "deprecated"),
    ("a default constructor that asks the host", "CKAPPositionableStream stream;", "deprecated"),
]


def check(compiler, include, row, folder, *options):
    why, code, words = row
    source = pathlib.Path(folder) / f"{abs(hash(why))}.cpp"
    source.write_text(PRELUDE % code, encoding="utf-8")
    # Without hidden visibility: the headers themselves must be quiet about that.
    done = subprocess.run(
        [compiler, "-std=c++20", "-Wall", "-Wextra", "-Werror", "-fsyntax-only",
         "-Wno-undefined-internal", *options, "-I", include, source],
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


def check_language(compiler, include, header):
    """Below C++20, a header that needs it alone gives one #error, and the compiler stops there."""
    command = [compiler, "-std=c++17", "-fsyntax-only", "-I", include, "-x", "c++", "-"]
    done = subprocess.run(command, input=f'#include "{header}"\n', capture_output=True, text=True,
                          check=False)
    errors = [line for line in done.stderr.splitlines() if " error:" in line]
    fatal = [line for line in errors if "fatal error:" in line]
    if not errors and header != "KAP.h":  # a header that needs no more
        return None
    if len(errors) == 2 and len(fatal) == 1 and "KAPUtils needs C++20" in errors[0]:
        return None
    return f"C++17, {header}: {done.stderr or 'no error'}"


def main():
    compiler, include = sys.argv[1:]
    headers = [str(path.relative_to(include)) for path in sorted(pathlib.Path(include).rglob("*.h"))
               if "source" not in path.relative_to(include).parts]
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(2) as pool:
        faults = [*pool.map(lambda row: check(compiler, include, row, folder), ROWS),
                  *pool.map(lambda row: check(compiler, include, row, folder,
                                              "-DKAP_WARN_DEPRECATED"), WARNED),
                  *pool.map(lambda header: check_language(compiler, include, header), headers)]
    print("\n".join(filter(None, faults)) or f"{len(faults)} cases")
    return 1 if any(faults) else 0


if __name__ == "__main__":
    sys.exit(main())
