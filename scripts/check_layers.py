#!/usr/bin/env python3
"""Fails when a folder includes a folder that it may not: arrows run downward only."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# folder -> folders it may include besides itself. A public header include/vx3/<folder> counts as <folder>.
ALLOWED = {
    "platform/archive": set(),
    "platform/genapi/include": set(),
    "platform/genapi/base": {"platform/genapi/include"},
    "platform/genapi/description": {"platform/archive", "platform/genapi/include", "platform/genapi/base"},
    "platform/genapi/formula": {"platform/genapi/base"},
    "platform/genapi/nodes": {"platform/genapi/include", "platform/genapi/base", "platform/genapi/description"},
    "platform/genapi/kinds": {"platform/genapi/include", "platform/genapi/base", "platform/genapi/description",
                              "platform/genapi/formula", "platform/genapi/nodes"},
    "platform/genapi/registers": {"platform/genapi/include", "platform/genapi/base",
                                  "platform/genapi/description", "platform/genapi/nodes"},
    "platform/genapi/map": {"platform/genapi/include", "platform/genapi/base", "platform/genapi/description",
                            "platform/genapi/nodes", "platform/genapi/kinds", "platform/genapi/registers"},
    "core": set(),
    "image": {"core"},
    "processing/kernels": set(),
    "processing": {"core", "image", "processing/kernels"},
    "genicam": {"core", "platform/genapi/include"},
    "device": {"core", "image", "genicam"},
    "wire": set(),
    "gev/protocol": {"core", "wire"},
    "gev/net": {"core", "gev"},
    "gev/control": {"core", "gev", "wire", "gev/protocol", "gev/net"},
    "gev/stream": {"core", "image", "device", "gev", "wire", "gev/protocol"},
    "gev/receive": {"core", "image", "device", "gev", "wire", "gev/protocol", "gev/net", "gev/control", "gev/stream"},
    "gev": {"core", "image", "genicam", "device", "wire", "gev/protocol", "gev/net", "gev/control", "gev/stream",
            "gev/receive"},
    "simulated/camera": {"core", "gev", "wire", "gev/protocol", "gev/net"},
    "simulated": {"core", "image", "genicam", "device", "simulated/camera"},
    "library/defaults": {"core", "image"},
    "library": {"core", "image", "genicam", "device", "gev", "simulated", "library/defaults"},
    "capi": {"core", "image", "genicam", "device", "library", "processing"},
}
# Libraries of others that are written in quotes, and the one folder that may call them.
FOREIGN = {"hwy/": "processing/kernels"}
# Programs compile against the installed headers only.
PUBLIC_ONLY = ["tools", "examples"]

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
BY_LENGTH = sorted(ALLOWED, key=len, reverse=True)


def folder_of(path):
    """The layer folder that an include text or a path below src/ or include/vx3/ belongs to."""
    text = path[4:] if path.startswith("vx3/") else path
    if text == "vx3.h":
        return "capi"
    if text.startswith(("GenApi/", "Base/")):  # the imported surface's own include paths
        return "platform/genapi/include"
    for folder in BY_LENGTH:
        if text.startswith(folder + "/"):
            return folder
    return None


def sources(top):
    return [p for p in (ROOT / top).rglob("*") if p.suffix in (".h", ".cpp", ".c")]


def main():
    wrong = []
    for top, strip in (("src", "src"), ("include/vx3", "include")):
        for path in sources(top):
            relative = path.relative_to(ROOT / strip).as_posix()
            here = folder_of(relative)
            if here is None:
                wrong.append(f"{path.relative_to(ROOT)}: belongs to no layer")
                continue
            for text in INCLUDE.findall(path.read_text(encoding="utf-8")):
                there = folder_of(text)
                if any(text.startswith(prefix) and here == owner for prefix, owner in FOREIGN.items()):
                    continue
                if there is None:
                    local = (path.parent / text).exists()
                    if not local:
                        wrong.append(f"{path.relative_to(ROOT)}: includes {text}, which is in no layer")
                elif there != here and there not in ALLOWED[here]:
                    wrong.append(f"{path.relative_to(ROOT)}: {here} may not include {there} ({text})")
            if strip == "include":
                for text in INCLUDE.findall(path.read_text(encoding="utf-8")):
                    if not text.startswith("vx3/"):
                        wrong.append(f"{path.relative_to(ROOT)}: a public header includes {text}")
    for top in PUBLIC_ONLY:
        for path in sources(top):
            for text in INCLUDE.findall(path.read_text(encoding="utf-8")):
                if not text.startswith("vx3/") and not any((path.parent / up / text).exists() for up in (".", "..")):
                    wrong.append(f"{path.relative_to(ROOT)}: a program includes {text}")
    print("\n".join(wrong) if wrong else "layers: arrows run downward only")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
