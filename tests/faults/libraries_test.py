#!/usr/bin/env python3
"""Module files that are none, listed between good ones: each is named with its reason, all others come up and go."""
import os
import pathlib
import random
import re
import shutil
import socket
import struct
import sys
import unittest

from matrix import MatrixCase, MODULES, Sandbox, UNTIL_COMPLETE, check, unprivileged

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "inspection"))
import elf  # noqa: E402

GOOD = ("base3", "database", "scpi", "plugin", "plugload256")
LOADABLE = MODULES / "numbered.so"  # takes its id from the number in its file name
P_LOAD = 1


def mapped_end(content):
    """The end of what the loader maps."""
    table, = struct.unpack_from(elf.WORD, content, elf.PHOFF)
    count, = struct.unpack_from("<H", content, elf.PHNUM)
    ends = []
    for header in range(table, table + count * elf.SEGMENT, elf.SEGMENT):
        offset, = struct.unpack_from(elf.WORD, content, header + elf.P_OFFSET if elf.BITS == 64 else header + 4)
        size, = struct.unpack_from(elf.WORD, content, header + elf.P_FILESZ)
        if struct.unpack_from("<I", content, header)[0] == P_LOAD:
            ends.append(offset + size)
    return max(ends)


def lengths(content):
    """Where to cut: around every header, table and section, and somewhere inside."""
    table, = struct.unpack_from(elf.WORD, content, elf.PHOFF)
    count, = struct.unpack_from("<H", content, elf.PHNUM)
    at = {0, 1, 4, 15, 16, elf.HEADER - 1, elf.HEADER, table + elf.SEGMENT, table + count * elf.SEGMENT - 1,
          table + count * elf.SEGMENT, 4095, 4096, 4097, mapped_end(content) - 1, mapped_end(content),
          len(content) - 1}
    for section in elf.sections(content):
        if section.name in (".dynamic", ".dynsym", ".dynstr", ".gnu.hash", ".rela.dyn", ".rel.dyn", ".text", ".data",
                            ".data.rel.ro", ".note.gnu.build-id", ".init_array", ".eh_frame", ".shstrtab", ".rodata"):
            at |= {section.offset, section.offset + min(section.size // 2, 100)}
    at |= set(random.Random(1).sample(range(len(content)), 8))
    return sorted(length for length in at if length < len(content))


def broken_files(folder):
    """(file, reason as the summary gives it) of every kind; None for a file that is whole enough to come up."""
    content = LOADABLE.read_bytes()

    def write(name, data):
        (folder / name).write_bytes(data)
        return folder / name

    def patched(name, at, data):
        return write(name, content[:at] + data + content[at + len(data):])

    for number, length in enumerate(lengths(content)):
        reason = None if length >= mapped_end(content) else \
            f"file too short: {length} of" if length >= 4096 else "file too short|cannot read file data|invalid ELF header"
        yield write(f"cut{100 + number}.so", content[:length]), reason
    yield write("text.so", b"This is no library.\n" * 100), "invalid ELF header"
    yield patched("other_class.so", elf.CLASS, elf.OTHER_CLASS), "wrong ELF class"
    yield patched("other_machine.so", elf.MACHINE, b"\xf3\0"), "built for another processor: ELF machine 243, not "
    table, = struct.unpack_from(elf.WORD, content, elf.PHOFF)
    yield patched("huge_segment.so", table + elf.P_FILESZ, b"\xff" * (elf.BITS // 8)), "file too short"
    yield MODULES / "unresolved.so", "undefined symbol: symbolThatNoLibraryDefines"
    (folder / "folder.so").mkdir()
    yield folder / "folder.so", "Is a directory"
    os.mkfifo(folder / "pipe.so")
    yield folder / "pipe.so", "not a regular file"
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(str(folder / "socket.so"))
    yield folder / "socket.so", "not a regular file"
    (folder / "device.so").symlink_to("/dev/zero")
    yield folder / "device.so", "not a regular file"
    (folder / "loop.so").symlink_to("loop.so")
    yield folder / "loop.so", "Too many levels of symbolic links"
    (folder / "dangling.so").symlink_to("nowhere.so")
    yield folder / "dangling.so", "No such file"
    yield folder / "absent.so", "No such file"


def check_named(box, file, reason):
    """As missing, with the reason, in the summary, to the trace, the debug output and as an alert."""
    name = re.escape(file.name)
    box.says(rf"^mainstartup: missing: {name}: .*({reason})")
    box.traces(rf"end open: .*{name}: .*({reason})")
    box.says(rf"^mainstartup: Error: Loading Module DLL's: Could not load module {re.escape(str(file))}$")


class Libraries(MatrixCase):
    def test_all_kinds_in_one_configuration(self):
        with Sandbox() as box:
            files = list(broken_files(box.folder))
            listed = []
            for number, (file, _) in enumerate(files):
                listed += [file] + ([GOOD[number // 8]] if number % 8 == 0 and number // 8 < len(GOOD) else [])
            check(set(GOOD) <= {file for file in listed if isinstance(file, str)}, "not all good ones are listed")
            box.configure(listed)
            code = box.run("--headless", *UNTIL_COMPLETE)
            whole = {file.stem for file, reason in files if reason is None}

            def survives():
                check(code == 0, f"exit code {code}\n{box.errors[-2000:]}")
                box.check_order()
                check({file for file, _ in box.calls("completeFinished")} == set(GOOD) | whole, "not all are up")
            rows = [("all together", f"{len(GOOD)} good ones and {len(whole)} cut behind all segments: up, down", survives)]
            for file, reason in files:
                size = f" ({file.stat().st_size} bytes)" if file.stem.startswith("cut") else ""
                if reason is None:
                    rows.append((file.name + size, "comes up", lambda stem=file.stem: check(stem in {
                        name for name, _ in box.calls("completeFinished")}, "not up")))
                else:
                    rows.append((file.name + size, reason, lambda file=file, reason=reason: check_named(box, file, reason)))
            check(len([file for file, _ in files if file.stem.startswith("cut")]) >= 40, "too few cuts")
            self.check_rows(rows)

    def test_needing_a_run_of_their_own(self):
        def without_permission():
            with Sandbox() as box:
                file = box.folder / "secret.so"
                shutil.copy(LOADABLE, file)
                file.chmod(0)
                code = box.configure(["base3", file, "scpi"]).run("--headless", *UNTIL_COMPLETE, wrapper=unprivileged())
                check(code == 0, f"exit code {code}")
                check_named(box, file, "Permission denied")
                box.check_order()

        def vanishing(operation, earlier):
            with Sandbox() as box:
                file = box.folder / "numbered77.so"
                shutil.copy(LOADABLE, file)
                code = box.configure([earlier, file, "scpi"]).run(
                    "--headless", *UNTIL_COMPLETE, VQM_TEST_MISBEHAVES=f"remove={file} {earlier} {operation}")
                check(code == 0, f"exit code {code}")
                check_named(box, file, "No such file")
                box.check_order()

        def strict():
            with Sandbox() as box:
                file = box.folder / "cut.so"
                file.write_bytes(LOADABLE.read_bytes()[:5000])
                box.configure(["database", "scpi", "gui", file])
                check(box.run("--headless", "--strict", *UNTIL_COMPLETE) == 8, "not counted")
                box.check_order()
        self.check_rows([
            ("no permission", "Permission denied, the others up, down", without_permission),
            ("removed while the one before is opened", "No such file, the others up, down",
             lambda: vanishing("opened", "base3")),
            ("removed while the one before describes itself", "No such file, the others up, down",
             lambda: vanishing("info", "base3")),
            ("cut off, with --strict", "exit code 8", strict)])


if __name__ == "__main__":
    unittest.main(verbosity=2)
