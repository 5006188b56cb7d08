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

ROWS = [
    ("atom", r'"a \"text\""'),
    ("atomHandle", r'"a \"text\""'),
    ("noAtom", "null"),
    ("error", 'error "no room" of "Printed", code 7'),
    ("errorHandle", 'error "no room" of "Printed", code 7'),
    ("number", "number -0.25"),
    ("string", 'string "Ada Lovelace"'),
    ("unicode", 'Unicode string "Hej!"'),
    ("array", 'array of 3 = {[0] = number 1, [1] = string "two", '
              '[2] = array of 1 = {[0] = number 3}}'),
    ("dict", 'dictionary of 2 = {"a" = dictionary of 1 = {"c" = string "text"}, "b" = number 2}'),
    ("handle", 'dictionary of 2 = {"a" = dictionary of 1 = {"c" = string "text"}, "b" = number 2}'),
    ("noHandle", "null"),
    ("nothing", "null"),
    ("stream", 'container "KAPHostPositionableStream"'),
    ("data", 'binary data "image" of 3 bytes'),
    ("pointer", "raw pointer 0x10"),
    ("*(NPOSObjectImpl::Number*)number.fContainer->fPrimary", "number -0.25"),
    # A pointer to nowhere is printed as gdb does.
    ("(KAPContainer*)16", "(KAPContainer *) 0x10"),
]


def printed(*first):
    """What gdb prints for each row."""
    commands = [*first, "set width 0", "set breakpoint pending on", "break Stop", "run", "up"]
    commands += [f"print {expression}" for expression, _ in ROWS]
    arguments = [part for command in commands for part in ("-ex", command)]
    # The leak check of AddressSanitizer does not work below a debugger.
    environment = dict(os.environ, ASAN_OPTIONS="detect_leaks=0", DEBUGINFOD_URLS="")
    done = subprocess.run(["gdb", "-nx", "-batch", *AUTO_LOAD, *arguments, "--args", PROGRAM,
                           LIBRARY], env=environment, check=False, capture_output=True, text=True,
                          timeout=120)
    values = dict(re.findall(r"^\$(\d+) = (.*)$", done.stdout, re.MULTILINE))
    return [values.get(str(i + 1)) for i in range(len(ROWS))], done.stdout + done.stderr


AUTO_LOAD = []


class Printers(unittest.TestCase):
    maxDiff = None

    def compare(self, values, output):
        for (expression, expected), value in zip(ROWS, values):
            with self.subTest(expression):
                self.assertIsNotNone(value, output)
                self.assertEqual(value, expected)

    def test_sourced(self):
        self.compare(*printed(f"source {SCRIPT}"))

    def test_loaded_with_the_library(self):
        # The place below the folder of such scripts is the path of the library.
        with tempfile.TemporaryDirectory() as folder:
            place = pathlib.Path(folder + str(LIBRARY.resolve()) + "-gdb.py")
            place.parent.mkdir(parents=True)
            shutil.copy(SCRIPT, place)
            AUTO_LOAD[:] = ["-iex", f"set auto-load scripts-directory {folder}",
                            "-iex", f"set auto-load safe-path {folder}"]
            try:
                self.compare(*printed())
            finally:
                AUTO_LOAD.clear()


if __name__ == "__main__":
    if not shutil.which("gdb"):
        print("SKIPPED: gdb is not installed")
        sys.exit(77)
    PROGRAM, LIBRARY = sys.argv[1], pathlib.Path(sys.argv[2])
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
