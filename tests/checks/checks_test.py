#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The checks of the sources reject what they must: each case is a small tree with one fault."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPTS = pathlib.Path(__file__).resolve().parents[2] / "scripts"

LAYERS = "low: public/include{,/source}/low/*\nhigh: public/include{,/source}/high/*\n"
HOST = LAYERS + "host: host/**\nwall host/**: public/include/high/*\n"


def run(check, files):
    """Exit status and output of the check on a tree of these files."""
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        subprocess.run(["git", "init", "-q", folder], check=True)
        for name, text in files.items():
            path = root / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        done = subprocess.run([sys.executable, SCRIPTS / check, "--root", root],
                              capture_output=True, text=True, check=False)
        return done.returncode, done.stdout + done.stderr


class Layers(unittest.TestCase):
    def test_faults(self):
        low, high = "public/include/low/", "public/include/high/"
        rows = [
            ("downwards", LAYERS, {high + "b.h": '#include "low/a.h"\n', low + "a.h": ""}, []),
            ("upwards", LAYERS, {low + "a.h": '#include "high/b.h"\n', high + "b.h": ""},
             [f"{low}a.h: includes {high}b.h, which is 1 layer above (low -> high)"]),
            ("upwards, from a source in angle brackets", LAYERS,
             {"public/include/source/low/a.cpp": "#  include <high/b.h>\n", high + "b.h": ""},
             ["public/include/source/low/a.cpp: includes public/include/high/b.h, which is 1 layer"
              " above (low -> high)"]),
            ("in no layer", LAYERS, {low + "a.h": "", "tools/c.cpp": ""},
             ["tools/c.cpp: belongs to no layer of scripts/layers.txt"]),
            ("missing file", LAYERS, {low + "a.h": '#include "low/z.h"\n'},
             [f'{low}a.h: includes "low/z.h", which does not exist']),
            ("generated file", LAYERS,
             {low + "a.h": '#include "low/z.h"\n', low + "z.h.in": ""}, []),
            ("in a comment", LAYERS, {low + "a.h": '// #include "high/b.h"\n', high + "b.h": ""},
             []),
            ("through a wall", HOST, {"host/c.cpp": '#include "high/b.h"\n', high + "b.h": ""},
             [f"host/c.cpp: includes {high}b.h, which crosses a wall"]),
            ("ring of headers", LAYERS,
             {low + "a.h": '#include "low/b.h"\n', low + "b.h": '#include "low/a.h"\n'},
             [f"ring: {low}a.h -> {low}b.h -> {low}a.h"]),
            # The source of a.h stands elsewhere and includes what includes a.h.
            ("ring of units", LAYERS,
             {low + "a.h": "int a;\n", low + "b.h": '#include "low/a.h"\n',
              "public/include/source/low/a.cpp": '#include "low/a.h"\n#include "low/b.h"\n'},
             [f"ring: {low}a.h -> {low}b.h -> {low}a.h"]),
            ("a list of headers is a unit of its own", LAYERS,
             {low + "a.h": '// All.\n#pragma once\n#include "low/b.h"\n', low + "b.h": "",
              "public/include/source/low/a.cpp": '#include "low/a.h"\n#include "low/b.h"\n'}, []),
            ("a header may declare what a higher layer implements", LAYERS,
             {low + "a.h": "int a;\n", high + "b.h": '#include "low/a.h"\n',
              "public/include/source/high/a.cpp": '#include "low/a.h"\n#include "high/b.h"\n'},
             []),
        ]
        for why, layers, files, faults in rows:
            with self.subTest(why):
                status, output = run("check_layers", {"scripts/layers.txt": layers, **files})
                self.assertEqual(status, 1 if faults else 0, output)
                if faults:
                    self.assertEqual(output.splitlines(), faults)


class Contracts(unittest.TestCase):
    HEAD = 'struct KAPThing\n    : TKAPInterface<"KAPThing",\n'
    TAGGED = '// Twice `x`. [any thread]\nTKAPMethod<"A", "KAPA", int(int x)>'

    def test_faults(self):
        rows = [
            ("complete", self.TAGGED, []),
            ("over two lines", self.TAGGED.replace("Twice", "Two\n// times"), []),
            ("no contract", self.TAGGED + ',\nTKAPMethod<"B", "KAPB", void()>',
             ["B has no contract above it"]),
            ("no tag", '// Nothing.\nTKAPMethod<"B", "KAPB", void()>',
             ["B has a contract that does not end with a thread tag"]),
            ("an unknown tag", '// Nothing. [main thread]\nTKAPMethod<"B", "KAPB", void()>',
             ["B has a contract that does not end with a thread tag"]),
            ("only a tag", '// [any thread]\nTKAPMethod<"B", "KAPB", void()>',
             ["B has a thread tag but no contract"]),
            ("not directly above", self.TAGGED.replace("]\n", "]\n\n"),
             ["A has no contract above it"]),
        ]
        for why, methods, faults in rows:
            with self.subTest(why):
                status, output = run("check_contracts", {
                    "public/include/kap/KAPThing.h": f"{self.HEAD}{methods}> {{}};\n"})
                self.assertEqual(status, 1 if faults else 0, output)
                if faults:
                    told = [line.split(" KAPThing ", 1)[1] for line in output.splitlines()]
                    self.assertEqual(told, faults)


class Licences(unittest.TestCase):
    SPDX = "SPDX-License-Identifier: MIT\n"

    def test_faults(self):
        rows = [
            ("a source with the line", {"a.cpp": "// " + self.SPDX}, []),
            ("a script has it after its first line", {"run": "#!/bin/sh\n# " + self.SPDX}, []),
            ("a source without it", {"host/a.h": "int a;\n"}, ["host/a.h"]),
            ("a script without it", {"run": "#!/bin/sh\n"}, ["run"]),
            ("files of the build and of the packages without it",
             {"a.pc.in": "Name: a\n", "debian/overrides-dev": "a: b\n", "x.map": "V {};\n"},
             ["a.pc.in", "debian/overrides-dev", "x.map"]),
            ("too far down", {"CMakeLists.txt": "\n\n# " + self.SPDX}, ["CMakeLists.txt"]),
            ("another licence", {"a.c": "// " + self.SPDX.replace("MIT", "ISC")}, ["a.c"]),
            ("documents and test data have none",
             {"a.py": "# " + self.SPDX, "a.md": "# A\n", "fuzz/seeds/text/a.c": "a"}, []),
        ]
        for why, files, faults in rows:
            with self.subTest(why):
                status, output = run("check_licences", files)
                self.assertEqual(status, 1 if faults else 0, output)
                if faults:
                    self.assertEqual([line.split(":")[0] for line in output.splitlines()], faults)


if __name__ == "__main__":
    unittest.main()
