#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""explained_messages_test ROOT: `posutil validate` knows the rule of each message of the validator.

It finds the rule from the text of the message. Without a row for a new text, it would show the
place of "category" instead of the attribute that is violated.
"""
import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(sys.argv[1])
VALIDATOR = ROOT / "source/kaputils/source/posimpl/validator"
EXPLAINER = (ROOT / "tools/posutil/commands/verdicts/Explainer.cpp").read_text("utf-8")

LITERAL = r'"((?:[^"\\]|\\.)*)"'
# About the category, or about a member that the message names.
NOT_ABOUT_ATTRIBUTES = {"Array object expected", "Dict object expected", "Unknown member %s",
                        "Missing required member %s"}


def constant(name):
    """The text of a constant of the explainer."""
    return re.search(rf"\b{name} = {LITERAL}", EXPLAINER).group(1)


def table(name):
    """The initializer of a table of the explainer."""
    return re.search(rf"\b{name}\[\] = \{{(.*?)\}};", EXPLAINER, re.DOTALL).group(1)


def words(text):
    return re.findall(LITERAL, text)


class ExplainedMessages(unittest.TestCase):
    def test_messages_have_attributes(self):
        rows = [words(re.sub(r"\bk\w+", lambda name: f'"{constant(name.group())}"', row))
                for row in re.findall(r"\{([^{}]*)\}", table("kAttributes"))]
        keywords = (VALIDATOR / "Keywords.h").read_text("utf-8")
        messages = set()
        for source in VALIDATOR.glob("*Check*.cpp"):
            if source.name == "SchemaCheck.cpp":
                continue  # its messages are about schemas
            code = re.sub(r"//.*", "", source.read_text("utf-8"))
            messages.update(text for text in words(re.sub(r"#include.*", "", code)) if " " in text)
        messages = {text for text in messages if not text.endswith(":")}  # contexts
        self.assertGreaterEqual(messages, NOT_ABOUT_ATTRIBUTES)
        for message in messages - NOT_ABOUT_ATTRIBUTES:
            attribute = next((attribute for start, end, attribute in rows
                              if message.startswith(start) and message.endswith(end)), None)
            self.assertIsNotNone(attribute, f"kAttributes has no row for: {message}")
            self.assertIn(f'{{"{attribute}"}}', keywords)

    def test_intrinsic_types(self):
        keywords = dict(re.findall(r"const Keyword (\w+)\{\"(\w+)\"\}",
                                   (VALIDATOR / "Keywords.h").read_text("utf-8")))
        rows = re.findall(r"\{&Keywords::(\w+),", (VALIDATOR / "Intrinsics.cpp").read_text("utf-8"))
        self.assertEqual(sorted(keywords[row] for row in rows), sorted(words(table("kIntrinsics"))))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
