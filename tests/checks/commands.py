#!/usr/bin/env python3
"""The programs' help, their manual pages and the shell completion agree: commands.py ROOT PROGRAM..."""
import pathlib
import re
import subprocess
import sys

COMPLETE = """source "$1"; COMP_WORDS=("${@:2}"); COMP_CWORD=$(($# - 2))
_vqmstartup "$2" "${!#}" "${@: -2:1}"; printf '%s\\n' "${COMPREPLY[@]}" """


def options(text):
    return set(re.findall(r"(?<![\w-])--[a-z][a-z-]+", text))


def main():
    root, programs = pathlib.Path(sys.argv[1]), sys.argv[2:]
    problems = []

    def complete(program, *words):
        run = subprocess.run(["bash", "-c", COMPLETE, "bash", root / "completions" / "mainstartup", program, *words],
                             capture_output=True, text=True, cwd=root / "scripts")
        return run.stdout.split("\n")[:-1]

    def expect(what, found, expected):
        if found != expected:
            problems.append(f"{what}: {sorted(found ^ expected)}")

    for program in programs:
        name = pathlib.Path(program).name
        text = subprocess.run([program, "--help"], capture_output=True, text=True, check=True).stdout
        page = (root / "docs" / "man" / f"{name}.1.scd").read_text()
        section = page[page.index("\n# OPTIONS"):].split("\n# EXIT")[0]
        documented = {option for line in section.splitlines() if line.startswith("*") for option in options(line)}
        listed = options("\n".join(re.findall(r"^ +(?:-\w, )?--[a-z-]+", text, re.MULTILINE)))
        expect(f"{name}: options in help or manual only", listed, documented)
        expect(f"{name}: options not completed", set(complete(program, "--")) & listed, listed)
        codes = set(re.findall(r"^  (\d)  ", text, re.MULTILINE))
        expect(f"{name}: exit codes", codes, set(re.findall(r"^(?:\*|\|[ \[] )(\d)\b", page, re.MULTILINE)))
        expect(f"{name}: a file is not completed", set(complete(program, "ru")), {"run"})
        if "\n  command " in text:
            expect(f"{name}: command", set(complete(program, "bl")), {"blame"})
        if "--until" in text:
            expect(f"{name}: stage", set(complete(program, "--until", "mod")), {"modules\\ finished"})
    print("\n".join(problems + [f"{len(programs)} programs checked"]))
    return 1 if problems or not programs else 0


if __name__ == "__main__":
    sys.exit(main())
