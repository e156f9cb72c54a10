#!/usr/bin/env python3
"""Fails when a room includes what its row in ROOMS does not name: arrows run downward only.

    scripts/check_layers.py [--commands build/test/compile_commands.json] [--links build/test/links.txt]
                            [--root DIR] [--cache FILE] [--edges]
"""
import argparse
import collections
import pathlib
import re
import sys

from include_reader import Reader

# Room: what it may include besides itself and the C++ standard library. A room is a folder below src/ (with the
# headers of the same name below include/vx3/) or, with its whole path, a folder of programs. <name> is a library
# of others, <system> the operating system's headers, `installed` everything below include/vx3/. A row that ends in
# /** covers the folders below it too; any other folder with sources needs a row of its own.
ROOMS = {
    "wire": "",
    "platform/archive": "wire <zip.h>",
    "platform/genapi/include/**": "",
    "platform/genapi/base": "platform/genapi/include",
    "platform/genapi/formula": "platform/genapi/base",
    "platform/genapi/description": "platform/genapi/include platform/genapi/base platform/archive <pugixml.hpp>",
    "platform/genapi/nodes": "platform/genapi/include platform/genapi/base platform/genapi/description",
    "platform/genapi/kinds": "platform/genapi/include platform/genapi/base platform/genapi/description"
                             " platform/genapi/formula platform/genapi/nodes",
    "platform/genapi/registers": "platform/genapi/include platform/genapi/base platform/genapi/description"
                                 " platform/genapi/nodes",
    "platform/genapi/map": "platform/genapi/include platform/genapi/base platform/genapi/description"
                           " platform/genapi/nodes platform/genapi/kinds platform/genapi/registers",
    "platform/clprotocol": "wire platform/archive <system>",
    "platform/gentl": "",
    "core": "<log4cpp> <system>",
    "image": "core",
    "processing/kernels": "<hwy>",
    "processing/colormaps": "",
    "processing": "core image processing/kernels processing/colormaps <opencv2> <system>",
    "genicam": "core platform/genapi/include <system>",
    "device": "core image genicam <system>",
    "gev/params": "",
    "gev/protocol": "core wire gev/params",
    "gev/net": "core gev/params <system>",
    "gev/control": "core wire gev/params gev/protocol gev/net <system>",
    "gev/stream": "core image device wire gev/params gev/protocol",
    "gev/receive": "core image device wire gev/params gev/protocol gev/net gev/control gev/stream <system>",
    "gev": "core image genicam device wire gev/params gev/protocol gev/net gev/control gev/stream gev/receive <system>",
    "simulated/camera": "core wire gev/params gev/protocol gev/net <system>",
    "simulated/publish": "core image genicam device wire platform/archive gev/params gev/protocol gev/net"
                         " simulated/camera <pugixml.hpp> <system>",
    "simulated": "core image genicam device wire gev/params gev/protocol gev/net simulated/camera <opencv2> <system>",
    "remote": "core image genicam device wire gev/params gev/protocol gev/net gev/control gev/receive gev <system>",
    "gentl": "core image genicam device platform/gentl platform/archive <system>",
    "cameralink": "core image genicam device wire platform/clprotocol platform/archive <system>",
    "grabber": "core image genicam device <system>",
    "library": "core image genicam device gev simulated simulated/publish remote gentl cameralink grabber <system>",
    "capi": "core image genicam device simulated/publish library processing <system>",
    # Programs compile against the installed headers only.
    "tools/vx3/base": "installed <CLI> <nlohmann> <system>",
    "tools/vx3/features": "installed tools/vx3/base <nlohmann>",
    "tools/vx3/search": "installed tools/vx3/base",
    "tools/vx3/grab": "installed tools/vx3/base <opencv2> <system>",
    "tools/vx3/serve": "installed tools/vx3/base tools/vx3/features <system>",
    "tools/vx3/commands": "installed tools/vx3/base tools/vx3/features tools/vx3/search tools/vx3/grab"
                          " tools/vx3/serve"
                          " <nlohmann> <system>",
    "tools/vx3": "installed tools/vx3/base tools/vx3/commands <CLI>",
    "tools/web/**": "installed <CLI> <nlohmann> <system>",
    "examples/**": "installed <system>",
    "bindings/**": "installed <Python.h> <system>",
    "plugins/gstreamer/**": "installed <gst> <glib.h> <system>",
    "plugins/gentl/**": "installed platform/gentl <system>",
}
# Files that belong to another room than their folder says.
HOMES = {
    "include/vx3/vx3.h": "capi",
    "include/vx3/vx3_types.h": "capi",
    "include/vx3/gev/NetParam.h": "gev/params",  # the lowest of the rooms of gev; src/ has nothing in it
    "include/vx3/gev/GvcpCommand.h": "gev/params",
    "include/vx3/gev/GvspBlock.h": "gev/params",
    "include/vx3/simulated/Block.h": "simulated/camera",
    "include/vx3/simulated/Camera.h": "simulated/camera",
    "include/vx3/simulated/CameraConfig.h": "simulated/camera",
    "include/vx3/simulated/CameraScript.h": "simulated/camera",
    "include/vx3/simulated/Publish.h": "simulated/publish",
}
# Targets of others that the build links, by the headers that come with them.
LIBRARIES = {"PkgConfig::libhwy": "hwy", "PkgConfig::pugixml": "pugixml.hpp", "PkgConfig::libzip": "zip.h",
             "PkgConfig::log4cpp": "log4cpp", "vx3_opencv": "opencv2"}
TOPS = ("src", "include/vx3", "tools", "examples", "bindings", "plugins")

C_STANDARD = {f"{name}.h" for name in "assert complex ctype errno fenv float inttypes iso646 limits locale math setjmp "
              "signal stdalign stdarg stdatomic stdbool stddef stdint stdio stdlib stdnoreturn string tgmath threads "
              "time uchar wchar wctype".split()}
SYSTEM = {f"{name}.h" for name in "dirent dlfcn elf endian execinfo fcntl getopt glob grp ifaddrs libgen link malloc netdb "
          "poll pthread pty pwd sched semaphore spawn strings syslog termios ucontext unistd utime".split()}
SYSTEM_FOLDERS = ("sys/", "linux/", "net/", "netinet/", "arpa/", "asm/", "netpacket/")


def room_of(local):
    """The room of a file, or None where no row covers its folder."""
    if local in HOMES:
        return HOMES[local]
    for top in ("src/", "include/vx3/"):
        if local.startswith(top):
            local = local[len(top):]
    folder = str(pathlib.PurePosixPath(local).parent)
    if folder in ROOMS:
        return folder
    while folder != ".":
        if folder + "/**" in ROOMS:
            return folder
        folder = str(pathlib.PurePosixPath(folder).parent)
    return None


def row_of(room):
    return ROOMS.get(room, ROOMS.get(room + "/**", "")).split()


def foreign(edge):
    """Which library of others a header outside the tree belongs to: its first folder or its own name."""
    name = edge.target or edge.text[1:-1]
    if re.search(r"/c\+\+/|/lib/(gcc|clang|llvm-)|/bits/", name):
        return "standard"
    for place in re.finditer(r"/include/(?:opencv4/|[a-z0-9_]+-linux-gnu/)?", name):
        name = edge.target[place.end():]
    if name in C_STANDARD or ("." not in name and edge.target):
        return "standard"
    if name in SYSTEM or name.startswith(SYSTEM_FOLDERS):
        return "system"
    return name.split("/")[0]


def complaint(edge, source, root):
    """Why the file `source` may not have this include, or None."""
    here = room_of(source)
    if not edge.text:
        return "includes what a macro names, in a branch that this build leaves out"
    public = source.startswith("include/vx3/")
    if edge.target is None or not edge.target.startswith(root + "/"):
        if edge.text[0] == '"' and edge.target is None:
            return f"includes {edge.text}, which is nowhere"
        library = foreign(edge)
        if library == "standard" or (f"<{library}>" in row_of(here) and not public):
            return None
        who = "a public header" if public else here
        return f"{who} may not include <{library}> ({edge.text}); if it should, its row in check_layers.py must say so"
    local = edge.target[len(root) + 1:]
    there = room_of(local)
    if public and not local.startswith("include/vx3/"):
        return f"a public header includes {local}, which is not installed"
    if there is None:
        return f"includes {local}, which is in no room"
    if there == here or there in row_of(here) or (local.startswith("include/vx3/") and "installed" in row_of(here)):
        return None
    return f"{here} may not include {there} ({edge.text})"


def check_table():
    """The rows themselves must run downward: a room that reaches itself is an arrow upward."""
    state = {}

    def visit(room, path):
        if state.get(room) == "done":
            return None
        if room in path:
            return f"check_layers.py: rooms include each other: {' -> '.join([*path[path.index(room):], room])}"
        for below in row_of(room):
            if below != "installed" and not below.startswith("<"):
                if below not in ROOMS and below + "/**" not in ROOMS:
                    return f"check_layers.py: the row of {room} names {below}, which has no row"
                found = visit(below, [*path, room])
                if found:
                    return found
        state[room] = "done"
        return None

    return [found for found in (visit(room.removesuffix("/**"), []) for room in ROOMS) if found][:1]


def check_links(file):
    """Each archive may link what its room may include."""
    lines = [line.split() for line in pathlib.Path(file).read_text(encoding="utf-8").splitlines()]
    rooms = {line[0]: line[1] for line in lines}
    wrong = []
    for name, room, *links in lines:
        for link in links:
            there = rooms.get(link, f"<{LIBRARIES[link]}>" if link in LIBRARIES else None)
            # Who may include a stand-in's surface links the rooms that stand behind it.
            reachable = there and any(below == there or below.endswith("/include")
                                      and there.startswith(below.removesuffix("include")) for below in row_of(room))
            if there and not reachable:
                wrong.append(f"src/CMakeLists.txt: {name} may not link {link}: {room} may not include {there}")
    return wrong


def main():
    here = pathlib.Path(__file__).resolve().parent.parent
    options = argparse.ArgumentParser()
    options.add_argument("--root", default=str(here))
    options.add_argument("--commands", default=str(here / "build/test/compile_commands.json"))
    options.add_argument("--links")
    options.add_argument("--cache")
    options.add_argument("--edges", action="store_true", help="print every pair of rooms with its number of includes")
    chosen = options.parse_args()

    reader = Reader(chosen.root, chosen.commands, TOPS, chosen.cache)
    wrong, pairs = check_table(), collections.Counter()
    strays = sorted({str(pathlib.Path(file).parent) for file in map(reader.local, reader.files()) if not room_of(file)})
    for folder in strays:
        wrong.append(f"{folder}: this folder has no row; add one to ROOMS in scripts/check_layers.py that names what "
                     "it may include")
    edges = 0
    for edge in reader.run():
        source = reader.local(edge.source)
        if room_of(source):
            edges += 1
            pairs[room_of(source), edge.target and room_of(reader.local(edge.target)) or f"<{foreign(edge)}>"] += 1
            why = complaint(edge, source, reader.root)
            if why:
                wrong.append(f"{source}:{edge.line}: {why}")
    if chosen.links:
        wrong += check_links(chosen.links)
    named = {line.split(":")[0] for line in wrong}
    wrong += [f"the compiler could not read {failure}" for failure in map(reader.shorten, reader.failures)
              if failure.split(":")[0] not in named]
    if chosen.edges:
        for (source, target), count in sorted(pairs.items()):
            print(f"{source} -> {target}: {count}")
    print("\n".join(sorted(set(wrong))) if wrong else f"layers: {edges} includes, all of them downward")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
