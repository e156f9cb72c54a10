#!/usr/bin/env python3
"""Runs clang-tidy with the checks of .clang-tidy, and clang's thread-safety analysis, over src and tools; fails when
it finds anything.

    scripts/tidy.py [--build build/test] [--deep] [--only CHECKS] [--fix] [PATH...]
        --deep   the static analyzer's checks instead: several times slower, for a release
        --only   these checks instead, as clang-tidy writes them
        --fix    apply what the checks propose, after all files were read: a name changes wherever it is used
        PATH     only the files below these folders

A file that was clean is not read again until it, a header that it includes, its options or the checks change.
Most of the time goes into the standard library's headers, so neighbours with the same options are read together, as
one file that includes them; where they do not go together, one by one."""
import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

from include_reader import Reader

ROOT = pathlib.Path(__file__).resolve().parent.parent
DEEP = "-*,clang-analyzer-core.*,clang-analyzer-cplusplus.*,clang-analyzer-unix.*,clang-analyzer-deadcode.*"
BATCH = 8


def command_of(unit, file):
    """The unit's command without what the build precompiles for it: clang-tidy reads the file's own includes."""
    return [unit.compiler, *unit.options, "-Wno-everything", "-Wthread-safety", "-c", file]


def batches(units, size):
    """Lists of neighbours: same folder, same options."""
    together = collections.defaultdict(list)
    for unit in units:
        together[os.path.dirname(unit.file), tuple(unit.options)].append(unit)
    for neighbours in together.values():
        for start in range(0, len(neighbours), size):
            yield neighbours[start:start + size]


class Tidy:
    """Runs clang-tidy over a batch, and remembers what each file is clean of."""

    def __init__(self, folder, options, fix):
        self.folder, self.options, self.fix = folder, options, fix
        folder.mkdir(exist_ok=True)
        # A folder's own .clang-tidy may say less for its headers; a batch has the whole tree's.
        shutil.copy(ROOT / ".clang-tidy", folder)

    def prepare(self, batch):
        """The file to read for a batch, and its entry in the compile commands."""
        if len(batch) == 1:
            file = batch[0].file
        else:
            file = str(self.folder / (hashlib.sha1(batch[0].file.encode()).hexdigest()[:12] + ".cpp"))
            text = "".join(f'#include "{unit.file}"\n' for unit in batch)
            pathlib.Path(file).write_text(text, encoding="utf-8")
        return file, {"directory": batch[0].directory, "file": file, "arguments": command_of(batch[0], file)}

    def run(self, batch):
        """(units, clean, output) for a batch, or for each unit where they do not compile as one file."""
        file, entry = self.prepare(batch)
        commands = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
        (commands / "compile_commands.json").write_text(json.dumps([entry]), encoding="utf-8")
        fixes = [f"--export-fixes={commands}.yaml"] if self.fix else []
        command = ["clang-tidy", "-p", str(commands), "--quiet", *self.options, *fixes, file]
        run = subprocess.run(command, capture_output=True, text=True, check=False)
        shutil.rmtree(commands)
        if run.returncode and len(batch) > 1 and "clang-diagnostic-error" in run.stdout:
            pathlib.Path(f"{commands}.yaml").unlink(missing_ok=True)
            return [result for unit in batch for result in self.run([unit])]
        return [(batch, run.returncode == 0, run.stdout + run.stderr)]

    def apply(self):
        """What all runs propose, each change once."""
        subprocess.run(["clang-apply-replacements", "--remove-change-desc-files", str(self.folder)], check=True)


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--build", default=str(ROOT / "build/test"))
    arguments.add_argument("--deep", action="store_true")
    arguments.add_argument("--only")
    arguments.add_argument("--fix", action="store_true")
    arguments.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments.add_argument("paths", nargs="*")
    chosen = arguments.parse_args()
    build, start = pathlib.Path(chosen.build).resolve(), time.monotonic()

    tops = ("src", "tools", *(("tests", "bench", "examples") if chosen.fix else ()))
    reader = Reader(ROOT, build / "compile_commands.json", tops, str(build / "layers.json"))
    wanted = tuple(str(pathlib.Path(path).resolve()) for path in chosen.paths)
    units = [unit for unit in reader.units if not wanted or unit.file.startswith(wanted)]
    reader.read_all(units)
    reader.forget()

    options = [f"--checks={DEEP}"] if chosen.deep else []
    options += [f"--checks=-*,{chosen.only}"] if chosen.only else []
    version = subprocess.run(["clang-tidy", "--version"], capture_output=True, text=True, check=True).stdout
    ground = version + (ROOT / ".clang-tidy").read_text(encoding="utf-8") + " ".join(options)

    def key(unit):
        entry = reader.cache.get(reader.local(unit.file), {"files": {}})
        text = ground + " ".join(command_of(unit, unit.file)) + json.dumps(entry["files"], sort_keys=True)
        return hashlib.sha1(text.encode()).hexdigest()

    worker = Tidy(build / "tidy", options, chosen.fix)
    known = worker.folder / "clean.json"
    clean = set(json.loads(known.read_text(encoding="utf-8"))) if known.exists() else set()
    left = [unit for unit in units if chosen.fix or key(unit) not in clean]
    findings, failed = set(), 0
    with concurrent.futures.ThreadPoolExecutor(chosen.jobs) as pool:
        for results in pool.map(worker.run, batches(left, BATCH)):
            for batch, passed, output in results:
                if passed:
                    clean.update(map(key, batch))
                    continue
                failed += len(batch)
                lines = [line for line in output.splitlines() if ": error: " in line or ": warning: " in line]
                findings.update(lines or [f"{batch[0].file}: clang-tidy failed: {output.strip()[:200]}"])
    if chosen.fix:
        worker.apply()
    kept = sorted(clean if wanted or options else clean & {key(unit) for unit in units})
    known.write_text(json.dumps(kept), encoding="utf-8")
    print("\n".join(reader.shorten(line) for line in sorted(findings)), end="\n" if findings else "")
    print(f"tidy: {len(units)} files, {len(left)} of them read anew, {len(findings)} findings"
          f" ({time.monotonic() - start:.0f} s)")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
