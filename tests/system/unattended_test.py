#!/usr/bin/env python3
"""mainstartup where nobody watches: the summary, --strict, breadcrumbs, the service manager."""
import os
import pathlib
import random
import signal
import socket
import subprocess
import time
import unittest

from launcher_case import LauncherCase, DEADLINE, MAINSTARTUP

UNTIL_COMPLETE = ("--until", "complete finished")


class Summary(LauncherCase):
    def summary(self, code, *arguments, files=("database", "status5", "absent", "family4", "no_info", "plugin"), **more):
        process = self.run_to_end(code, "-l", self.configure(*files), "--headless", *UNTIL_COMPLETE, *arguments, **more)
        return [line.removeprefix("mainstartup: ") for line in process.errors.splitlines()]

    def test_everything_that_did_not_come_up(self):
        lines = self.summary(5, "--skip", "plugin")
        for expected in ("failed: status5: initialize returned 5", "skipped: plugin.so",
                         "refused: family4.so: isn't necessary for this device"):
            self.assertIn(expected, lines)
        for expected in ("missing: absent.so: .*No such file or directory$", "[a-z ]+: no_info.so: .*VQMGetModuleInfo",
                         r"missing: ScpiDll \(required\)$", r"[12] of 6 modules up in \d+\.\d+ s$"):
            self.assertRegex("\n".join(lines), f"(?m)^{expected}")

    def test_strict(self):
        complete = ("database", "scpi", "gui", "family4")
        self.summary(0, "--strict", "--family", "2", files=complete)
        for code, files in ((8, ("absent",)), (8, ("no_info",)), (5, ("status5",)), (8, ())):
            with self.subTest(files):
                left_out = ("--skip", "none") if files else ("--skip", "scpi")  # skipped, but required
                self.summary(code, "--strict", *left_out, files=complete + files)
                self.summary(code if code == 5 else 0, *left_out, files=complete + files)

    def test_strict_with_a_damaged_configuration(self):
        path = pathlib.Path(self.configure("database", "scpi", "gui"))
        whole = path.read_text()
        for text, said in ((whole[:-9], "not well formed"),
                           (whole.replace('.so"', '.so" option="XX"', 1).replace("<File ", '<File name="database.so"/><File ', 1),
                            "signalled 10008: ")):
            path.write_text(text)
            for code, strict in ((8, ["--strict"]), (0, [])):
                process = self.run_to_end(code, "-l", str(path), "--headless", *strict, *UNTIL_COMPLETE)
                self.assertIn(f"mainstartup: {said}", process.errors)


class Breadcrumbs(LauncherCase):
    ENDED = "mainstartup: previous start ended in: "

    def setUp(self):
        super().setUp()
        self.configuration = self.configure("base3", "plugin", "gui")
        properties = self.folder / "instrument.ini"
        properties.write_text(properties.read_text() + "Breadcrumb=state\n")
        self.state = self.folder / "state"

    def said(self):
        """What the next start says of this one."""
        process = self.run_to_end(0, "-l", self.configuration, "--offscreen", *UNTIL_COMPLETE)
        self.assertEqual(self.state.read_text(), "")
        return [line.removeprefix(self.ENDED) for line in process.errors.splitlines() if line.startswith(self.ENDED)]

    def test_killed(self):
        """What the file holds after an end in each operation: tests/faults."""
        for place, said in (("base3 info", "describe base3.so"), ("plugin deleted", "terminate plugin")):
            with self.subTest(place):
                self.run_to_end(-signal.SIGKILL, "-l", self.configuration, "--offscreen", *UNTIL_COMPLETE,
                                VQM_TEST_MISBEHAVES=f"{int(signal.SIGKILL)} {place}")
                before = time.strftime("%Y-%m-%d %H:")
                lines = self.said()
                self.assertEqual([line.split(", at ")[0] for line in lines], [said])
                self.assertIn(lines[0].split(", at ")[1][:14], (before, time.strftime("%Y-%m-%d %H:")))

    def test_killed_at_any_time(self):
        for _ in range(15):
            process = subprocess.Popen([MAINSTARTUP, "-l", self.configuration, "--offscreen"], env=self.environment,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(random.uniform(0, 0.06))
            process.kill()
            process.wait()
            self.assertLessEqual(len(self.said()), 1)

    def test_nothing_to_say(self):
        """After an orderly run, and after an end while the instrument ran."""
        self.assertEqual(self.said(), [])
        process = self.start("-l", self.configuration, "--offscreen")
        process.wait_for("start-up is over")
        process.process.kill()
        process.finish()
        self.assertEqual(self.said(), [])

    def test_file_that_is_none(self):
        for foreign in (b"\0\xff nonsense\n" * 100, b"notes\n".ljust(512), b"1 " + b"x" * 999, bytes(513)):
            self.state.write_bytes(foreign)
            process = self.run_to_end(0, "-l", self.configuration, "--offscreen", *UNTIL_COMPLETE)
            self.assertIn(f"breadcrumb: {self.state}: holds something else and is left as it is", process.errors)
            self.assertEqual(self.state.read_bytes(), foreign)
        self.state.write_bytes(bytes(512))
        self.assertEqual(self.said(), [])
        self.state.unlink()
        os.mkfifo(self.state)
        process = self.run_to_end(0, "-l", self.configuration, "--offscreen", *UNTIL_COMPLETE)
        self.assertIn(f"breadcrumb: {self.state}: no regular file", process.errors)


class ServiceManager(LauncherCase):
    def test_is_told(self):
        address = str(self.folder / "notify")
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
            manager.bind(address)
            process = self.start("-l", self.configure("base3", "gui", "plugin"), "--offscreen", *UNTIL_COMPLETE,
                                 NOTIFY_SOCKET=address)
            manager.settimeout(DEADLINE)
            states = []
            while "STOPPING=1" not in states:
                states += manager.recv(10000).decode().splitlines()
            self.assertEqual(process.finish(), 0, process.errors)
        self.assertIn("STATUS=Load Base System + Plugins: 33 %", states)
        self.assertIn("STATUS=Initialize Plugins: 100 %", states)
        self.assertEqual([state for state in states if not state.startswith("STATUS=")], ["READY=1", "STOPPING=1"])
        self.assertGreater(states.index("READY=1"), states.index("STATUS=Initialize Plugins: 100 %"))

    def test_does_not_answer(self):
        process = self.run_to_end(0, "-l", self.configure("base3"), "--headless", *UNTIL_COMPLETE,
                                  NOTIFY_SOCKET=str(self.folder / "nobody"))
        self.assertEqual(process.errors.count("the service manager cannot be told"), 1)

    def test_unit_file(self):
        unit = pathlib.Path(os.environ["UNIT_FILE"])
        copy = self.folder / unit.name
        copy.write_text(unit.read_text().replace("ExecStart=/usr/local/bin/mainstartup", f"ExecStart={MAINSTARTUP}"))
        verified = subprocess.run(["systemd-analyze", "verify", "--man=no", copy], text=True, capture_output=True)
        self.assertEqual((verified.returncode, verified.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
