#!/usr/bin/env python3
"""The programs that README.md shows are files that are built and run: fails when a text and its file differ.

A block of code belongs to a file when the line before it is a comment that names the file:
    <!-- examples/c/first_frames.c -->
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BLOCK = re.compile(r"^<!-- (\S+) -->\n```\w*\n(.*?)^```$", re.M | re.S)
PROGRAM = re.compile(r"^```(?:c|cpp|c\+\+)\n", re.M)


def main():
    text = (ROOT / "README.md").read_text()
    blocks = BLOCK.findall(text)
    errors = [f"README.md: {len(PROGRAM.findall(text))} programs, but {len(blocks)} name their file"
              for _ in range(1) if len(PROGRAM.findall(text)) != len(blocks) or not blocks]
    for name, code in blocks:
        path = ROOT / name
        if not path.is_file():
            errors.append(f"README.md: there is no {name}")
        elif path.read_text() != code:
            errors.append(f"README.md: its text of {name} is not the file's")
    for error in errors:
        print(error)
    if not errors:
        print("README: " + ", ".join(name for name, _ in blocks) + " are shown as they are")
    return 1 if errors else 0


sys.exit(main())
