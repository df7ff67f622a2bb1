#!/usr/bin/env python3
"""Writes ROOT/build/lint/build.ninja, the steps of scripts/lint: lint-plan.py ROOT"""
import json
import pathlib
import re
import subprocess
import sys

# Only g++ knows these.
GCC_ONLY = re.compile(r" -(fno-gnu-unique|femit-class-debug-always)\b")

# Sources that the preset dev does not build are compiled like these.
MODEL = {".c": "tests/modules/HandMadeModule.c", ".cpp": "examples/instrument/GuiDll/GuiModule.cpp"}

# Most of clang-tidy's time goes into the headers of Qt: sources of equal flags are put together, and taken one by one
# only when there is something to tell, which may also be that they do not compile together.
TOGETHER = 10

RULES = """
rule tidy
  command = { cat $in >$group && clang-tidy-14 --quiet $checks -p . $group >$out.log 2>&1; } || $
    clang-tidy-14 --quiet $checks -p . $in 2>$out.log || { grep -v 'generated.$$' $out.log; false; } && touch $out
  description = clang-tidy $names
rule cppcheck
  # CastIntegerToAddressAtReturn takes a QPointer for an integer; the compilers refuse real ones.
  command = cppcheck --quiet --template=gcc --error-exitcode=1 --inline-suppr --library=qt,posix,googletest $
    --suppress=CastIntegerToAddressAtReturn --enable=warning,performance,portability $flags $in && touch $out
  description = cppcheck $names
rule analyzer
  command = $gcc -fanalyzer -Werror
  description = gcc -fanalyzer $names
"""


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


class Source:
    def __init__(self, root, name, built, included):
        self.name, self.path, self.language = name, str(root / name), pathlib.Path(name).suffix
        entry = built.get(self.path) or built[str(root / MODEL[self.language])]
        self.directory = entry["directory"]
        command, _, self.target, _ = re.match(r"(.*)( -o (\S+))( -c \S+)$", entry["command"]).groups()
        self.gcc = command
        self.clang = GCC_ONLY.sub("", command)
        self.headers = included.get(self.target, [])

    def entry(self, path):
        return {"directory": self.directory, "file": path, "command": f"{self.clang} -c {path}"}


def included_headers(root, dev):
    """Object file: the headers of this project that it was made of."""
    included = {}
    for line in output("ninja", "-C", dev, "-t", "deps").splitlines():
        if ": #deps" in line:
            headers = included.setdefault(line.split(": #deps")[0], [])
        elif line.startswith("    "):
            path = (dev / line.strip()).resolve()
            if path.is_relative_to(root):
                headers.append(str(path))
    return included


def groups(sources):
    alike = {}
    for source in sources:
        alike.setdefault((source.language, source.clang), []).append(source)
    for members in alike.values():
        for at in range(0, len(members), TOGETHER):
            yield members[at:at + TOGETHER]


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    dev, lint = root / "build" / "dev", root / "build" / "lint"
    built = {}  # a module's source that is built in many variants is taken once
    for entry in json.loads((dev / "compile_commands.json").read_text()):
        built.setdefault(entry["file"], entry)
    included = included_headers(root, dev)
    names = output("git", "-C", root, "ls-files", "*.c", "*.cpp").split()
    sources = [Source(root, name, built, included) for name in names]

    entries, steps = [source.entry(source.path) for source in sources], []

    def step(rule, members, **variables):
        inputs = " ".join(source.path for source in members)
        headers = " ".join(sorted({header for source in members for header in source.headers}))
        steps.append(f"build {rule}/{members[0].name}: {rule} {inputs} | {headers} {root}/.clang-tidy")
        variables["names"] = " ".join(source.name for source in members)
        steps.extend(f"  {key} = {value}" for key, value in variables.items())

    for members in groups(sources):
        group = f"{lint}/tidy/{members[0].name}.group{members[0].language}"
        entries.append(members[0].entry(group))
        # The paths through tests are run, under sanitizers as well; to analyze them takes as long as all else.
        checks = "--checks=-clang-analyzer-*" if members[0].name.startswith("tests/") else ""
        step("tidy", members, group=group, checks=checks)
    for source in sources:
        standard = " --std=c++20" if source.language == ".cpp" else " --std=c11"
        step("cppcheck", [source], flags=" ".join(re.findall(r" (-[DI]\S+)", source.gcc)) + standard)
        if source.language == ".c":
            step("analyzer", [source], gcc=f"{source.gcc} -o analyzer/{source.name} -c {source.path}")

    lint.mkdir(parents=True, exist_ok=True)
    (lint / "compile_commands.json").write_text(json.dumps(entries))
    (lint / "build.ninja").write_text(RULES + "\n".join(steps) + "\n")


main()
