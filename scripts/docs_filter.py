#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""docs_filter.py FILE: a source as Doxygen reads it. The headers are written to be read as they
are, with plain comments; this makes them Doxygen's. Imported by nothing:
scripts/docs.doxygen names it.

- A block of // lines above a declaration becomes a block of /// lines, a comment after one ///<.
- A block above several declarations without a blank line between them is the comment of each.
- Indented code in a comment becomes a listing; everything else is taken literally. What a contract
  says of ownership, errors and threads becomes a paragraph.
- A comment that stands alone before the namespace is that of the file.
- In a page, what follows the language of a listing (the name of its file) goes away, and so do
  links to headings, which Doxygen names in its own way. Links to headers lead to their pages.
"""
import pathlib
import re
import sys

COMMENT = re.compile(r"^(\s*)//(?!/)(.*)$")
TRAILING = re.compile(r"^(.*[;,{}].*?)\s+// (.*)$")
PARAGRAPH = re.compile(r" (Ownership|Errors|Threads)\b")
STRING = re.compile(r'"(?:\\.|[^"\\])*"')
SCOPE = re.compile(r"\b(class|struct|enum|union|namespace|extern)\b")
ENDS_RUN = re.compile(r"(public|protected|private):|#(?!define)")
BASES = re.compile(r"\s*(template\b.*)?\b(struct|class)\b.*:")
DELETED = re.compile(r"\) *(const|&|&&|noexcept)* *= delete;")
SPECIAL = re.compile(r"~\w+\(|operator=\(|(\w+)\((const \1&|\1&&)")
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


def declarations(lines, start):
    """Where the declarations from line `start` begin, up to a blank line, a comment, a type or the
    end of their scope.
    """
    starts, depth, line = [start], 0, start
    while line < len(lines):
        text = code_of(lines[line])
        if depth == 0 and (not text or ENDS_RUN.match(text) or SCOPE.match(text)):
            break
        depth += len(re.findall(r"[{(]", text)) - len(re.findall(r"[})]", text))
        if depth < 0:
            break
        line += 1
        is_macro = lines[starts[-1]].startswith("#define") and not text.endswith("\\")
        if is_macro or (depth == 0 and text.endswith((";", "}"))):
            starts.append(line)
    return starts[:-1]


def is_documentation(line):
    return (COMMENT.match(line) and "SPDX-License-Identifier" not in line and "NOLINT" not in line)


class Scopes:
    """Where the lines read so far end."""

    def __init__(self):
        self.open, self.statement = [], ""

    def read(self, line):
        for part in re.findall(r"[{};]|[^{};]+", code_of(line)):
            if part == "{":
                self.open.append(bool(SCOPE.search(self.statement)))
            elif part == "}" and self.open:
                self.open.pop()
            self.statement = "" if part in "{};" else f"{self.statement} {part}"

    def documents(self):
        """Whether a comment here belongs to a declaration: not in the body of a function, and not
        among the methods of an interface, whose contracts are in reference.md."""
        return False not in self.open and not BASES.match(self.statement)


def documentation(lines):
    """A comment as Doxygen's. Indented code is a listing, but an indented line directly after one
    with text is the rest of a paragraph that hangs.
    """
    result, in_code, before = [], False, None
    for line in lines:
        indent, text = COMMENT.match(line).groups()
        code = text.startswith("   ") and (in_code or not before)
        if code != in_code:
            result.append(f"{indent}/// ~~~{'{.cpp}' if code else ''}")
        in_code, before = code, text
        if PARAGRAPH.match(text):
            result.append(f"{indent}///")
        result.append(f"{indent}///{text if code else literal(text.replace('   ', ' '))}")
    return [*result, "/// ~~~"] if in_code else result


def standing(text):
    """What is true of every declaration of this kind, whatever comment precedes it."""
    if DELETED.search(text):
        return ["/// Does not compile."]
    if SPECIAL.search(text):
        return ["/// The class says what this does to ownership."]
    return None


def header(lines):
    result, scopes, repeated, number = [], Scopes(), {}, 0
    column = None  # of the comment after the declaration in the line before
    while number < len(lines):
        line = lines[number]
        if column and line.find("//") == column and not line[:column].strip():
            result.append(f"///< {literal(line[column + 3:])}")
            number += 1
            continue
        if scopes.documents() and is_documentation(line):
            end = number
            while end < len(lines) and is_documentation(lines[end]):
                end += 1
            block = documentation(lines[number:end])
            if not scopes.open and end < len(lines) and not lines[end].strip():
                result.append("/// @file")  # nothing follows directly
            result += block
            repeated = dict.fromkeys(declarations(lines, end)[1:], block)
            number, column = end, None
            continue
        trailing = scopes.documents() and TRAILING.match(line)
        column = None
        if trailing and "NOLINT" not in line and not line.startswith("}"):
            column = line.find("//")
            line = f"{trailing[1]}  ///< {literal(trailing[2])}"
        else:
            has_own = result and re.match(r" *///(?!<)", result[-1])
            known = standing(code_of(line)) if scopes.documents() and scopes.open else None
            result += [] if has_own else known or repeated.get(number, [])
        scopes.read(lines[number])
        result.append(ATTRIBUTE.sub("", line))
        number += 1
    return result


def c_header(lines):
    """The C header has comments of C, and macros for the names, which the tables of reference.md
    show better."""
    text = re.sub(r"#define \w+_(NAME \"|METHODS\()(.*\\\n)*.*\n", "", "\n".join(lines))
    text = re.sub(r"^(KAPUTILS_INTERFACES\(\w+\)|static_assert\((.*,\n)+.*);?$", "", text,
                  flags=re.MULTILINE)
    text = re.sub(r"(?<=;)( *)/\* (.*?) \*/$", r"\1/**< \2 */", text, flags=re.MULTILINE)

    lines, result, repeated = text.splitlines(), [], {}
    for number, line in enumerate(lines):
        result += repeated.get(number, [])
        if re.match(r" *(/\*|\*) ", line):
            line = literal(line)
        if line.lstrip().startswith("/* "):
            end = next(i for i in range(number, len(lines)) if lines[i].endswith("*/")) + 1
            mark = "/** " if lines[end].strip() else "/** @file\n * "
            line = line.replace("/* ", mark, 1)
            repeated = {start: [line, *lines[number + 1:end]]
                        for start in c_declarations(lines, end)[1:]}
        result.append(line)
    return result


def c_declarations(lines, start):
    """Where the macros or the types from line `start` begin that follow each other directly."""
    starts, word = [start], lines[start].split(" ", 1)[0]
    for line in range(start + 1, len(lines)):
        if lines[line].startswith(word):
            starts.append(line)
        elif not lines[line].startswith("    ") and not lines[line - 1].endswith("\\"):
            break
    return starts if word in ("#define", "typedef") else [start]


def place_of(path):
    """How a source includes the header."""
    return re.sub(r".*/include/", "", str(path))


def page(lines):
    text = re.sub(r"^```(\w+) \S+$", r"```\1", "\n".join(lines), flags=re.MULTILINE)
    text = re.sub(r"(\]\([^)#\s]+\.md)#[^)]*\)", r"\1)", text)
    text = re.sub(r"\[([^\]]+)\]\([^)\s]*/include/([^)\s]+\.h)\)", r'@ref \2 "\1"', text)
    return re.sub(r"\[([^\]]+)\]\(#[^)]*\)", r"\1", text).splitlines()


def main():
    path = pathlib.Path(sys.argv[1])
    lines = path.read_text(encoding="utf-8").splitlines()
    if path.suffix == ".md":
        made = page(lines)
    else:
        made = c_header(lines) if path.name == "KAPUtilsC.h" else header(lines)
        made[0] = f'/** @file\n`\\#include "{place_of(path)}"` */'  # in place of the licence
    print("\n".join(made))


if __name__ == "__main__":
    main()
