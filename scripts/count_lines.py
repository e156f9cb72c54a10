#!/usr/bin/env python3
"""Prints the ratio of test lines to product lines (code lines: no blanks, no comment lines)."""
import pathlib
import re
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
CODE = (".cpp", ".h", ".c", ".py", ".sh", ".cmake")


def code_lines(path):
    text = path.read_text(encoding="utf-8", errors="replace")
    native = path.suffix in (".cpp", ".h", ".c")
    if native:
        text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    mark = "//" if native else "#"
    return sum(1 for line in text.splitlines() if line.strip() and not line.strip().startswith(mark))


files = subprocess.run(["git", "-C", str(ROOT), "ls-files"], capture_output=True, text=True, check=True).stdout
tests = product = 0
for name in files.splitlines():
    if not name.endswith(CODE):
        continue
    if name.startswith(("tests/", "fuzz/")):
        tests += code_lines(ROOT / name)
    elif name.startswith(("src/", "include/", "tools/")):
        product += code_lines(ROOT / name)
print(f"tests / product lines: {tests} / {product} = {tests / max(product, 1):.2f}")
