#!/usr/bin/env python3
"""SIGTERM at any time, and launchers that start at the same instant."""
import concurrent.futures
import contextlib
import os
import pathlib
import random
import re
import shutil
import signal
import sqlite3
import statistics
import subprocess
import time
import unittest

from matrix import DEADLINE, MAINSTARTUP, MatrixCase, Sandbox, UNTIL_COMPLETE, WORKERS, check

SIGNALS = 100
ROUNDS = 100
SEED = int(os.environ.get("VQM_TEST_SEED", "20"))


def processes_of_session(leader):
    """Those that are left of it; a process that has ended but was not waited for counts."""
    left = []
    for status in pathlib.Path("/proc").glob("[0-9]*/stat"):
        with contextlib.suppress(OSError):
            fields = status.read_text().rsplit(")", 1)[1].split()
            if int(fields[3]) == leader:
                left.append(status.parent.name)
    return left


class Instrument(Sandbox):
    def __init__(self):
        super().__init__()
        for name in ("instrument.xml", "instrument.ini"):
            shutil.copy(pathlib.Path(os.environ["INSTRUMENT"]) / name, self.folder)

    def start(self, *arguments):
        self.output = open(self.folder / "output", "w+b")
        return subprocess.Popen([MAINSTARTUP, "-l", "instrument.xml", "--headless", *arguments], cwd=self.folder,
                                env=self.environment, stdin=subprocess.DEVNULL, stdout=self.output,
                                stderr=self.output, start_new_session=True)

    def check_end(self, process, expected):
        """Ended in order, or before it had begun, with nothing left behind."""
        code = process.wait(DEADLINE)
        self.errors = (self.folder / "output").read_text(errors="replace")
        self.output.close()
        if code == -signal.SIGTERM:
            check(self.errors == "", f"killed in the middle\n{self.errors}")
        else:
            code_expected = expected(self.errors)
            check(code == code_expected, f"ended with {code}, not {code_expected}\n{self.errors}")
            self.says(rf"^mainstartup: shut down in order, exit code {code}$")
        check(processes_of_session(process.pid) == [], "processes left")
        check(list(self.runtime.iterdir()) == [], "the lock file is left")
        check(list(self.temporary.iterdir()) == [], "temporary files are left")
        names = {file.name for file in self.folder.iterdir()}
        known = {"instrument.xml", "instrument.ini", "output", "run", "tmp", "instrument.sqlite", "instrument.state"}
        check(names <= known, f"left behind: {sorted(names - known)}")
        breadcrumb = self.folder / "instrument.state"
        check(not breadcrumb.exists() or breadcrumb.read_text() == "", "the breadcrumb tells of a crash")
        if "instrument.sqlite" in names:
            with contextlib.closing(sqlite3.connect(self.folder / "instrument.sqlite")) as database:
                check(database.execute("PRAGMA integrity_check").fetchall() == [("ok",)], "the database is damaged")
        return code


def of_a_run_to_the_end(errors):
    """Code 6 says that the stage was not reached."""
    return 0 if "Stage: complete finished" in errors else 6


class Terminations(MatrixCase):
    def test_at_any_time(self):
        """Half of them hit a run that shuts down by itself; the others take two to a run that would stay."""
        def length_of_a_run(_):
            with Instrument() as box:
                begin = time.monotonic()
                box.check_end(box.start(*UNTIL_COMPLETE), lambda errors: 0)
                return time.monotonic() - begin
        with concurrent.futures.ThreadPoolExecutor(WORKERS) as workers:
            whole = statistics.median(workers.map(length_of_a_run, range(2 * WORKERS)))
        chance = random.Random(SEED)
        ends = []

        def row(number):
            first, second = chance.uniform(0, whole), chance.uniform(0, whole / 3)
            stays = number % 2 == 1

            def function():
                with Instrument() as box:
                    process = box.start(*(() if stays else UNTIL_COMPLETE))
                    time.sleep(first)
                    process.send_signal(signal.SIGTERM)
                    if stays:
                        time.sleep(second)
                        process.send_signal(signal.SIGTERM)
                    ends.append(box.check_end(process, (lambda errors: 0) if stays else of_a_run_to_the_end))
            moment = f"after {first * 1000:.0f} ms" + (f" and {second * 1000:.0f} ms later" if stays else "")
            return (f"SIGTERM {moment} of {whole * 1000:.0f}", "ends in order, nothing is left", function)
        self.check_rows([row(number) for number in range(SIGNALS)])
        print({code: ends.count(code) for code in sorted(set(ends))}, "seed", SEED)
        self.assertGreater(len([code for code in ends if code >= 0]), SIGNALS // 4, "hardly one was noticed")

    def test_before_anything_is_there(self):
        """From the first line of the launcher on a signal is noted; while the process list is read, for one."""
        with Sandbox() as box:
            box.configure(["base3"])
            listing = box.folder / "bin" / "ps"
            listing.parent.mkdir()
            listing.write_text('#!/bin/sh\nkill -TERM "$(head -n 1 "$XDG_RUNTIME_DIR"/*.lock)"\n')
            listing.chmod(0o755)
            code = box.run("--headless", PATH=f"{listing.parent}:{os.environ['PATH']}")
            self.assertEqual(code, 0, box.errors)
            box.says("^mainstartup: SIGTERM, shutting down$")
            box.says("^mainstartup: shut down in order, exit code 0$")
            self.assertEqual(list(box.runtime.iterdir()), [])


class Instances(MatrixCase):
    def started_together(self):
        """Exactly one of two stays, whoever it is."""
        with Sandbox() as box:
            box.configure(["base3"])
            (box.folder / "mainstartup").symlink_to(MAINSTARTUP)  # called so it is known in the process list
            outputs = [box.folder / f"output{number}" for number in range(2)]

            def said(number):
                return outputs[number].read_text() if outputs[number].exists() else ""
            gate, opener = os.pipe()
            # No terminal: the process list is that of all processes without one.
            command = 'read go; exec ./mainstartup -l "$0" --headless </dev/null >"$1" 2>&1'
            both = [subprocess.Popen(["sh", "-c", command, str(box.configuration), str(output)], cwd=box.folder,
                                     env=box.environment, stdin=gate, start_new_session=True) for output in outputs]
            os.close(gate)
            try:
                time.sleep(0.05)  # both are likely to be at the gate by then, the round counts all the same
                os.close(opener)
                end = time.monotonic() + DEADLINE

                def wait_for(what, holds):
                    while not holds():
                        check(time.monotonic() < end, f"not seen: {what}: " + " ".join(
                            said(number) for number in range(2)))
                        time.sleep(0.01)
                wait_for("one refused", lambda: any(process.poll() is not None for process in both))
                loser = 0 if both[0].poll() is not None else 1
                winner = 1 - loser
                check(both[loser].returncode == 4, f"refused with {both[loser].returncode}")
                wait_for("the other up or gone", lambda: both[winner].poll() is not None or
                         "start-up is over" in said(winner))
                both[winner].send_signal(signal.SIGTERM)
                code = both[winner].wait(DEADLINE)
                check(code == 0, f"the other ended with {code}\n" + "\n".join(map(said, range(2))))
                check(re.search(r"is in use by |another mainstartup runs", said(loser)), "not said why")
                check(list(box.runtime.iterdir()) == [], "the lock file is left")
            finally:
                for process in both:
                    process.kill()
                    process.wait()

    def test_one_on_its_way_out(self):
        """The holder of the lock sees it in the process list twice, and then no more."""
        with Sandbox() as box:
            box.configure(["base3"])
            listing = box.folder / "bin" / "ps"
            listing.parent.mkdir()
            line = f'echo "1 tty1 ./mainstartup -l {box.configuration}"; '
            listing.write_text(f'#!/bin/sh\n{line}echo >>asked; [ "$(wc -l <asked)" -gt 2 ] || {line}\n')
            listing.chmod(0o755)
            code = box.run("--headless", *UNTIL_COMPLETE, PATH=f"{listing.parent}:{os.environ['PATH']}")
            self.assertEqual(code, 0, box.errors)
            self.assertEqual(len((box.folder / "asked").read_text().splitlines()), 3)

    def test_two_at_the_same_instant(self):
        self.check_rows([(f"round {number}", "one comes up, the other ends with exit code 4", self.started_together)
                         for number in range(ROUNDS)])


if __name__ == "__main__":
    unittest.main(verbosity=2)
