# SPDX-License-Identifier: MIT
"""Reads the interface declarations of the public headers: every TKAPInterface with its methods, as
text. Imported by check_contracts and make_reference.
"""
import dataclasses
import pathlib
import re

TAGS = ("[any thread]", "[shared read]", "[exclusive]", "[binding thread]")

DECLARATION = re.compile(r"^struct (\w+)\s*:\s*(?:\w+::)*TKAPInterface<", re.MULTILINE)
METHOD = re.compile(r"(?:\w+::)*TKAPMethod<")
TOKEN = re.compile(r'//[^\n]*|"(?:\\.|[^"\\])*"|->|[<({\[]|[>)}\]]|,', re.DOTALL)
CLOSES = {"<": ">", "(": ")", "{": "}", "[": "]"}


@dataclasses.dataclass
class Method:
    name: str
    procedure: str
    signature: str  # "KAPError*(KAPContainer** out)"
    traits: str     # the text of the declaration; empty for the default
    comment: str    # the lines directly above, without their slashes
    line: int
    stands_alone: bool  # nothing precedes it in its line, so the comment is its own

    @property
    def tag(self):
        """The thread tag that ends the contract, or None."""
        return next((tag for tag in TAGS if self.stands_alone and self.comment.endswith(tag)), None)


@dataclasses.dataclass
class Interface:
    struct: str
    name: str  # as the binder knows it
    comment: str
    line: int
    methods: list


def comment_above(text, position):
    """The block of // lines directly above the line of `position`, joined; its paragraphs stay."""
    lines = text[:text.rfind("\n", 0, position) + 1].splitlines()
    block = []
    while lines and lines[-1].strip().startswith("//"):
        block.append(lines.pop().strip().removeprefix("//").removeprefix(" "))
    return "\n".join(reversed(block)).strip()


def arguments(text, start):
    """The (position, text) of each template argument from just past the "<", comments dropped."""
    found, open_brackets, begin, end = [], [">"], start, None
    for token in TOKEN.finditer(text, start):
        word = token[0]
        if word.startswith("//") and not text[begin:token.start()].strip():
            begin = token.end()
        elif word in CLOSES:
            open_brackets.append(CLOSES[word])
        elif word == open_brackets[-1]:
            open_brackets.pop()
        if (word == "," and len(open_brackets) == 1) or not open_brackets:
            argument = re.sub(r"//[^\n]*", "", text[begin:token.start()])
            lead = len(text[begin:token.start()]) - len(text[begin:token.start()].lstrip())
            found.append((begin + lead, " ".join(argument.split())))
            begin = token.end()
        if not open_brackets:
            end = token.end()
            break
    if end is None:
        raise ValueError("a declaration without an end")
    return found


def method_at(text, position):
    line_start = text.rfind("\n", 0, position) + 1
    head = METHOD.match(text, position)
    parts = [part for _, part in arguments(text, head.end())]
    name, procedure, signature = parts[:3]
    return Method(name.strip('"'), procedure.strip('"'), signature, ", ".join(parts[3:]),
                  comment_above(text, position), text.count("\n", 0, position) + 1,
                  not text[line_start:position].strip())


def read_header(path):
    """The interfaces that the header declares, in its order."""
    text = path.read_text(encoding="utf-8")
    interfaces = []
    for declaration in DECLARATION.finditer(text):
        (_, name), *methods = arguments(text, declaration.end())
        interfaces.append(Interface(declaration[1], name.strip('"'),
                                    comment_above(text, declaration.start()),
                                    text.count("\n", 0, declaration.start()) + 1,
                                    [method_at(text, position) for position, _ in methods]))
    return interfaces


def introduction(path):
    """The comment that a header begins with: the block directly before its namespace opens."""
    text = path.read_text(encoding="utf-8")
    position = text.find("\nnamespace")
    return comment_above(text, len(text[:position].rstrip()) + 1) if position >= 0 else ""


def headers(root):
    """The public headers that declare interfaces or list them, as (path relative to public/include,
    introduction, interfaces).
    """
    folder = pathlib.Path(root) / "public" / "include"
    found = []
    for path in sorted(folder.rglob("*.h")):
        interfaces = read_header(path)
        is_list = "TKAPInterfaceSet<" in path.read_text(encoding="utf-8")
        if interfaces or (is_list and path.name != "KAPInterface.h"):
            found.append((path.relative_to(folder), introduction(path), interfaces))
    return found
