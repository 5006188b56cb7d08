#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""docs_filter.py FILE: a source as Doxygen reads it. The headers are written to be read as they
are, with plain comments; this makes them Doxygen's. Imported by nothing: scripts/docs.doxygen names it.

- A block of // lines above a declaration becomes a block of /// lines, a comment after one ///<.
- Indented code in a comment becomes a listing; everything else is taken literally. What a contract
  says of ownership, errors and threads becomes a paragraph.
- In a page, what follows the language of a listing (the name of its file) goes away, and so do
  links to headings, which Doxygen names in its own way.
"""
import pathlib
import re
import sys

COMMENT = re.compile(r"^(\s*)//(?!/)(.*)$")
BEHIND = re.compile(r"^(.*[;,{}].*?)\s+// (.*)$")
PARAGRAPH = re.compile(r" (Ownership|Errors|Threads)\b")
ATTRIBUTE = re.compile(r"\[\[[^\]]*\]\] ?")


def literal(text):
    """Doxygen finds commands, links and HTML in prose where there are none."""
    return re.sub(r"([\\@<>#&])", r"\\\1", text)


def header(lines):
    result, in_code, before = [], False, None
    for line in lines:
        comment = COMMENT.match(line)
        if comment and "SPDX-License-Identifier" not in line and "NOLINT" not in line:
            indent, text = comment[1], comment[2]
            # An indented line after one with text is the rest of a paragraph that hangs.
            code = text.startswith("   ") and (in_code or not before)
            if code != in_code:
                result.append(f"{indent}/// ~~~{'{.cpp}' if code else ''}")
            in_code, before = code, text
            if PARAGRAPH.match(text):
                result.append(f"{indent}///")
            result.append(f"{indent}///{text if code else literal(text.replace('   ', ' '))}")
            continue
        if in_code:
            result.append("/// ~~~")
        in_code, before = False, None
        behind = BEHIND.match(line)
        if behind and "NOLINT" not in line:
            line = f"{behind[1]}  ///< {literal(behind[2])}"
        result.append(ATTRIBUTE.sub("", line))
    return result


def page(lines):
    text = re.sub(r"^```(\w+) \S+$", r"```\1", "\n".join(lines), flags=re.MULTILINE)
    text = re.sub(r"(\]\([^)#\s]+\.md)#[^)]*\)", r"\1)", text)
    return re.sub(r"\[([^\]]+)\]\(#[^)]*\)", r"\1", text).splitlines()


def main():
    path = pathlib.Path(sys.argv[1])
    lines = path.read_text(encoding="utf-8").splitlines()
    made = page(lines) if path.suffix == ".md" else header(lines)
    print("\n".join(made))


if __name__ == "__main__":
    main()
