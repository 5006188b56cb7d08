#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""printers_test PROGRAM LIBRARY: what gdb prints with the printers, sourced and loaded by itself.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parents[3] / "tools/gdb/kaputils_gdb.py"
PROGRAM, LIBRARY = "printed", pathlib.Path("libKAPUtils.so")

DICT = 'dictionary of 2 = {"a" = dictionary of 1 = {"c" = string "text"}, "b" = number 2}'
BACK = "leads back to this one"

# An expression and what is printed for it.
ROWS = [
    ("atom", r'"a \"text\"\n\x01\xff"'),
    ("atomHandle", r'"a \"text\"\n\x01\xff"'),
    ("noAtom", "null"),
    ("longAtom", '"' + 200 * "x" + '"...'),
    ("error", 'error "no room" of "Printed", code 7'),
    ("errorHandle", 'error "no room" of "Printed", code 7'),
    ("number", "number 0.30000000000000004"),
    ("whole", "number 9007199254740992"),
    ("string", 'string "Ada Lovelace"'),
    ("unicode", r'Unicode string "Hej\"\n"'),
    ("array", 'array of 3 = {[0] = number 1, [1] = string "two", '
              '[2] = array of 1 = {[0] = number 3}}'),
    ("dict", DICT),
    ("person", DICT),
    ("byReference", DICT),
    ("handle", DICT),
    ("noHandle", "null"),
    ("nothing", "null"),
    ("stream", 'container "KAPHostPositionableStream"'),
    ("data", 'binary data "image" of 3 bytes'),
    ("pointer", "raw pointer 0x10"),
    ("*(NPOSObjectImpl::Number*)number.fContainer->fPrimary", "number 0.30000000000000004"),
    ("ring", f'array of 3 = {{[0] = number 1, [1] = {BACK}, [2] = {BACK}}}'),
    ("dead", "destroyed container"),
    ("buffer", r"re:buffer of 100 bytes at 0x[0-9a-f]+"),
    ("progress", "progress of client 0x20"),
    ("identity", "identity without an item"),
    ("identityWrapper", "identity without an item"),
    ("sinkWrapper", "null sink"),
    ("block", 'block of 9 bytes "some text"'),
    ("longArray", r"re:array of 301 = \{\[0\] = number 0, .*, \[199\] = number 199, \.\.\. = "
                  r"more elements\}"),
    ("longDict", r're:dictionary of 301 = \{"0" = number 0, "1" = number 1, "10" = number 10, .*'
                 r'\.\.\. = more elements\}'),
    # Ends, although all of it would not.
    ("shared", r"re:array of 2 = \{\[0\] = array of 2 = .*"),
    # Pointers to nowhere and to something else are printed as gdb does.
    ("(KAPContainer*)16", "(KAPContainer *) 0x10"),
    ("(KAPContainer*)&bytes", r"re:\(KAPContainer \*\) 0x[0-9a-f]+|container .*"),
]

# What becomes of values that are damaged before they are printed.
TREE = "((NPOSObjectImpl::Dict*)longDict.fContainer->fPrimary)->fEntries.fRoot.fRoot"
LIST = "((NPOSObjectImpl::Array*)longArray.fContainer->fPrimary)"
DAMAGED = [
    (f"{TREE}->fChild[0] = {TREE}", "longDict", 'damaged dictionary = {... = unreadable}'),
    (f"{LIST}->fElements = (KAPContainer**)16", "longArray",
     'array of 301 = {... = unreadable}'),
    (f"{LIST}->fCount = 2000000000", "longArray", "damaged array"),
    ("number.fContainer->fSignature = (const char*)&bytes", "number", r"re:\{.*"),
]


def values_of(output):
    return dict(re.findall(r"^\$(\d+) = (.*)$", output, re.MULTILINE))


def gdb(*commands, arguments=()):
    """What gdb prints."""
    parts = [part for command in ("set width 0", "set print elements 0", *commands)
             for part in ("-ex", command)]
    # The leak check of AddressSanitizer does not work below a debugger.
    environment = dict(os.environ, ASAN_OPTIONS="detect_leaks=0", DEBUGINFOD_URLS="")
    done = subprocess.run(["gdb", "-nx", "-batch", *AUTO_LOAD, *parts, *arguments],
                          env=environment, check=False, capture_output=True, text=True, timeout=120)
    return done.stdout + done.stderr


def printed(*first):
    """What gdb prints for each row when the program has stopped."""
    return gdb(*first, "set breakpoint pending on", "break Stop", "run", "up",
               *(f"print {expression}" for expression, _ in ROWS),
               arguments=["--args", PROGRAM, LIBRARY])


AUTO_LOAD = []


class Printers(unittest.TestCase):
    maxDiff = None

    def match(self, expected, value, output):
        self.assertIsNotNone(value, output)
        if expected.startswith("re:"):
            self.assertRegex(value, f"^({expected[3:]})$")
        else:
            self.assertEqual(value, expected)

    def compare(self, output):
        values = values_of(output)
        for i, (expression, expected) in enumerate(ROWS, 1):
            with self.subTest(expression):
                self.match(expected, values.get(str(i)), output)

    def test_sourced(self):
        self.compare(printed(f"source {SCRIPT}"))

    def test_damaged_values(self):
        commands = [command for damage, expression, _ in DAMAGED
                    for command in (f"set var {damage}", f"print {expression}")]
        output = gdb(f"source {SCRIPT}", "set breakpoint pending on", "break Stop", "run", "up",
                     *commands, arguments=["--args", PROGRAM, LIBRARY])
        for i, (damage, _, expected) in enumerate(DAMAGED, 1):
            with self.subTest(damage):
                self.match(expected, values_of(output).get(str(i)), output)

    def test_loaded_with_the_library(self):
        # The place below the folder of such scripts is the path of the library.
        with tempfile.TemporaryDirectory() as folder:
            place = pathlib.Path(folder + str(LIBRARY.resolve()) + "-gdb.py")
            place.parent.mkdir(parents=True)
            shutil.copy(SCRIPT, place)
            AUTO_LOAD[:] = ["-iex", f"set auto-load scripts-directory {folder}",
                            "-iex", f"set auto-load safe-path {folder}"]
            try:
                self.compare(printed())
            finally:
                AUTO_LOAD.clear()


if __name__ == "__main__":
    if not shutil.which("gdb"):
        print("SKIPPED: gdb is not installed")
        sys.exit(77)
    PROGRAM, LIBRARY = sys.argv[1], pathlib.Path(sys.argv[2])
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
