#!/usr/bin/env python3
"""Runs what the documents show: console_test.py ROOT BIN INSTRUMENT DOCUMENT...

In a block marked "console", "$ " begins a command and "> " continues it; what follows is its output, in which a line
"..." stands for any lines. The commands of a document run one after the other in one folder, which holds the example
instrument's configuration and the documents' folder. Times, ports and process numbers may differ. A block marked "sh"
must be sound shell.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

FENCE = re.compile(r"^```(console|sh)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
HOME = "/opt/sg100"  # of the instrument, in the documents


def normal(line):
    """The line without what differs from run to run."""
    for pattern, name in ((r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", "TIME"), (r"\d+\.\d+", "N"), (r"port \d+", "port N"),
                          (r"\s+", " ")):
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


def check(document, folder, environment, instrument):
    problems, count = [], 0
    for kind, block in FENCE.findall(document.read_text()):
        if kind == "sh":
            run = subprocess.run(["bash", "-n"], input=block, text=True, capture_output=True)
            problems += [f"{document.name}: {run.stderr}"] if run.returncode else []
            count += 1
            continue
        for command, expected in commands_of(block):
            run = subprocess.run(["bash", "-c", command.replace(HOME, str(instrument))], cwd=folder, env=environment, text=True, timeout=60,
                                 stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            found = run.stdout.replace(str(instrument), HOME).replace(str(folder), HOME).splitlines()
            count += 1
            if not matches(expected, found):
                problems.append(f"{document.name}: $ {command}\n" + "\n".join(found) + "\n-- instead of --\n"
                                + "\n".join(expected))
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
            environment.update(PATH=f"{programs}:{os.environ['PATH']}", XDG_RUNTIME_DIR=folder, LC_ALL="C.UTF-8")
            found, commands = check(root / name, folder, environment, instrument)
        problems, count = problems + found, count + commands
    print("\n\n".join(problems + [f"{count} commands run, {len(problems)} with another output"]))
    return 1 if problems or not count else 0


if __name__ == "__main__":
    sys.exit(main())
