#!/usr/bin/env python3
"""Checks who may include whom: usage include_rules.py ROOT, or --self-test.

Data flows one way through the folders, so a folder includes only those before it.
"""
import pathlib
import re
import sys
import tempfile

CORE = ["platform", "registry", "Startup", "xmlconfig", "gui"]
CONTRACT = "registry/VQMModuleContract.h"
SDK = {"registry/VQMModule.h", "registry/VQMModuleC.h"}
STANDARD = re.compile(r"^[a-z_]+(\.h)?$")
PLATFORM_LEAVES = {"xmlconfig/CSearchTblPair.h", "xmlconfig/SMenuTree.h"}

# folder: folders and single headers that its files may include besides their own
RULES = {
    "platform": set(PLATFORM_LEAVES),
    "registry": {"platform"},
    "Startup": {"registry", "platform"},
    "xmlconfig": {"Startup", "platform"},
    "gui": {"Startup", "xmlconfig", "registry", "platform"},
    "diagnosis": set(CORE),
    "launcher": set(CORE) | {"diagnosis"},
    "tools": set(CORE) | {"diagnosis"},
    "examples": SDK | {CONTRACT, "platform", "xmlconfig/SMenuTree.h"},
    "tests/modules": SDK | {CONTRACT, "platform"},
    "tests": set(CORE) | {"diagnosis", "launcher", "tools", "examples"},
    "benchmarks": set(CORE) | {"diagnosis", "launcher", "tools", "examples"},
}
NO_QT_WIDGETS = ["platform", "registry", "Startup", "xmlconfig"]
WIDGETS = re.compile(r"^Q(Application|Widget|MainWindow|MessageBox|Dialog|TextEdit|Label|.*Layout)$")
INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')


def folder_of(path):
    """The longest folder that has rules of its own."""
    matches = [folder for folder in RULES if path == folder or path.startswith(folder + "/")]
    return max(matches, key=len, default=None)


def problem(source, quoted, angled):
    """Why the file `source` may not have this include, or None."""
    folder = folder_of(source)
    if angled:
        if source == CONTRACT and angled not in ("cstddef", "cstdint", "vector"):
            return "the module contract needs nothing but <cstddef>, <cstdint> and <vector>"
        if source in SDK and not STANDARD.match(angled):
            return "what module libraries include needs nothing but the standard library"
        if folder in NO_QT_WIDGETS and WIDGETS.match(angled):
            return f"only gui/ and what builds on it may use widgets"
        return None
    if source == CONTRACT or source in SDK and quoted != CONTRACT:
        return "what module libraries include is the contract and what is made on top of it"
    target = folder_of(quoted)
    if target is None:
        return "includes are written from the root"
    if quoted.startswith("platform/host/") and not source.startswith("platform/host/"):
        return "nothing includes platform/host/"
    if target.startswith("tests") and not source.startswith("tests/"):
        return "nothing includes tests/"
    if target == folder or quoted in RULES[folder] or target in RULES[folder]:
        return None
    if target.split("/")[0] == folder.split("/")[0] == "tests":
        return None
    return f"{folder}/ may not include {target}/"


def check(root):
    problems, seen = [], 0
    for path in sorted(root.rglob("*")):
        source = path.relative_to(root).as_posix()
        if path.suffix not in (".h", ".cpp", ".c") or folder_of(source) is None:
            continue
        seen += 1
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            match = INCLUDE.match(line)
            reason = match and problem(source, match.group(1), match.group(2))
            if reason:
                problems.append(f"{source}:{number}: {line.strip()}: {reason}")
    return problems, seen


def self_test():
    """Every kind of violation is found, and nothing else."""
    files = {
        "platform/A.h": '#include "xmlconfig/CSearchTblPair.h"\n#include "registry/B.h"\n',
        "registry/VQMModuleContract.h": "#include <cstdint>\n#include <QString>\n",
        "registry/VQMModule.h": '#include <type_traits>\n#include <QString>\n#include "registry/B.h"\n',
        "registry/C.cpp": '#include "platform/A.h"\n#include <QWidget>\n#include "platform/host/H.h"\n',
        "gui/G.cpp": '#include "Startup/S.h"\n#include <QWidget>\n#include "G.h"\n',
        "examples/i/M.cpp": '#include "registry/VQMModuleContract.h"\n#include "registry/CPtrSearchTbl.h"\n',
    }
    expected = ["examples/i/M.cpp:2", "gui/G.cpp:3", "platform/A.h:2", "registry/C.cpp:2", "registry/C.cpp:3",
                "registry/VQMModule.h:2", "registry/VQMModule.h:3", "registry/VQMModuleContract.h:2"]
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for name, text in files.items():
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(text)
        found = [":".join(line.split(":")[:2]) for line in check(root)[0]]
    if found != expected:
        sys.exit(f"found {found}\nexpected {expected}")
    print(f"{len(found)} violations found as expected")


def main():
    if sys.argv[1:] == ["--self-test"]:
        return self_test()
    problems, seen = check(pathlib.Path(sys.argv[1]))
    print("\n".join(problems + [f"{seen} files checked, {len(problems)} problems"]))
    return 1 if problems or seen < 50 else 0


if __name__ == "__main__":
    sys.exit(main())
