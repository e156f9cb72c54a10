#!/usr/bin/env python3
"""Plants forbidden and allowed includes in a copy of the tree: check_layers.py must name each forbidden one by file
and line, and nothing else.    layers_test.py BUILD-DIRECTORY"""
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(sys.argv[1]).resolve()

# File, text, the line that must be refused (0: none), and what the refusal must say.
FORBIDDEN = [
    ("src/core/Angle.cpp", "#include <gev/GevDevice.h>\n", 1, "core may not include gev"),
    ("src/core/Relative.cpp", '#include <vector>\n#include "../device/StreamAbs.h"\n', 2, "core may not include device"),
    ("src/gev/stream/Relative.cpp", '#include "../../gev/./net/SocketPort.h"\n', 1, "gev/stream may not include gev/net"),
    ("src/image/Blanks.cpp", ' \t# \t include   "genicam/GenApiRI.h"\n', 1, "image may not include genicam"),
    ("src/core/Comment.cpp", '/* x */ #include "device/StreamAbs.h"\n', 1, "core may not include device"),
    ("src/device/CommentInside.cpp", '/*\n*/ # /* y */ include /* z */ "gev/GevDevice.h" // w\n', 2,
     "device may not include gev"),
    ("src/core/Macro.cpp", '#define NAME <gev/GevDevice.h>\n\n#include NAME\n', 3, "core may not include gev"),
    ("src/core/Spliced.cpp", '#incl\\\nude "device/StreamAbs.h"\n', 1, "core may not include device"),
    ("src/core/Digraph.cpp", '%:include "device/StreamAbs.h"\n', 1, "core may not include device"),
    ("src/core/Guarded.cpp", '#if defined(__never__)\n#include "device/StreamAbs.h"\n#endif\n', 2,
     "core may not include device"),
    ("src/core/Second.cpp", '#include "core/ObjectAbs.h"\n#include "core/ObjectAbs.h"\n#include <vx3/device/IDevice.h>\n', 3,
     "core may not include device"),
    ("src/core/Unreached.h", '#pragma once\n#include "image/BufferPoolAbs.h"\n', 2, "core may not include image"),
    ("src/core/ThroughOption.cpp", '#include "GevDevice.h"\n', 1, "core may not include gev"),
    ("src/simulated/Planted.cpp", '#include "gev/GevDevice.h"\n', 1, "simulated may not include gev"),
    ("src/simulated/camera/Planted.cpp", '#include "gev/control/GevCmdHelper.h"\n', 1,
     "simulated/camera may not include gev/control"),
    ("src/wire/Planted.cpp", '#include <sys/socket.h>\n#include <vector>\n', 1, "wire may not include <system>"),
    ("src/wire/Upward.cpp", '#include "vx3/core/Status.h"\n', 1, "wire may not include core"),
    ("src/image/Foreign.cpp", "#include <opencv2/core.hpp>\n", 1, "image may not include <opencv2>"),
    ("include/vx3/core/Planted.h", '#pragma once\n#include "core/ObjectAbs.h"\n', 2, "which is not installed"),
    ("tools/vx3/grab/Planted.cpp", '#include "../../../src/core/ObjectAbs.h"\n', 1, "tools/vx3/grab may not include core"),
    ("examples/cpp/planted.cpp", '#include "core/ObjectAbs.h"\n', 1, "may not include core"),
    ("src/cellar/Planted.cpp", "int cellar();\n", 0, "src/cellar: this folder has no row"),
]
ALLOWED = [
    ("src/core/Allowed.cpp", '#include "../core/ObjectAbs.h"\n// #include "gev/GevDevice.h"\n/*\n#include "gev/GevDevice.h"\n*/\n'
     'const char* const Text = R"(\n#include "gev/GevDevice.h"\n)";\nconst int Many = 1\'000; // don\'t\n'),
    ("src/gev/net/Allowed.cpp", '#include "vx3/gev/NetParam.h"\n#include <sys/socket.h>\n'),
    ("src/simulated/camera/Allowed.cpp", '#include <gev/net/CrossSocket.h>\n#include "../../gev/protocol/Gvcp.h"\n'
     '#include "vx3/gev/NetParam.h"\n'),
    ("src/simulated/Allowed.cpp", '#include "gev/protocol/Gvcp.h"\n#include "device/StreamAbs.h"\n'),
    ("src/wire/Allowed.cpp", "#include <cstdint>\n#include <vector>\n"),
]


def check(root, *options):
    run = subprocess.run([sys.executable, ROOT / "scripts/check_layers.py", "--root", root, *options],
                         capture_output=True, text=True, check=False)
    return run.returncode, run.stdout + run.stderr


def plant(root):
    """Copies the tree, plants the files, and writes compile commands in which each has those of a neighbour."""
    for top in ("src", "include", "tools", "examples"):
        shutil.copytree(ROOT / top, root / top)
    text = (BUILD / "compile_commands.json").read_text(encoding="utf-8")
    text = text.replace(str(BUILD), "@BUILD@").replace(f"{ROOT}/", f"{root}/").replace("@BUILD@", str(BUILD))
    commands = json.loads(text)
    model = next(entry for entry in commands if entry["file"] == f"{root}/src/core/ObjectAbs.cpp")
    for name, content, *_ in FORBIDDEN + ALLOWED:
        (root / name).parent.mkdir(parents=True, exist_ok=True)
        (root / name).write_text(content, encoding="utf-8")
        command = model["command"].replace(model["file"], f"{root}/{name}")
        if "ThroughOption" in name:
            command = command.replace(" -c ", f" -I{root}/src/gev -c ")
        if name.endswith(".cpp") and name.startswith("src/"):
            commands.append({"directory": model["directory"], "file": f"{root}/{name}", "command": command})
    (root / "commands.json").write_text(json.dumps(commands), encoding="utf-8")


def main():
    with tempfile.TemporaryDirectory() as scratch:
        root = pathlib.Path(scratch).resolve()
        plant(root)
        # What the check of the real tree read already need not be read again.
        if (BUILD / "layers.json").exists():
            shutil.copy(BUILD / "layers.json", root / "cache.json")
        links = root / "links.txt"
        links.write_text("vx3_core core vx3_device\nvx3_device device vx3_core\n", encoding="utf-8")
        code, output = check(root, "--commands", root / "commands.json", "--cache", root / "cache.json", "--links", links)
    lines = output.splitlines()
    failures = [] if code == 1 else [f"the check ended with {code}"]
    for name, _, line, reason in [*FORBIDDEN, ("src/CMakeLists.txt", "", 0, "vx3_core may not link vx3_device")]:
        place = f"{name}:{line}: " if line else ""
        hits = [text for text in lines if text.startswith(place) and reason in text]
        if not hits:
            failures.append(f"let pass: {name}, line {line}: {reason}")
        lines = [text for text in lines if text not in hits[:1]]
    failures += [f"refused without reason: {line}" for line in lines]
    print("\n".join(failures) or f"layers: {len(FORBIDDEN)} forbidden includes refused, {len(ALLOWED)} files of allowed ones pass")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
