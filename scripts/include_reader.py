"""Which file includes which, as the compiler reads them.

Every translation unit is preprocessed by its own compiler with its own options, and the include directives that
the compiler reports are taken: macros, comments, blanks, spliced lines and relative paths are its business, not a
pattern's. Branches that this configuration does not compile are read by a small lexer of ours besides."""
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess

SUFFIXES = {".h", ".hh", ".hpp", ".hxx", ".inc", ".inl", ".ipp", ".tpp", ".c", ".cc", ".cpp", ".cxx"}

MARKER = re.compile(rb'^#(?: (\d+) "([^"]*)"[ \d]*$|(?:include|include_next|import) *([<"][^>"\n]*[>"]))', re.M)
# Comments vanish, raw strings lose their text; other literals stay, for an include's own name is one.
NOISE = re.compile(r'//[^\n]*|/\*.*?\*/|R"([^()\s\\]{0,16})\(.*?\)\1"|"(?:\\.|[^"\\\n])*"'
                   r"|(?<![0-9A-Za-z_])'(?:\\.|[^'\\\n])*'", re.S)
DIRECTIVE = re.compile(r"\s*(?:#|%:)\s*(?:include|include_next|import)\b\s*(.*?)\s*$")
NAMED = re.compile(r'[<"][^>"]+[>"]')


class Edge:
    """One include directive: where it stands, how it is written, and the file that it brings in, if there is one."""

    def __init__(self, source, line, text, target):
        self.source, self.line, self.text, self.target = source, line, text, target


def quiet(text):
    """A comment or a raw string, replaced by its line ends (a raw string's are marked); other literals as they are."""
    token = text.group(0)
    if token.startswith("R"):
        return re.sub(r"[^\n\1]+", "\2", token)
    if token.startswith(("//", "/*")):
        return " " + "".join(c for c in token if c in "\n\1")
    return token


def directives(text):
    """(line, name) of every include directive in a file, compiled or not; the name is empty where a macro gives it,
    and None on a line that only looks like one, inside a raw string."""
    text = re.sub(r"\\[ \t]*\n", "\1", text)
    line = 1
    for logical in NOISE.sub(quiet, text).split("\n"):
        found = DIRECTIVE.match(logical.replace("\1", ""))
        if found:
            name = NAMED.match(found.group(1))
            yield line, name.group(0) if name else ""
        elif "\2" in logical:
            yield line, None
        line += 1 + logical.count("\1")


class Unit:
    """A translation unit: its file, its compiler's options, and where that compiler looks for files."""

    def __init__(self, file, directory, arguments):
        self.file, self.directory = file, directory
        self.options, self.search, self.forced = [], {"-iquote": [], "-I": [], "-isystem": []}, []
        self.compiler, rest = arguments[0], arguments[1:]
        if os.path.basename(self.compiler) in ("ccache", "sccache"):
            self.compiler, rest = rest[0], rest[1:]
        rest = iter(rest)
        for option in rest:
            if option in ("-o", "-MF", "-MT", "-MQ"):
                next(rest)
            elif option in ("-c", "-MD", "-MMD", "-Winvalid-pch") or self.is_source(option):
                continue
            elif option in ("-include", "-Xclang", "-include-pch"):
                value = next(rest)
                if option == "-include":
                    self.forced.append(os.path.join(directory, value))
            else:
                self.add(option, rest)

    def is_source(self, option):
        return not option.startswith("-") and os.path.join(self.directory, option) == self.file

    def add(self, option, rest):
        self.options.append(option)
        for kind, found in self.search.items():
            if option == kind:
                self.options.append(next(rest))
                found.append(self.options[-1])
            elif kind != "-isystem" and option.startswith(kind) and not option.startswith("-iquote="):
                found.append(option[len(kind):])

    def places(self, source, quoted):
        if quoted:
            yield os.path.dirname(source)
            yield from self.search["-iquote"]
        yield from self.search["-I"]
        yield from self.search["-isystem"]

    def preprocess(self):
        command = [self.compiler, *self.options, "-w", "-E", "-dI", self.file]
        return subprocess.run(command, cwd=self.directory, capture_output=True, check=False)


class Reader:
    def __init__(self, root, commands, tops, cache=None):
        self.root = os.path.realpath(root)
        self.tops = [os.path.join(self.root, top) + os.sep for top in tops]
        self.cache_file, self.cache = cache, {}
        if cache and os.path.exists(cache):
            self.cache = json.loads(pathlib.Path(cache).read_text(encoding="utf-8"))
        self.units, self.digests, self.owner = [], {}, {}
        self.reported = {}  # file -> {(line, name)} as the compiler read them
        self.failures, self.system, self.known = [], {}, {}
        for entry in json.loads(pathlib.Path(commands).read_text(encoding="utf-8")):
            file = os.path.join(entry["directory"], entry["file"])
            if os.path.realpath(file).startswith(tuple(self.tops)):
                arguments = entry.get("arguments") or shlex.split(entry["command"])
                self.units.append(Unit(file, entry["directory"], arguments))

    def files(self):
        for top in self.tops:
            for file in sorted(pathlib.Path(top).rglob("*")):
                if file.suffix in SUFFIXES:
                    yield str(file)

    def digest(self, file):
        if file not in self.digests:
            data = pathlib.Path(file).read_bytes() if os.path.isfile(file) else b""
            self.digests[file] = hashlib.sha1(data).hexdigest()
        return self.digests[file]

    def local(self, file):
        return os.path.relpath(file, self.root)

    def shorten(self, message):
        return message.replace(self.root + "/", "")

    def cached(self, unit):
        entry = self.cache.get(self.local(unit.file))
        if not entry or entry["command"] != self.key(unit):
            return None
        if any(self.digest(os.path.join(self.root, name)) != digest for name, digest in entry["files"].items()):
            return None
        return entry

    def key(self, unit):
        return " ".join([unit.compiler, *unit.options]).replace(self.root, "@")

    def read(self, unit):
        """The unit's project files with the includes that the compiler reports in each."""
        entry = self.cached(unit)
        if entry:
            return unit, entry
        run = unit.preprocess()
        found, file, line, end = {self.local(unit.file): []}, unit.file, 1, 0
        for mark in MARKER.finditer(run.stdout):
            if mark.group(3):
                if file.startswith(self.root + os.sep):
                    at = line + run.stdout.count(b"\n", end, mark.start())
                    found.setdefault(self.local(file), []).append([at, mark.group(3).decode()])
                continue
            file = os.path.realpath(os.path.join(unit.directory, mark.group(2).decode()))
            line, end = int(mark.group(1)), mark.end() + 1
            if file.startswith(self.root + os.sep) and os.path.isfile(file):
                found.setdefault(self.local(file), [])
        error = run.stderr.decode(errors="replace").strip().split("\n")[0] if run.returncode else ""
        files = {name: self.digest(os.path.join(self.root, name)) for name in found}
        return unit, {"command": self.key(unit), "files": files, "found": found, "error": error}

    def system_places(self, unit):
        if unit.compiler not in self.system:
            language = "c" if unit.file.endswith(".c") else "c++"
            run = subprocess.run([unit.compiler, "-E", "-v", "-x", language, os.devnull], capture_output=True,
                                 text=True, check=False)
            listed = re.search(r"<\.\.\.> search starts here:\n(.*?)\nEnd of search", run.stderr, re.S)
            self.system[unit.compiler] = [os.path.realpath(p.strip()) for p in listed.group(1).splitlines()]
        return self.system[unit.compiler]

    def resolve(self, unit, source, name):
        """The file that a directive brings in, or None. Ours are found even where the options do not reach them."""
        quoted, text = name[0] == '"', name[1:-1]
        for place in [*unit.places(source, quoted), *self.system_places(unit), self.root + "/src",
                      self.root + "/include", os.path.dirname(source)]:
            path = os.path.join(unit.directory, place, text)
            if path not in self.known:
                self.known[path] = os.path.realpath(path) if os.path.isfile(path) else None
            if self.known[path]:
                return self.known[path]
        return None

    def run(self):
        self.read_all(self.units)
        # What no unit includes is preprocessed by itself, with the options of its nearest neighbour.
        orphans = [file for file in self.files() if os.path.realpath(file) not in self.owner]
        self.read_all([unit for unit in map(self.alone, orphans) if unit])
        self.forget()
        return self.edges()

    def alone(self, file):
        top = next(top for top in self.tops if file.startswith(top))
        headers_only = top.endswith("/include/vx3/")
        near = [unit for unit in self.units if unit.file.startswith(top) or headers_only]
        if not near:
            self.failures.append(f"{self.local(file)}: nothing of {self.local(top)} is in this build")
            return None
        best = max(near, key=lambda unit: len(os.path.commonprefix([unit.file, file])))
        unit = Unit(file, best.directory, [best.compiler, *best.options])
        if not file.endswith(".c") and not best.file.endswith(".c"):
            unit.options += ["-x", "c++"]
        return unit

    def read_all(self, units):
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for unit, entry in pool.map(self.read, units):
                if entry["error"]:
                    self.failures.append(entry["error"])
                else:
                    self.cache[self.local(unit.file)] = entry
                for name, found in entry["found"].items():
                    file = os.path.join(self.root, name)
                    self.owner.setdefault(file, unit)
                    self.reported.setdefault(file, set()).update(map(tuple, found))

    def forget(self):
        if self.cache_file:
            kept = {name: entry for name, entry in self.cache.items() if os.path.isfile(os.path.join(self.root, name))}
            pathlib.Path(self.cache_file).write_text(json.dumps(kept), encoding="utf-8")

    def edges(self):
        for file, unit in sorted(self.owner.items()):
            if not file.startswith(tuple(self.tops)):
                continue
            text = pathlib.Path(file).read_text(encoding="utf-8", errors="replace")
            written = dict(directives(text))
            names, text_lines = set(written.values()), {line for line, name in written.items() if name is None}
            # The compiler's reading adds what a macro named; the lexer's, what this configuration leaves out.
            compiled = {line for line, _ in self.reported[file]}
            seen = {(line, name) for line, name in self.reported[file] if name not in names and line not in text_lines}
            seen.update((line, name) for line, name in written.items() if name is not None)
            for line, name in sorted(seen):
                if name:
                    yield Edge(file, line, name, self.resolve(unit, file, name))
                elif line not in compiled:
                    yield Edge(file, line, name, None)
        yield from self.forced()

    def forced(self):
        """What of ours the build puts before every file of a target counts as included by each of its folders.

        Libraries of others stand there for speed only: the files that use them still have to include them."""
        done = set()
        for unit in self.units:
            for forced in unit.forced:
                if (os.path.dirname(unit.file), forced) in done or not os.path.isfile(forced):
                    continue
                done.add((os.path.dirname(unit.file), forced))
                if os.path.realpath(forced).startswith(tuple(self.tops)):
                    yield Edge(unit.file, 0, f'"{forced}"', os.path.realpath(forced))
                    continue
                text = pathlib.Path(forced).read_text(encoding="utf-8")
                for _, name in directives(text):
                    target = self.resolve(unit, forced, name) if name else None
                    if target and target.startswith(self.root + os.sep):
                        yield Edge(unit.file, 0, name, target)
