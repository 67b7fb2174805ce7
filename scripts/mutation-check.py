#!/usr/bin/env python3
"""Mutation check: do the tests notice single-line faults?

Each fault in scripts/mutation-faults/*.txt (one file per subsystem) replaces one text that
occurs exactly once in one file. The faults are applied one at a time to a copy of the tree (build-mutation/tree), which
is rebuilt incrementally in build-mutation/tree/build, and only the test programs the fault names
are built and run. A fault is caught when one of them fails (or hangs past the time limit);
otherwise it survives. The report lists the survivors and the share caught.

    scripts/mutation-check.py                 every fault
    scripts/mutation-check.py acquire-        the faults whose name starts so
    scripts/mutation-check.py --list          the faults, without running anything

The machine is shared: the build runs with -j2 unless MUTATION_JOBS says otherwise.
"""

import argparse
import os
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "build-mutation"
TREE = WORK / "tree"
# Inside the copy, as build/ is inside the tree: the same relative paths let a compiler cache
# with a base directory reuse the objects of unchanged files.
BUILD = TREE / "build"
FAULTS = ROOT / "scripts" / "mutation-faults"
TEST_TIMEOUT_S = 600  # a hang counts as caught
JOBS = os.environ.get("MUTATION_JOBS", "2")


class Fault:
    def __init__(self, name, description):
        self.name = name
        self.description = description
        self.file = self.find = self.replace = None
        self.tests = []


def read_faults(path):
    """Blocks of "name: description" followed by file:, find:, replace: and tests: lines, which
    name the file, the text to replace (it must occur exactly once), its replacement and the
    test programs that can notice the fault (only those are rebuilt and run). The value of
    find: and replace: is the text after "find: " as it stands, indentation included; a field
    given again continues it on a new line. Lines starting with # are comments."""
    faults = []
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line.lstrip().startswith("#"):
            continue
        key, _, value = line.partition(":")
        key, value = key.strip(), value[1:] if value.startswith(" ") else value
        if not line.startswith(" "):
            faults.append(Fault(key, value.strip()))
        elif not faults:
            sys.exit(f"{path}:{number}: a field before the first fault")
        elif key in ("find", "replace"):
            previous = getattr(faults[-1], key)
            setattr(faults[-1], key, value if previous is None else previous + "\n" + value)
        elif key == "file":
            faults[-1].file = value.strip()
        elif key == "tests":
            faults[-1].tests = value.split()
        else:
            sys.exit(f"{path}:{number}: unknown field {key!r}")
    for fault in faults:
        if None in (fault.file, fault.find, fault.replace) or not fault.tests:
            sys.exit(f"{path}: fault {fault.name} lacks file, find, replace or tests")
    return faults


def sync_tree():
    """Copies the tracked and new files into the copy, touching only those that changed, so
    that the copy's build stays incremental."""
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "-z"], cwd=ROOT,
                            check=True, capture_output=True).stdout.decode().split("\0")
    for name in filter(None, listed):
        source, copy = ROOT / name, TREE / name
        if not source.is_file():
            continue
        if copy.is_file() and copy.read_bytes() == source.read_bytes():
            continue
        copy.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(source, copy)
        copy.touch()


def run(command, **options):
    return subprocess.run(command, cwd=BUILD, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, **options)


def build(targets):
    return run(["cmake", "--build", ".", "-j", JOBS, "--target", *targets]).returncode == 0


def tests_pass(targets):
    for target in targets:
        try:
            result = run([str(BUILD / "tests" / target), "--gtest_brief=1"],
                         env={**os.environ, "QT_QPA_PLATFORM": "offscreen"},
                         timeout=TEST_TIMEOUT_S)
        except subprocess.TimeoutExpired:
            return False
        if result.returncode != 0:
            return False
    return True


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("prefixes", nargs="*", help="run only faults whose name starts so")
    parser.add_argument("--list", action="store_true", help="list the faults and stop")
    arguments = parser.parse_args()

    faults = [f for path in sorted(FAULTS.glob("*.txt")) for f in read_faults(path)
              if not arguments.prefixes or any(f.name.startswith(p) for p in arguments.prefixes)]
    if arguments.list:
        for fault in faults:
            print(f"{fault.name:32} {fault.description}  [{' '.join(fault.tests)}]")
        return 0

    sync_tree()
    BUILD.mkdir(parents=True, exist_ok=True)
    if not (BUILD / "build.ninja").exists():
        configure = ["cmake", "-S", str(TREE), "-B", str(BUILD), "-G", "Ninja",
                     "-DCMAKE_BUILD_TYPE=RelWithDebInfo", "-DKX_BUILD_BENCH=OFF",
                     "-DKX_BUILD_FUZZ=OFF"]
        if shutil.which("ccache"):
            configure.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        if subprocess.run(configure, stdout=subprocess.DEVNULL).returncode != 0:
            sys.exit("configuring the copy failed")
    targets = sorted({t for f in faults for t in f.tests})
    if not build(targets) or not tests_pass(targets):
        sys.exit("the unchanged copy does not build or its tests fail: nothing to measure")

    caught, survived, invalid = [], [], []
    for fault in faults:
        path = TREE / fault.file
        original = path.read_text(encoding="utf-8")
        if original.count(fault.find) != 1:
            invalid.append((fault, "the text to replace does not occur exactly once"))
            continue
        path.write_text(original.replace(fault.find, fault.replace), encoding="utf-8")
        try:
            if not build(fault.tests):
                invalid.append((fault, "does not build"))
            elif tests_pass(fault.tests):
                survived.append(fault)
            else:
                caught.append(fault)
        finally:
            path.write_text(original, encoding="utf-8")  # a newer time: rebuilt when next needed
        state = "caught" if caught and caught[-1] is fault else (
            "SURVIVED" if survived and survived[-1] is fault else "invalid")
        print(f"{state:8} {fault.name}: {fault.description}", flush=True)

    judged = len(caught) + len(survived)
    print()
    for fault in survived:
        print(f"survived: {fault.name}: {fault.description} ({fault.file})")
    for fault, why in invalid:
        print(f"invalid:  {fault.name}: {why}")
    share = 100.0 * len(caught) / judged if judged else 0.0
    print(f"\n{len(caught)} of {judged} faults caught ({share:.0f} %), "
          f"{len(invalid)} invalid")
    return 0 if judged and not invalid and share >= 90 else 1


if __name__ == "__main__":
    sys.exit(main())
