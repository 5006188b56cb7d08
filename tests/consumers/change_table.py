#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""change_table HEADER (--drop METHOD | --append ARGUMENTS): makes the header of an older or newer
client: without its last method, or with one more method at the end.
"""
import pathlib
import re
import sys

path, change, argument = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
text = path.read_text(encoding="utf-8")
end = text.rindex("> {")
if change == "--drop":
    start = text.rindex("TKAPMethod<", 0, end)
    if not text.startswith(f'TKAPMethod<"{argument}"', start):
        sys.exit(f"{path}: {argument} is not the last method")
    head = re.sub(r",(\s*//[^\n]*)*\s*$", "", text[:start])
    path.write_text(head + text[end:], encoding="utf-8")
else:
    path.write_text(f"{text[:end]},\nTKAPMethod<{argument}>{text[end:]}", encoding="utf-8")
