#!/usr/bin/env python3
"""mainstartup and its windows: splash window, Gui stage, main window, pictures, a real display."""
import os
import pathlib
import re
import shutil
import signal
import struct
import subprocess
import unittest
import zlib

from launcher_case import LauncherCase

UNTIL_COMPLETE = ("--until", "complete finished")
IN_ORDER = "mainstartup: shut down in order, exit code "


def read_picture(path):
    """Width, height and variety of a PNG of 8 bits a sample: the number of different pixels as they are stored,
    that is as differences to their neighbours, of which a blank picture has one or two."""
    data = pathlib.Path(path).read_bytes()
    width, height, depth, colour_type, *_ = struct.unpack(">IIBBBBB", data[16:29])
    assert data[:8] == b"\x89PNG\r\n\x1a\n" and depth == 8 and colour_type in (2, 6), data[:29]
    packed, at = b"", 8
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        packed += data[at + 8:at + 8 + length] if kind == b"IDAT" else b""
        at += length + 12
    rows = zlib.decompress(packed)
    sample = 3 if colour_type == 2 else 4
    stride = width * sample + 1  # a row begins with the number of its filter
    starts = (y * stride + 1 + x * sample for y in range(height) for x in range(width))
    pixels = {rows[start:start + sample] for start in starts}
    return width, height, len(pixels)


class GuiStage(LauncherCase):
    def seen(self, *modules, mode="--offscreen"):
        """What the user sees during the first pass and after the Gui stage."""
        process = self.run_to_end(0, "-l", self.configure("probe", *modules), mode, *UNTIL_COMPLETE,
                                  VQM_TEST_PROBE="describe the windows")
        return re.findall(r"^seen:(.*)$", process.errors, re.MULTILINE)

    def test_gui_module_replaces_the_splash_window(self):
        self.assertEqual(self.seen("window"), [" splash* Abort", " window*"])

    def test_gui_module_without_a_main_widget(self):
        self.assertEqual(self.seen("gui"), [" splash* Abort", ""])

    def test_no_gui_module(self):
        """The splash window stays the main widget, its button goes."""
        self.assertEqual(self.seen()[1:], [" splash*"] * 2)

    def test_gui_disabled(self):
        """The Gui module stays down, the remaining steps run."""
        process, trace = self.run_traced(0, "-l", self.configure("base3", "window", "plugin"), "--headless",
                                         *UNTIL_COMPLETE)
        texts = [text for _, text in trace]
        self.assertNotIn("Initializing GuiDll...", texts)
        self.assertIn("Stage: complete finished", texts)
        self.assertEqual(self.module_log("startGui", "initialize"),
                         ["base3 initialize -1", "plugin initialize 1", "plugin initialize 6", "window startGui"])

    def test_its_event_at_all_times(self):
        """Runs the stage again while the instrument runs, and is ignored while modules come up or go down.

        Initialized twice, the Gui module counts twice, hence the stage "terminate modules" comes twice.
        """
        process = self.start("-l", self.configure("probe", "gui", "plugin"), "--offscreen",
                             VQM_TEST_PROBE="start the Gui stage at all times")
        process.wait_for("up again")
        process.process.send_signal(signal.SIGTERM)
        self.assertEqual(process.finish(), 0, process.errors)
        self.assertEqual(self.module_log("initialize"), ["plugin initialize 1", "gui initialize -1",
                         "plugin initialize 6", "gui initialize -1", "plugin initialize 6"])
        self.assertEqual(process.errors.count("start-up is over"), 1)
        self.assertEqual(process.errors.count("comes at the wrong time, ignored"), 1 + 2)


class Splash(LauncherCase):
    def test_abort_during_discovery(self):
        process = self.run_to_end(0, "-l", self.configure("base3", "probe", "gui"), "--offscreen",
                                  VQM_TEST_PROBE="abort discovery")
        self.assertEqual(self.module_log("create", "initialize", "deleted"), ["base3 create 3", "base3 deleted"])
        self.assertIn(IN_ORDER + "0", process.errors)
        self.assertNotIn("start-up is over", process.errors)


class Closing(LauncherCase):
    def test_closing_the_main_window_shuts_down(self):
        process = self.run_to_end(0, "-l", self.configure("base3", "window"), "--offscreen", VQM_TEST_WINDOW="close")
        self.assertEqual(self.module_log("terminate"), ["window terminate", "base3 terminate"])
        self.assertIn(IN_ORDER + "0", process.errors)

    def test_module_has_left_its_event_loop_before_it_goes(self):
        process = self.start("-l", self.configure("window"), "--offscreen", VQM_TEST_WINDOW="run an event loop")
        process.wait_for("in an event loop")
        process.process.send_signal(signal.SIGTERM)
        self.assertEqual(process.finish(), 0, process.errors)
        self.assertEqual(self.module_log("leftEventLoop", "terminate"), ["window leftEventLoop", "window terminate"])


class Screenshot(LauncherCase):
    def setUp(self):
        super().setUp()
        self.picture = self.folder / "picture.png"

    def take(self, code, *modules, mode="--offscreen", arguments=UNTIL_COMPLETE, **environment):
        return self.run_to_end(code, "-l", self.configure(*modules), mode, "--screenshot", str(self.picture),
                               *arguments, **environment)

    def test_main_window(self):
        process = self.take(0, "window")
        self.assertIn(f"mainstartup: screenshot saved: {self.picture}\n", process.errors)
        width, height, variety = read_picture(self.picture)
        self.assertEqual((width, height), (320, 200))
        self.assertGreater(variety, 4)

    def test_instrument_goes_on_running(self):
        process = self.start("-l", self.configure("window"), "--offscreen", "--screenshot", str(self.picture))
        process.wait_for("screenshot saved")
        read_picture(self.picture)
        process.process.send_signal(signal.SIGTERM)
        self.assertEqual(process.finish(), 0, process.errors)

    def test_no_picture(self):
        for said, call in (
                ("there is no main window", lambda: self.take(7, "gui")),
                ("there is no main window", lambda: self.take(7, "base3", mode="--headless")),
                ("has not been shown", lambda: self.take(7, "window", VQM_TEST_WINDOW="stay hidden")),
                ("the shutdown came before", lambda: self.take(
                    7, "base3", arguments=("--until", "modules finished")))):
            process = call()
            self.assertIn("mainstartup: --screenshot: ", process.errors)
            self.assertIn(said, process.errors)
            self.assertFalse(self.picture.exists())
        self.picture = self.folder / "absent" / "picture.png"
        self.assertIn(f"--screenshot: {self.picture}: No such file", self.take(7, "window").errors)


class Display(LauncherCase):
    """On an X server of its own."""

    def setUp(self):
        super().setUp()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
                                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(self.server.communicate)
        self.addCleanup(self.server.terminate)
        self.environment["DISPLAY"] = ":" + self.server.stdout.readline().strip()

    def test_example_instrument(self):
        for name in ("instrument.xml", "instrument.ini"):
            shutil.copy(pathlib.Path(os.environ["INSTRUMENT"]) / name, self.folder)
        picture = self.folder / "picture.png"
        process = self.start("-l", str(self.folder / "instrument.xml"), "--screenshot", str(picture))
        process.wait_for("screenshot")
        width, height, variety = read_picture(picture)
        self.assertGreaterEqual((width, height), (640, 400))
        self.assertGreater(variety, 50)
        process.process.send_signal(signal.SIGTERM)
        self.assertEqual(process.finish(), 0, process.errors)
        self.assertNotIn("offscreen", process.errors)

    def test_closing(self):
        process = self.run_to_end(0, "-l", self.configure("window", "plugin"), VQM_TEST_WINDOW="close")
        self.assertIn(IN_ORDER + "0", process.errors)
        self.assertEqual(self.module_log("terminate"), ["plugin terminate", "window terminate"])

    def start_with_boxes(self, probe, *arguments):
        configuration = pathlib.Path(self.configure("probe", "window"))
        with configuration.with_suffix(".ini").open("a") as properties:
            properties.write("[DebugServer]\nenableMessageBoxes=1\n")
        return self.start("-l", str(configuration), *arguments, VQM_TEST_PROBE=probe)

    def test_message_boxes_wait_until_they_are_closed(self):
        process = self.start_with_boxes("close message boxes", *UNTIL_COMPLETE)
        self.assertEqual(process.finish(), 0, process.errors)
        self.assertEqual(re.findall("^box.*", process.errors, re.MULTILINE),
                         ["box: start-up thread", "box is closed", "box: GUI thread", "box is closed"])

    def test_message_boxes_do_not_keep_the_process_from_ending(self):
        process = self.start_with_boxes("leave a message box")
        process.wait_for("box: ")
        process.process.send_signal(signal.SIGTERM)
        self.assertEqual(process.finish(), 0, process.errors)
        self.assertIn("box is closed", process.errors)
        self.assertIn(IN_ORDER + "0", process.errors)


if __name__ == "__main__":
    unittest.main(verbosity=2)
