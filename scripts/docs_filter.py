#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""docs_filter.py FILE: a source as Doxygen reads it. The headers are written to be read as they
are, with plain comments; this makes them Doxygen's. Imported by nothing: scripts/docs.doxygen names it.

- A block of // lines above a declaration becomes a block of /// lines, a comment after one ///<.
- A block above several declarations without a blank line between them is the comment of each.
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
STRING = re.compile(r'"(?:\\.|[^"\\])*"')
SCOPE = re.compile(r"\b(class|struct|enum|union|namespace|extern)\b")
ENDS_RUN = re.compile(r"(public|protected|private):|#")
ATTRIBUTE = re.compile(r"\[\[[^\]]*\]\] ?")


def literal(text):
    """Doxygen finds commands, links and HTML in prose where there are none."""
    return re.sub(r"([\\@<>#&])", r"\\\1", text)


def code_of(line):
    """The line without comments, the contents of strings, and template arguments."""
    text = STRING.sub('""', line).partition("//")[0].strip()
    while (plain := re.sub(r"<[^<>]*>", "", text)) != text:
        text = plain
    return text


def end_of_run(lines, start):
    """The declarations from line `start` up to a blank line, a comment, a type or the end of their
    scope: where they end, and how many there are.
    """
    depth, count, line, first = 0, 0, start, start
    while line < len(lines):
        text = code_of(lines[line])
        if depth == 0 and (not text or ENDS_RUN.match(text) or SCOPE.match(text)):
            return first, count
        depth += len(re.findall(r"[{(]", text)) - len(re.findall(r"[})]", text))
        if depth < 0:
            return first, count
        line += 1
        if depth == 0 and text.endswith((";", "}")):
            first, count = line, count + 1
    return first, count


def group_below(lines, comment):
    """Where the declarations end whose comment begins at line `comment`, if there are several."""
    start = comment
    while start < len(lines) and COMMENT.match(lines[start]):
        start += 1
    end, count = end_of_run(lines, start)
    return end if count > 1 else None


class Scopes:
    """Whether the lines read so far end in the body of a function."""

    def __init__(self):
        self.open, self.statement = [], ""

    def read(self, line):
        for part in re.findall(r"[{};]|[^{};]+", code_of(line)):
            if part == "{":
                self.open.append(bool(SCOPE.search(self.statement)))
            elif part == "}" and self.open:
                self.open.pop()
            self.statement = "" if part in "{};" else f"{self.statement} {part}"

    def in_body(self):
        return False in self.open


def header(lines):
    result, in_code, before, group_end = [], False, None, None
    scopes = Scopes()
    for number, line in enumerate(lines):
        if number == group_end:
            result.append("///@}")
            group_end = None
        comment = not scopes.in_body() and COMMENT.match(line)
        if comment and "SPDX-License-Identifier" not in line and "NOLINT" not in line:
            if before is None and not group_end:
                group_end = group_below(lines, number)
                result += ["///@{"] if group_end else []
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
        behind = not scopes.in_body() and BEHIND.match(line)
        if behind and "NOLINT" not in line and not line.startswith("}"):
            line = f"{behind[1]}  ///< {literal(behind[2])}"
        scopes.read(line)
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
