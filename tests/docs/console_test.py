#!/usr/bin/env python3
"""Runs what the documents show: console_test.py ROOT BIN INSTRUMENT DOCUMENT...

A code block says what it is. In "console", "$ " begins a command, which has to succeed, and "> " continues it; what
follows is its output, in which a line "..." stands for any lines. The commands of a document run one after the other in
one folder, which holds the example instrument's configuration and the documents' trace. Times, ports,
process numbers and the machine may differ. A block with "file=NAME" is written to that file. "sh" must be sound shell, "sh ci" are commands of
.ci/run, "text" is a drawing.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

FENCE = re.compile(r"^```([^\n]*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
FILE = re.compile(r"(cpp|c|cmake|xml|ini) file=([\w.-]+)$")
HOME, SOURCES = "/opt/sg100", "/opt/vqmstartup"  # of the instrument and this project, in the documents


def normal(line):
    """The line without what differs from run to run."""
    for pattern, name in ((r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", "TIME"), (r"\d+\.\d+", "N"), (r"port \d+", "port N"),
                          (r": (32|64)-bit \S+,", ": N-bit,"), (r"\s+", " ")):
        line = re.sub(pattern, name, line)
    return line.strip()


def matches(expected, found):
    if not expected:
        return not found
    if expected[0] == "...":
        return any(matches(expected[1:], found[i:]) for i in range(len(found) + 1))
    return bool(found) and normal(expected[0]) == normal(found[0]) and matches(expected[1:], found[1:])


def commands_of(block):
    commands = []
    for line in block.splitlines():
        if line.startswith("$ "):
            commands.append((line[2:], []))
        elif line.startswith("> ") and not commands[-1][1]:
            commands[-1] = (commands[-1][0] + "\n" + line[2:], [])
        else:
            commands[-1][1].append(line)
    return commands


def run_console(block, folder, environment, places):
    """The commands whose output is another, or that fail, and how many there are."""
    problems, commands = [], commands_of(block)
    for command, expected in commands:
        for name, place in places.items():
            command = command.replace(name, place)
        run = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, text=True, timeout=120,
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        output = run.stdout
        for name, place in [*places.items(), (HOME, folder)]:
            output = output.replace(place, name)
        if run.returncode or not matches(expected, output.splitlines()):
            problems.append(f"$ {command}\n{output}-- exit code {run.returncode}, instead of --\n" +
                            "\n".join(expected))
    return problems, len(commands)


def check(root, document, folder, environment, places):
    problems, count = [], 0
    for kind, block in FENCE.findall((root / document).read_text()):
        found, commands = [], 1
        if kind == "console":
            found, commands = run_console(block, folder, environment, places)
        elif FILE.match(kind):
            pathlib.Path(folder, FILE.match(kind)[2]).write_text(block.replace(HOME, places[HOME]))
        elif kind == "sh":
            run = subprocess.run(["bash", "-n"], input=block, text=True, capture_output=True)
            found = [run.stderr] if run.returncode else []
        elif kind == "sh ci":
            run_by_ci = (root / ".ci" / "run").read_text().split("\n")
            for line in block.splitlines():
                command = line.split("#")[0].strip()
                if not any(re.search(rf"(^| ){re.escape(command)}$", of_ci) for of_ci in run_by_ci):
                    found.append(f".ci/run does not run: {command}")
        elif kind != "text":
            found = [f"a block that nothing checks: ```{kind}"]
        problems += [f"{document}: {problem}" for problem in found]
        count += commands
    return problems, count


def main():
    root, programs, instrument = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])
    problems, count = [], 0
    for name in sys.argv[4:]:
        with tempfile.TemporaryDirectory(prefix="documents-") as folder:
            for file in ("instrument.xml", "instrument.ini"):
                shutil.copy(instrument / file, folder)
            for file in ("startup.trace", "startup-chart.svg"):
                shutil.copy(root / "docs" / file, folder)
            environment = {key: value for key, value in os.environ.items() if key not in ("DISPLAY", "WAYLAND_DISPLAY")}
            environment.update(PATH=f"{programs}:{os.environ['PATH']}", XDG_RUNTIME_DIR=folder, LC_ALL="C.UTF-8",
                               CMAKE_GENERATOR="Ninja")
            # LeakSanitizer itself crashes in some runs of the front panel; leaks are looked for elsewhere.
            environment["ASAN_OPTIONS"] = "detect_leaks=0"
            found, commands = check(root, name, folder, environment, {HOME: str(instrument), SOURCES: str(root)})
        problems, count = problems + found, count + commands
    print("\n\n".join(problems + [f"{count} commands and blocks checked, {len(problems)} problems"]))
    return 1 if problems or not count else 0


if __name__ == "__main__":
    sys.exit(main())
