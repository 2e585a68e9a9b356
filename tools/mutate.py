"""Runs the tests on changed sources; see tools/mutate.

    mutate.py LAYER [N] [SEED]

The changes are made in build/mutate/, a copy of the sources.
"""

import argparse
import fcntl
import hashlib
import os
import random
import re
import shlex
import shutil
import signal
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import NamedTuple

sys.dont_write_bytecode = True
from mutants import changed_source, difference, places_of  # noqa: E402

# The tests of each layer, by their names in ctest. Tests that are not listed here are run for every layer.
OWN_TESTS = {
    "base": r"(bytes|pool|poison|verify).*",
    "bytes": r"(bytes|text).*",
    "stream": r"bytes.*",
    "crc32": r"bytes.*",
    "pool": r"(pool|poison|verify).*",
    "containers": r"(hash|btree|list|tree|maps|links|verify).*",
    "arrays": r"(arrays?_|verify).*",
    "hash": r"(hash|maps|verify).*",
    "tree": r"(tree|links|verify).*",
    "btree": r"(btree|maps|verify).*",
    "list": r"(list|links|verify).*",
    "text": r"text.*",
    "bits": r"bits.*",
}
SETTINGS = ["-DMUB_BUILD_BENCH=OFF", "-DMUB_BUILD_EXAMPLES=OFF", "-DMUB_BUILD_API=OFF", "-DMUB_WERROR=OFF"]
# Memory limits for runaway programs. AddressSanitizer reserves far more address space than it uses, so there
# resident memory is limited instead (ASAN_OPTIONS).
RELEASE_LIMITS = ["prlimit", "--core=0", f"--as={8 << 30}"]
DEV_LIMITS = ["prlimit", "--core=0"]
ENVIRONMENT = {
    **os.environ, "MUB_TEST_SEED": "1", "GTEST_BREAK_ON_FAILURE": "1", "GTEST_FAIL_FAST": "1",
    "ASAN_OPTIONS": "hard_rss_limit_mb=4096",
}
BUILD_SECONDS = 900
UNCOMPILED, UNCHANGED = NO_MUTANT = "does not compile", "compiles to the same library"


class Mutant(NamedTuple):
    place: object
    text: str


def copy_sources(root, copy):
    """Updates the copy. Unchanged files keep their time stamps, so they are not rebuilt."""
    def wanted(path):
        return not {".git", ".cache", "build", "node_modules"} & set(path.relative_to(root).parts)

    sources = {}
    for directory, names, files in os.walk(root):
        names[:] = [name for name in names if wanted(Path(directory) / name)]
        sources.update((path.relative_to(root), path) for path in map(Path(directory).joinpath, files) if wanted(path))
    for name, path in sources.items():
        target = copy / name
        if not target.is_file() or target.read_bytes() != path.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            target.unlink(missing_ok=True)
            shutil.copy(path, target)
    for directory, names, files in os.walk(copy):
        names[:] = [name for name in names if Path(directory) / name != copy / "build"]
        for name in files:
            if Path(directory).relative_to(copy) / name not in sources:
                (Path(directory) / name).unlink()


def run(command, seconds, **options):
    """The exit status, or None after a time-out, which kills the whole session."""
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               start_new_session=True, **options)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        return None
    finally:
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()


class Build:
    """A build of the copy. Construct it while the copy is unchanged."""

    def __init__(self, copy, preset, layer, limits, *settings):
        self.copy = copy
        self.directory = copy / "build" / preset
        self.limits = limits
        if run(["cmake", "--preset", preset, "-Wno-dev", *SETTINGS, *settings], BUILD_SECONDS, cwd=copy) != 0:
            sys.exit(f"mutate: cmake --preset {preset} fails in {copy}")
        self.commands = self.programs()
        self.stages = test_stages(copy, list(self.commands), layer)
        self.seconds = {}  # {test: time limit}
        for name in (name for names in self.stages for name in names):
            built = self.make([name])
            start = time.monotonic()
            if not built or self.fails(name, BUILD_SECONDS):
                sys.exit(f"mutate: {name} fails in {self.directory} on the unchanged sources")
            self.seconds[name] = 10 + 5 * (time.monotonic() - start)
        self.unchanged = self.library()

    def programs(self):
        """{test: command} of the tests that are programs and link mub_static as it is built here."""
        commands = {}
        for listing in (self.directory / "tests").rglob("CTestTestfile.cmake"):
            for name, command in re.findall(r"^add_test\(\[=\[(\w+)\]=\] (.*)\)$", listing.read_text(), re.MULTILINE):
                command = shlex.split(command)
                if self.directory in Path(command[0]).parents and name != "abi" and not name.endswith("_readers"):
                    commands[name] = command
        return commands

    def make(self, tests):
        """Builds the library and the programs of the tests; the targets have the names of the programs."""
        targets = ["mub_static", *(Path(self.commands[name][0]).name for name in tests)]
        command = ["cmake", "--build", self.directory, "--parallel", str(os.cpu_count()), "--target", *targets]
        return run(command, BUILD_SECONDS) == 0

    def library(self):
        return hashlib.sha256((self.directory / "libmub.a").read_bytes()).digest()

    def fails(self, name, seconds):
        return run([*self.limits, *self.commands[name]], seconds, env=ENVIRONMENT, cwd=self.directory) != 0

    def catches(self, names):
        """The first test that fails, or "" if all pass."""
        caught = []

        def attempt(name):
            if not caught and self.fails(name, self.seconds[name]):
                caught.append(name)

        with ThreadPoolExecutor(os.cpu_count()) as pool:
            list(pool.map(attempt, names))
        return caught[0] if caught else ""

    def verdict(self, mutant):
        """The test that catches the change, "" if none does, or UNCOMPILED or UNCHANGED."""
        path = self.copy / mutant.place.path
        source = path.read_bytes()
        path.write_bytes(changed_source(source, mutant.place, mutant.text))
        try:
            if not self.make([]):
                return UNCOMPILED
            if self.library() == self.unchanged:
                return UNCHANGED
            for names in self.stages:
                if not self.make(names):
                    return UNCOMPILED
                if caught := self.catches(names):
                    return caught
            return ""
        finally:
            path.write_bytes(source)


def test_stages(root, names, layer):
    """The tests of the layer, then those of the layers that include it and those for every layer."""
    def of(layers):
        return [name for name in names if any(re.fullmatch(OWN_TESTS[each], name) for each in layers)]

    names = [name for name in names if "inline" not in name]  # the same tests, with less of the sources
    own = of([layer])
    if not own:
        sys.exit(f"mutate: no test of {layer}: see OWN_TESTS in tools/mutate.py")
    users = [each for each in OWN_TESTS for path in (root / "src" / each).glob("*")
             if each != layer and f'#include "{layer}/' in path.read_text()]
    rest = of(users) + [name for name in names if name not in of(OWN_TESTS)]
    return [own, [name for name in rest if name not in own]]


def shuffled_mutants(root, layer, seed):
    """Every place in the sources of the layer with one of its changes, in random order."""
    generator = random.Random(seed)
    paths = sorted(path for path in (root / "src" / layer).rglob("*") if path.suffix in (".h", ".cpp"))
    places = [place for path in paths for place in places_of(root, str(path.relative_to(root)))]
    generator.shuffle(places)
    return [Mutant(place, generator.choice(place.changes)) for place in places]


def listed_equivalents(path):
    """{(file, old lines, new lines)} from tools/mutants.txt."""
    text = re.sub(r"^#.*\n", "", path.read_text(), flags=re.MULTILINE)
    found = set()
    for entry in re.split(r"\n{2,}", text.strip()) if text.strip() else []:
        file, *lines = entry.split("\n")
        old, new = (tuple(line[1:].strip() for line in lines if line[:1] == sign) for sign in "-+")
        if not old or not new or all(line[:1] in ("-", "+") for line in lines):
            sys.exit(f"{path}: expected a file, old lines, new lines and a reason:\n{entry}")
        found.add((file, old, new))
    return found


def description(root, mutant):
    """(file, old lines, new lines) as in tools/mutants.txt, and the line number."""
    line, old, new = difference((root / mutant.place.path).read_bytes(), mutant.place, mutant.text)
    return (mutant.place.path, old, new), line


def shown(entry, line=None):
    file, old, new = entry
    place = file if line is None else f"{file}:{line}"
    return "\n".join([place, *(f"- {text}" for text in old), *(f"+ {text}" for text in new)])


def log(start, *text):
    print(f"[{time.monotonic() - start:5.0f} s]", *text, file=sys.stderr, flush=True)


def verdicts(build, mutants, start):
    """[(mutant, verdict)], in the order of files, so that little is rebuilt."""
    results = []
    for mutant in sorted(mutants):
        verdict = build.verdict(mutant)
        said = verdict if verdict in NO_MUTANT else f"caught by {verdict}" if verdict else "survives"
        entry, line = description(build.copy, mutant)
        log(start, f"{entry[0]}:{line}: {said}: {mutant.text!r} in {' '.join(entry[1])}")
        results.append((mutant, verdict))
    return results


def stale_entries(listed, layer, possible):
    return sorted(entry for entry in listed if entry[0].startswith(f"src/{layer}/") and entry not in possible)


def campaign(copy, layer, count, seed):
    """(number of mutants, the survivors)."""
    start = time.monotonic()
    mutants = shuffled_mutants(copy, layer, seed)
    print(f"{layer}: {count} of {len(mutants)} places, seed {seed}", flush=True)
    listed = listed_equivalents(copy / "tools/mutants.txt")
    possible = {description(copy, Mutant(place, text))[0] for place, _ in mutants for text in place.changes}
    for entry in stale_entries(listed, layer, possible):
        print(f"\nstale in tools/mutants.txt: no such change is made:\n{shown(entry)}")

    log(start, "building and testing the unchanged sources")
    build = Build(copy, "release", layer, RELEASE_LIMITS)
    waiting = [mutant for mutant in mutants if description(copy, mutant)[0] not in listed]
    results = []
    while waiting and len(results) < count:
        batch, waiting = waiting[:count - len(results)], waiting[count - len(results):]
        results += [result for result in verdicts(build, batch, start) if result[1] not in NO_MUTANT]
    survivors = [mutant for mutant, verdict in results if not verdict]
    if survivors:
        log(start, "running the survivors with sanitizers")
        build = Build(copy, "dev", layer, DEV_LIMITS, "-DCMAKE_CXX_FLAGS_DEBUG=-O1")
        survivors = [mutant for mutant, verdict in verdicts(build, survivors, start) if not verdict]
    return len(results), survivors


def main():
    parser = argparse.ArgumentParser(prog="tools/mutate", description="Lists the changes that no test detects.")
    parser.add_argument("--root", type=Path, default=Path(__file__).resolve().parent.parent)
    parser.add_argument("layer", choices=sorted(OWN_TESTS))
    parser.add_argument("count", metavar="N", nargs="?", type=int, default=60)
    parser.add_argument("seed", metavar="SEED", nargs="?", type=int, default=random.randrange(1 << 32))
    arguments = parser.parse_args()
    copy = arguments.root.resolve() / "build/mutate"
    copy.mkdir(parents=True, exist_ok=True)
    with open(copy.parent / "mutate.lock", "w") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError:
            sys.exit("mutate: build/mutate/ is in use")
        copy_sources(arguments.root.resolve(), copy)
        count, survivors = campaign(copy, arguments.layer, arguments.count, arguments.seed)
    for mutant in survivors:
        entry, line = description(copy, mutant)
        print(f"\n{shown(entry, line)}")
    caught = count - len(survivors)
    print(f"\ncaught {caught} of {count} ({100 * caught / max(count, 1):.0f} %)")
    return 1 if survivors else 0


if __name__ == "__main__":
    sys.exit(main())
