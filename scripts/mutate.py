#!/usr/bin/env python3
"""Changes one operator of the product at a time and asks whether the tests notice.

    scripts/mutate.py src/core/IniFile.cpp:40            every change on that line
    scripts/mutate.py src/core/IniFile.cpp:40:12         those at that column
    scripts/mutate.py src/core --sample 15 --seed 1      a sample of a file's or a folder's changes
    scripts/mutate.py --list scripts/mutants.txt         named changes, found by their text wherever it moved

Works on a copy of the tree below build/mutate with a build folder of its own: the checkout is never touched, not even when
this is interrupted. Each change is killed (with the test that noticed), survived, unbuildable, or, of a list, gone: its
text stands nowhere any more. Ends with 1 when a change survived or is gone, 2 when the unchanged tree is not green.
"""
import argparse
import fcntl
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
CODE = (".cpp", ".h", ".c")

# Source folder -> the folders of tests/ whose suites cover it. The longest folder that fits counts; suites that the tree
# does not have are passed over. A public header of include/vx3/<folder> counts as src/<folder>.
SUITES = {
    "wire": ["wire", "gev"],
    "platform/archive": ["archive", "genapi", "genicam"],
    "platform/genapi": ["genapi"],
    "core": ["core"],
    "image": ["image"],
    "processing/kernels": ["kernels", "processing"],
    "processing": ["processing"],
    "genicam": ["genicam"],
    "device": ["device", "simulated"],
    "gev/protocol": ["gev_protocol", "gev"],
    "gev": ["gev"],
    "simulated/camera": ["simulated_camera", "camera", "gev"],
    "simulated": ["simulated"],
    "library": ["library", "core", "image"],
    "capi": ["capi"],
    "tools/vx3": ["tool"],
}

SWAPS = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&", "+": "-", "-": "+",
    "*": "/", "/": "*", "%": "*", "&": "|", "|": "&", "^": "&", "<<": ">>", ">>": "<<", "+=": "-=", "-=": "+=",
    "|=": "&=", "&=": "|=", "*=": "/=", "/=": "*=", "<<=": ">>=", ">>=": "<<=",
}
# The formatter puts blanks around binary operators only, which tells them from templates, references and pointers.
BINARY = re.compile(r"(?<= )(?:" + "|".join(sorted(map(re.escape, SWAPS), key=len, reverse=True)) + r")(?=[ \n])")
STEP = re.compile(r"\+\+|--")
BOOLEAN = re.compile(r"\b(?:true|false)\b")
NUMBER = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f']+|\d[\d']*)([uUlLzZ]*)(?![\w.'])")
CONDITION = re.compile(r"\bif (?:constexpr )?\(")
RETURN = re.compile(r"(?<=\breturn )[^;{}]+(?=;)")
LVALUE = r"(?:\*?(?:\(void\))?[A-Za-z_][\w:]*(?:(?:\.|->)\w+|\[[^\]\n]*\]|\([^()\n]*\))*)"
STATEMENT = re.compile(r"^ {4,}(" + LVALUE + r"(?: [-+*/|&^%]?= [^;]*|\([^;]*\))?|(?:\+\+|--)[^;\n]*);[^\n]*$", re.M)
EMPTY_VALUES = ("true", "false", "{}", "0", "nullptr", "Status::Ok")
KEYWORDS = re.compile(r"(?:return|break|continue|case|default|using|throw|delete|goto|else|public|private|friend|static|const)\b")
LITERALS = re.compile(r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])\'', re.S)
NO_CODE = re.compile(r"^\s*(?:#.*(?:\\\n.*)*|template <.*|using .*|namespace .*|static_assert.*)$", re.M)


class Mutant:
    def __init__(self, path, start, end, new, what):
        self.path, self.start, self.end, self.new, self.what = path, start, end, new, what


def blanked(text):
    """The text with comments, literals and lines without operators as blanks, places unchanged."""
    def blank(match):
        return re.sub(r"[^\n]", " ", match.group())
    return NO_CODE.sub(blank, LITERALS.sub(blank, text))


def closing(text, opening):
    depth = 0
    for place in range(opening, len(text)):
        depth += {"(": 1, ")": -1}.get(text[place], 0)
        if depth == 0:
            return place
    return None


def mutants_of(path, text):
    code = blanked(text)
    found = []

    def add(start, end, new, what):
        found.append(Mutant(path, start, end, new, what))

    for match in BINARY.finditer(code):
        if code[: match.start()].rstrip().endswith(("operator", "(", ",", "return", "=")):
            continue
        add(match.start(), match.end(), SWAPS[match.group()], "operator")
    for match in STEP.finditer(code):
        add(match.start(), match.end(), "--" if match.group() == "++" else "++", "operator")
    for match in BOOLEAN.finditer(code):
        add(match.start(), match.end(), "false" if match.group() == "true" else "true", "boolean")
    for match in NUMBER.finditer(code):
        if re.search(r"\) *(?:const )?(?:override )?= $", code[: match.start()][-24:]):
            continue  # a pure virtual function
        value = int(match.group(1).replace("'", ""), 0 if match.group(1).startswith("0x") or match.group(1) == "0" else 10)
        for changed in (value + 1, value - 1):
            if changed >= 0:
                number = hex(changed) if match.group(1).startswith("0x") else str(changed)
                add(match.start(), match.end(), number + match.group(2), "number")
    for match in CONDITION.finditer(code):
        end = closing(code, match.end() - 1)
        condition = code[match.end() : end]
        plain = re.fullmatch(r"[^&|<>]* [!=]= [^&|<>]*", condition)  # negated by its operator already
        if end and "; " not in condition and " = " not in condition and not plain:
            add(match.end(), end, f"!({text[match.end() : end]})", "condition")
    for match in RETURN.finditer(code):
        if match.group().strip() and text[match.start() : match.end()] not in EMPTY_VALUES:
            add(match.start(), match.end(), "{}", "return value")
    for match in STATEMENT.finditer(code):
        before = code[: match.start()].rstrip()
        declares = KEYWORDS.match(match.group(1)) or match.group(1).endswith(("delete", "default")) or \
            match.group(1).lstrip("~").startswith(path.rpartition("/")[2].partition(".")[0] + "(")
        if before.endswith((";", "{", "}", ")", "else", ":")) and not declares:
            add(match.start(1), match.end(1), "", "statement")
    return sorted(found, key=lambda m: (m.start, m.end, m.new))


def suites_of(path):
    parts = pathlib.PurePosixPath(path).parts
    folder = "/".join(parts[:-1] if parts[0] == "tools" else parts[2:-1] if parts[0] == "include" else parts[1:-1])
    while folder and folder not in SUITES:
        folder = folder.rpartition("/")[0]
    return [s for s in SUITES.get(folder, []) if list((ROOT / "tests" / s).glob("*_test.cpp"))]


class Tree:
    """The copy of the checkout and its build."""

    def __init__(self, work, jobs):
        self.copy, self.build, self.jobs = work / "tree", work / "build", jobs
        self.limits = {}
        self.copy.mkdir(parents=True, exist_ok=True)
        self.lock = open(work / "lock", "w", encoding="utf-8")
        fcntl.flock(self.lock, fcntl.LOCK_EX)
        self.environment = dict(os.environ, CCACHE_BASEDIR=str(self.copy), CCACHE_NOHASHDIR="1")
        self.fetch()

    def fetch(self):
        """Makes the copy equal to the checkout; files that are equal already keep their time, so nothing is rebuilt."""
        listing = subprocess.run(["git", "-C", str(ROOT), "ls-files", "-co", "--exclude-standard"], check=True,
                                 capture_output=True, text=True).stdout
        names = {name for name in listing.splitlines() if (ROOT / name).is_file()}
        for old in [p for p in self.copy.rglob("*") if p.is_file() and p.relative_to(self.copy).as_posix() not in names]:
            old.unlink()
        for name in names:
            new = self.copy / name
            if not new.exists() or new.read_bytes() != (ROOT / name).read_bytes():
                new.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(ROOT / name, new)

    def run(self, command, seconds, log):
        """The exit code, or None when the time is up; the whole process group ends then."""
        with open(log, "wb") as out:
            process = subprocess.Popen(command, cwd=self.build, stdout=out, stderr=subprocess.STDOUT,
                                       env=self.environment, start_new_session=True)
        try:
            return process.wait(seconds)
        except BaseException as stopped:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            if isinstance(stopped, subprocess.TimeoutExpired):
                return None
            raise

    def configure(self, needs_tools):
        self.build.mkdir(exist_ok=True)
        command = ["cmake", "-S", str(self.copy), "-B", str(self.build), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=RelWithDebInfo",
                   "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1", "-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O1", "-DVX3_BUILD_BENCH=OFF",
                   "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST", "-DVX3_BUILD_EXAMPLES=OFF", "-DVX3_BUILD_TOOLS=" + ("ON" if needs_tools else "OFF")]
        return self.run(command, 300, self.build / "configure.log") == 0

    def compile(self, programs):
        command = ["cmake", "--build", str(self.build), "-j", str(self.jobs), "--target", *programs]
        return self.run(command, 3600, self.build / "compile.log") == 0

    def test(self, program, seconds):
        """None when all is green, else the first test that is not."""
        log = self.build / "test.log"
        options = [] if program not in [p + "_tests" for p in os.listdir(self.copy / "tests")] else [
            "--gtest_fail_fast", "--gtest_brief=1"]
        code = self.run([str(self.build / "bin" / program), *options], seconds, log)
        if code == 0:
            return None
        failed = re.search(r"\[  FAILED  \] (\S+)", log.read_text(encoding="utf-8", errors="replace"))
        name = failed.group(1).rstrip(",") if failed else program
        return name + (" (time-out)" if code is None else f" (signal {-code})" if code < 0 else "")

    def baseline(self, programs):
        """Builds the unchanged tree, runs it, and remembers how long it may take."""
        if not self.compile(programs):
            print((self.build / "compile.log").read_text()[-4000:])
            return False
        for program in programs:
            start = time.monotonic()
            failed = self.test(program, 900)
            if failed:
                print(f"{program}: {failed} fails without any change; see {self.build}/test.log")
                return False
            self.limits[program] = 30 + 4 * (time.monotonic() - start)
        return True

    def judge(self, mutant, programs):
        path = self.copy / mutant.path
        original = path.read_text(encoding="utf-8")
        try:
            path.write_text(original[: mutant.start] + mutant.new + original[mutant.end :], encoding="utf-8")
            for program in programs:
                if not self.compile([program]):
                    return "unbuildable", ""
                failed = self.test(program, self.limits[program])
                if failed:
                    return "killed", failed
            return "survived", ""
        finally:
            path.write_text(original, encoding="utf-8")


def listed(name):
    """The changes of a list file, and the entries whose text is gone."""
    found, gone = [], []
    for number, line in enumerate(pathlib.Path(name).read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        entry = re.fullmatch(r"(\S+): (.*?) ==> (.*)", line.strip())
        if not entry:
            sys.exit(f"{name}:{number}: expected 'FILE: TEXT ==> REPLACEMENT'")
        home, old, new = entry.groups()
        pattern = re.compile(r"\s+".join(map(re.escape, old.split())))
        places = [home] + sorted(p.relative_to(ROOT).as_posix() for p in (ROOT / "src").rglob("*") if p.suffix in CODE)
        for place in places:
            matches = list(pattern.finditer((ROOT / place).read_text(encoding="utf-8"))) if (ROOT / place).exists() else []
            if matches:
                found += [Mutant(place, m.start(), m.end(), new, "listed") for m in matches]
                break
        else:
            gone.append(line.strip())
    return found, gone


def asked(target, sample, seed):
    where = re.fullmatch(r"(.+?)(?::(\d+))?(?::(\d+))?", target)
    path = (pathlib.Path.cwd() / where.group(1)).resolve()
    if not path.exists():
        path = ROOT / where.group(1)
    files = sorted(p for p in path.rglob("*") if p.suffix in CODE) if path.is_dir() else [path]
    found = []
    for file in files:
        text = file.read_text(encoding="utf-8")
        for mutant in mutants_of(file.relative_to(ROOT).as_posix(), text):
            line = text.count("\n", 0, mutant.start) + 1
            column = mutant.start - text.rfind("\n", 0, mutant.start)
            if where.group(2) in (None, str(line)) and where.group(3) in (None, str(column)):
                found.append(mutant)
    if sample is not None and len(found) > sample:
        found = sorted(random.Random(seed).sample(found, sample), key=lambda m: (m.path, m.start, m.new))
    return found


def describe(mutant):
    text = (ROOT / mutant.path).read_text(encoding="utf-8")
    first, last = text.rfind("\n", 0, mutant.start) + 1, text.find("\n", mutant.end)
    old = " ".join(text[first:last].split())
    new = " ".join((text[first : mutant.start] + mutant.new + text[mutant.end : last]).split())
    line = text.count("\n", 0, mutant.start) + 1
    return f"{mutant.path}:{line}:{mutant.start - first + 1}", f"{old} ==> {new}"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("targets", nargs="*", metavar="FILE[:LINE[:COLUMN]] or FOLDER")
    parser.add_argument("--list", help="a file of named changes")
    parser.add_argument("--sample", type=int, help="try only so many of each target")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--suites", help="folders of tests/ to run, with commas, instead of those of the table")
    parser.add_argument("--jobs", default=os.cpu_count())
    parser.add_argument("--work", type=pathlib.Path, default=ROOT / "build" / "mutate")
    parser.add_argument("--dry-run", action="store_true", help="only say what would be changed")
    options = parser.parse_args()
    if bool(options.list) == bool(options.targets):
        parser.error("give either targets or --list")
    gone = []
    if options.list:
        mutants, gone = listed(options.list)
    else:
        mutants = [m for target in options.targets for m in asked(target, options.sample, options.seed)]
    plans = []
    for mutant in mutants:
        suites = options.suites.split(",") if options.suites else suites_of(mutant.path)
        plans.append((mutant, [s + "_tests" for s in suites]))
    if options.dry_run:
        for mutant, programs in plans:
            print(*describe(mutant), f"[{' '.join(programs)}]")
        return 0

    totals = dict.fromkeys(("killed", "survived", "unbuildable", "gone"), 0)
    if plans:
        tree = Tree(options.work.resolve(), options.jobs)
        if not tree.configure(any("tool_tests" in programs for _, programs in plans)):
            print((tree.build / "configure.log").read_text()[-4000:])
            return 2
        if not tree.baseline(sorted({p for _, programs in plans for p in programs})):
            return 2
    for mutant, programs in plans:
        result, by = tree.judge(mutant, programs) if programs else ("survived", "no suite covers it")
        totals[result] += 1
        place, change = describe(mutant)
        print(f"{result:<11} {place}  {change}" + (f"  [{by}]" if by else ""), flush=True)
    for line in gone:
        totals["gone"] += 1
        print(f"{'gone':<11} {line}")
    print(", ".join(f"{count} {result}" for result, count in totals.items()))
    return 1 if totals["survived"] or totals["gone"] else 0


if __name__ == "__main__":
    sys.exit(main())
