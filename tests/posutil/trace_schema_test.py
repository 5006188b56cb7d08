#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""trace_schema_test POSUTIL SAMPLES: traces of real commands are what trace.schema.json says."""
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

import jsonschema

SCHEMA = json.loads(pathlib.Path(__file__).with_name("trace.schema.json").read_text("utf-8"))
POSUTIL, SAMPLES = sys.argv[1], pathlib.Path(sys.argv[2])


class TraceSchema(unittest.TestCase):
    def test_traces_of_commands(self):
        rows = [(["print", "--to", "typea", SAMPLES / "team.json"], 0),
                (["get", SAMPLES / "team.json", "missing"], 1),
                (["validate", "--schema", SAMPLES / "people.txt", "--type", "Person",
                  SAMPLES / "broken-person.txt"], 1),
                (["print", "--from", "text", SAMPLES / "team.json"], 3)]
        for arguments, status in rows:
            with self.subTest(arguments), tempfile.TemporaryDirectory() as folder:
                trace = pathlib.Path(folder) / "trace.json"
                done = subprocess.run([POSUTIL, "--trace", trace, *arguments], check=False,
                                      stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
                self.assertEqual(done.returncode, status, done.stderr)
                events = json.loads(trace.read_text("utf-8"))
                jsonschema.Draft202012Validator(SCHEMA).validate(events)

    def test_the_schema_rejects(self):
        event = {"name": "A.B", "ph": "X", "ts": 0, "dur": 1, "pid": 1, "tid": 1,
                 "args": {"caller": "", "component": "", "arguments": "", "depth": 0}}
        validator = jsonschema.Draft202012Validator(SCHEMA)
        validator.validate([event])
        for change in {"ph": "B"}, {"dur": "1"}, {"tid": 0}, {"args": {}}:
            self.assertFalse(validator.is_valid([{**event, **change}]), change)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
