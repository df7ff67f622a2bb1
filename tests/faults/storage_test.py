#!/usr/bin/env python3
"""Full disks and property files that are none: what is said, what still works, and what the files hold afterwards."""
import contextlib
import os
import pathlib
import re
import shutil
import sqlite3
import subprocess
import unittest

from matrix import MatrixCase, Sandbox, Skipped, UNTIL_COMPLETE, check, unprivileged

# Runs what follows with a small file system of its own, full but for what BEFORE holds, and leaves in AFTER what it
# holds then.
ON_FULL_DISK = ["unshare", "--mount", "sh", "-c", '''
    mount -t tmpfs -o size="$SIZE" disk "$DISK" && cp -a "$BEFORE"/. "$DISK" || exit 97
    dd if=/dev/zero of="$DISK"/filler bs=1k 2>/dev/null
    "$@"
    code=$?
    rm "$DISK"/filler && cp -a "$DISK"/. "$AFTER" || exit 98
    exit $code''', "sh"]


class Disk(Sandbox):
    """A sandbox with a full disk."""

    def __init__(self):
        super().__init__()
        self.disk, self.before, self.after = (self.folder / name for name in ("disk", "before", "after"))
        for folder in (self.disk, self.before, self.after):
            folder.mkdir()
        self.environment.update(DISK=str(self.disk), BEFORE=str(self.before), AFTER=str(self.after), SIZE="256k")

    def run_on_disk(self, *arguments, wrapper=tuple(ON_FULL_DISK), **environment):
        code = self.run(*arguments, wrapper=list(wrapper), **environment)
        if code in (1, 97) and not self.errors.count("mainstartup:"):
            raise Skipped("no file system can be mounted")
        check(code != 98, "what the disk holds cannot be looked at")
        return code

    def configure_instrument(self):
        instrument = pathlib.Path(os.environ["INSTRUMENT"])
        shutil.copy(instrument / "instrument.xml", self.folder)
        shutil.copy(instrument / "instrument.ini", self.folder)
        return self

    def set_property(self, key, value):
        text, count = re.subn(rf"^{key}=.*$", f"{key}={value}", self.properties.read_text(), flags=re.MULTILINE)
        check(count == 1, f"no property {key}")
        self.properties.write_text(text)


def settings(file):
    with contextlib.closing(sqlite3.connect(file)) as connection:
        check(connection.execute("PRAGMA integrity_check").fetchall() == [("ok",)], "the database is damaged")
        return connection.execute("SELECT key, value FROM settings ORDER BY key").fetchall()


def trace_on_full_disk():
    with Disk() as box:
        box.configure(["base3", "plugin"])
        box.trace_file = box.disk / "trace"
        code = box.run_on_disk("--headless", *UNTIL_COMPLETE)
        check(code == 0, f"ended with {code}\n{box.errors}")
        box.says(rf"trace {box.disk}/trace: No space left on device; tracing ends here$")
        box.check_order()


def trace_that_fills_the_disk():
    """The first piece of it finds room."""
    with Disk() as box:
        box.configure(["base3"] * 3000)
        box.environment["SIZE"] = "1600k"
        box.trace_file = box.disk / "trace"
        wrapper = [word.replace("dd if=", ": dd if=").replace("rm ", "rm -f ") for word in ON_FULL_DISK]
        code = box.run_on_disk("--headless", *UNTIL_COMPLETE, wrapper=wrapper)
        check(code == 0, f"ended with {code}\n{box.errors[:3000]}")
        box.says(rf"trace {box.disk}/trace: No space left on device; tracing ends here$")
        box.says("shut down in order")
        text = (box.after / "trace").read_bytes()
        check(len(text) > 900_000 and b"\0" not in text and text.endswith(b"\n"), "the file does not end with a line")


def database_on_full_disk():
    with Disk() as box:
        box.configure_instrument()
        file = box.before / "instrument.sqlite"
        box.set_property("file", str(file))
        check(box.run("--headless", *UNTIL_COMPLETE) == 0, box.errors)
        with contextlib.closing(sqlite3.connect(file)) as connection:
            connection.execute("INSERT OR REPLACE INTO settings VALUES ('frequency', '2000000000')")
            connection.commit()
        before = settings(file)
        for left in box.before.iterdir():  # the journal
            if left != file:
                left.unlink()
        box.set_property("file", str(box.disk / "instrument.sqlite"))
        code = box.run_on_disk("--headless", *UNTIL_COMPLETE)
        check(code == 5, f"ended with {code}\n{box.errors}")
        box.says(rf"Database: cannot open {box.disk}/instrument.sqlite: .*(full|disk I/O)")
        box.says("^mainstartup: failed: Database: initialize returned")
        box.says("Stage: complete finished")
        box.says("shut down in order, exit code 5")
        check(settings(box.after / "instrument.sqlite") == before and len(before) > 0, "not what it was")


def properties_on_full_disk():
    with Disk() as box:
        box.configure(["base3", "calling_plugin"])
        shutil.copy(box.properties, box.before)
        before = box.properties.read_text()
        code = box.run_on_disk("--headless", "--properties", str(box.disk / "instrument.ini"), *UNTIL_COMPLETE,
                               VQM_TEST_SAVES="1", VQM_TEST_MISBEHAVES="call-back calling_plugin initialize")
        check(code == 0, f"ended with {code}\n{box.errors}")
        box.says(rf"^saved: {box.disk}/instrument.ini: .*(No space left|full)")
        box.check_order()
        check((box.after / "instrument.ini").read_text() == before, "not what it was")
        check(sorted(file.name for file in box.after.iterdir()) == ["instrument.ini", "state"], "left behind")


def temporary_folder_on_full_disk():
    """Properties are read all the same."""
    with Disk() as box:
        box.configure(["base3", "plugin"])
        code = box.run_on_disk("--headless", *UNTIL_COMPLETE, TMPDIR=str(box.disk))
        check(code == 0, f"ended with {code}\n{box.errors}")
        box.check_order()


class FullDisk(MatrixCase):
    def test_everything_that_is_written(self):
        self.check_rows([
            ("trace, from the start", "said, the modules up and down", trace_on_full_disk),
            ("trace, later", "said, the modules up and down, the trace ends with a line", trace_that_fills_the_disk),
            ("database", "exit code 5, the others up and down, its content as before", database_on_full_disk),
            ("properties, saved by a module", "the module is told, the file as before", properties_on_full_disk),
            ("folder of temporary files", "of no consequence", temporary_folder_on_full_disk)])


def refused(reason, content=None, prepare=None, wrapper=None):
    """Exit code 3, with the file's name and the reason, and nothing has been started."""
    def row():
        with Sandbox() as box:
            box.configure(["base3"])
            if content is not None:
                box.properties.write_bytes(content)
            if prepare is not None:
                box.properties.unlink()
                prepare(box.properties)
            code = box.run("--headless", *UNTIL_COMPLETE, wrapper=wrapper() if wrapper else ())
            check(code == 3, f"ended with {code}\n{box.errors[:2000]}")
            box.says(rf"^mainstartup: properties: {re.escape(str(box.properties))}: {reason}")
            check(box.calls("info") == [] and list(box.runtime.iterdir()) == [], "something was started")
    return row


def taken(content, said=None):
    """The start goes on with what can be understood."""
    def row():
        with Sandbox() as box:
            box.configure(["base3", "plugin"])
            box.properties.write_bytes(content)
            code = box.run("--headless", *UNTIL_COMPLETE)
            check(code == 0, f"ended with {code}\n{box.errors[:2000]}")
            if said:
                box.says(said)
            box.check_order()
    return row


class PropertyFile(MatrixCase):
    def test_hostile_ones(self):
        plain = b"[Instrument]\nFamily=0x2\n"
        self.check_rows([
            ("folder", "exit code 3: not a file", refused("not a file", prepare=lambda path: path.mkdir())),
            ("pipe", "exit code 3: not a file", refused("not a file", prepare=os.mkfifo)),
            ("device", "exit code 3: not a file",
             refused("not a file", prepare=lambda path: path.symlink_to("/dev/zero"))),
            ("no permission", "exit code 3: Permission denied",
             refused("Permission denied", prepare=lambda path: (path.write_bytes(plain), path.chmod(0)),
                     wrapper=unprivileged)),
            ("binary junk", "exit code 3: not a text file", refused("not a text file", os.urandom(100_000) + b"\0")),
            ("junk without NUL", "exit code 3: line 3", refused("line 3: ", plain + b"\x80\xff\xfe\x01" * 50)),
            ("NULs in the middle", "exit code 3: not a text file", refused("not a text file", plain + b"a=\0\0\n")),
            ("a line of 50 MB", "exit code 3: too large", refused("too large", plain + b"a=" + b"x" * (50 << 20))),
            ("a line of 10 MB", "exit code 0", taken(plain + b"a=" + b"x" * (10 << 20))),
            ("UTF-16", "exit code 3: not a text file", refused("not a text file", plain.decode().encode("utf-16"))),
            ("Latin-1", "exit code 0", taken(plain + "Model=Gerät Nr. 1 für Übungen\n".encode("latin-1"))),
            ("broken UTF-8", "exit code 0", taken(plain + b"Model=\xc3\x28\xe2\x82\xf0\x9f\n")),
            ("UTF-8 with a byte order mark", "exit code 0", taken(b"\xef\xbb\xbf" + plain)),
            ("values that name themselves", "exit code 0, plain text",
             taken(plain + b"a=%b%\nb=%a%\nModel=${Model}\nc=@Variant(\\0)\nManufacturer=@File(instrument.ini)\n")),
            ("numbers that are none", "exit code 0, each said once",
             taken(plain + b"[StartupProcess]\nRequiredMemoryMB=many\n[DebugServer]\nenableMessageBoxes=0x\n",
                   'property StartupProcess/RequiredMemoryMB: "many" is no number')),
            ("a family that is none", "exit code 3: which value",
             self.family_that_is_none),
            ("endless continuation", "exit code 0", taken(plain + b"a=x\\\n" + b"y\\\n" * 100_000)),
        ])

    def family_that_is_none(self):
        with Sandbox() as box:
            box.configure(["base3"]).properties.write_text("[Instrument]\nFamily=0xFFFFFFFFF\n")
            code = box.run("--headless", *UNTIL_COMPLETE)
            check(code == 3, f"ended with {code}")
            box.says("property Instrument/Family: 0xFFFFFFFFF: not a bit set")


if __name__ == "__main__":
    unittest.main(verbosity=2)
