#!/usr/bin/env python3
"""Lines run by folder, and those of the core that are not: coverage-folders.py COVERAGE.JSON"""
import json
import pathlib
import sys

CORE = ("Startup", "registry", "xmlconfig", "gui", "platform", "diagnosis", "launcher")


def main():
    files = json.loads(pathlib.Path(sys.argv[1]).read_text())["files"]
    folders, missed = {}, []
    for file in files:
        counted = [line for line in file["lines"] if not line["gcovr/noncode"]]
        bare = [line["line_number"] for line in counted if line["count"] == 0]
        total = folders.setdefault(str(pathlib.PurePath(file["file"]).parent), [0, 0])
        total[0] += len(counted)
        total[1] += len(bare)
        if file["file"].startswith(CORE):
            text = pathlib.Path(file["file"]).read_text().splitlines()
            missed += [f"{file['file']}:{number}: {text[number - 1].strip()}" for number in bare]
    for folder, (lines, bare) in sorted(folders.items()):
        print(f"{folder:40} {lines:6} lines {100 * (lines - bare) / max(lines, 1):6.1f} %")
    print(f"\n{len(missed)} lines of the core that no test has run:", *missed, sep="\n")


main()
