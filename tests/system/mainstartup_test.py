#!/usr/bin/env python3
"""mainstartup as a process: order of start-up and shutdown, failures, exit codes, signals, instances."""
import hashlib
import os
import pathlib
import re
import shlex
import shutil
import signal
import subprocess
import unittest

from launcher_case import LauncherCase, MAINSTARTUP, MODULES

MODES = ("--offscreen", "--headless")
UNTIL_MODULES = ("--until", "modules finished")
UNTIL_COMPLETE = ("--until", "complete finished")
IN_ORDER = "mainstartup: shut down in order, exit code "


def found(name, module_id):
    return [f"Module Name             : {name}", f"Module Id               : {module_id}",
            "Module Version          : 03.14.159", "Module Interface Version: 01.02.345"]


def initialized(*names):
    return [line for name in names for line in (f"Initializing {name}...", "...ok.")]


def initialized_parts(kind, **parts):
    return [line for name, own in parts.items()
            for line in (f"Initializing {kind} {name}    Parts: {own}", "...ok.")]


def terminated(*names, what="Terminate {}..."):
    return [line for name in names for line in (what.format(name), "...ok")]


class StartAndShutdown(LauncherCase):
    """The trace, a line at a time: (runs on the GUI thread, text)."""
    FILES = ["plugin", "gui", "plugload256", "database", "family4", "loadable32", "absent", "type2", "scpi",
             "plugload128", "base3", "loadable16"]
    DISCOVERY = (found("plugin", 10000) + found("GuiDll", 7) + found("plugload256", 30) + found("Database", 4)
                 + ["family4.so module will be unloaded because it isn't necessary for this device!"]
                 + found("loadable32", 21)
                 + [f"Could not load module\\n{MODULES}/absent.so",
                    "type2.so module will be unloaded because of wrong module type"]
                 + found("ScpiDll", 6) + found("plugload128", 40) + found("base3", 3) + found("loadable16", 20))
    FIRST_PASS = ["initializeModules"] + initialized("base3", "Database", "ScpiDll")
    GUI_PASS = ["initializeModules"] + initialized("GuiDll") + ["Stage: modules finished"]
    DATABASE_PARTS = (
        ["initializePlugIns"]
        + initialized_parts("Loadable", loadable16="Database ", loadable32="Database ")
        + ["Stage: loadables finished    Parts: Database "]
        + initialized_parts("Plugin", plugin="Database ")
        + ["Stage: plugins finished    Parts: Database "]
        + initialized_parts("Plugin Loadable", plugload256="Database ")
        + ["Stage: plugin loadables finished    Parts: Database "])
    SCPI_AND_GUI_PARTS = (
        ["initializePlugIns"]
        + initialized_parts("Loadable", loadable16="Scpi ", loadable32="Scpi Gui ")
        + ["Stage: loadables finished    Parts: Scpi Gui "]
        + initialized_parts("Plugin", plugin="Gui ")
        + ["Stage: plugins finished    Parts: Scpi Gui "]
        + initialized_parts("Plugin Loadable", plugload128="Gui ")
        + ["Stage: plugin loadables finished    Parts: Scpi Gui ", "Stage: complete finished"])
    PLUGINS_DOWN = (["Stage: terminate plugin loadables"]
                    + terminated("plugload256", "plugload128", what="Terminate Plugin: {}")
                    + ["Stage: terminate plugins"] + terminated("plugin", what="Terminate Plugin: {}")
                    + ["Stage: terminate loadables"]
                    + terminated("loadable32", "loadable16", what="Terminate Plugin: {}"))
    MODULES_DOWN = terminated("GuiDll", "ScpiDll", "Database", "base3")

    def check(self, mode, gui_pass, modules_down):
        process, trace = self.run_traced(0, "-l", self.configure(*self.FILES), mode, *UNTIL_COMPLETE)
        expected = [(on_gui_thread, line) for on_gui_thread, lines in (
            (False, self.DISCOVERY + self.FIRST_PASS + self.DATABASE_PARTS),
            (True, gui_pass + self.SCPI_AND_GUI_PARTS),
            (False, self.PLUGINS_DOWN + modules_down)) for line in lines]
        self.assertEqual(trace, expected)
        self.assertTrue(process.errors.endswith(IN_ORDER + "0\n"), process.errors)
        return process

    def test_with_gui(self):
        self.check("--offscreen", self.GUI_PASS, ["Stage: terminate modules"] + self.MODULES_DOWN)

    def test_headless(self):
        """The Gui module stays down, and the alert of the absent file waits for nobody."""
        process = self.check("--headless", [], self.MODULES_DOWN)
        self.assertIn(f"mainstartup: Error: Loading Module DLL's: Could not load module {MODULES}/absent.so\n",
                      process.errors)

    def test_modules_go_before_their_libraries(self):
        self.run_to_end(0, "-l", self.configure("gui", "scpi", "base3"), "--offscreen", *UNTIL_MODULES)
        self.assertEqual(self.module_log("initialize", "terminate", "deleted", "closed"), [
            "base3 initialize -1", "scpi initialize -1", "gui initialize -1",
            "gui terminate", "gui deleted", "scpi terminate", "scpi deleted", "base3 terminate", "base3 deleted",
            "gui closed", "scpi closed", "base3 closed"])

    def test_until_a_stage_of_either_thread(self):
        for file, mode in (("base3", "--headless"), ("base3", "--offscreen"), ("gui", "--offscreen")):
            with self.subTest(file=file, mode=mode):
                process = self.run_to_end(0, "-l", self.configure(file), mode, *UNTIL_MODULES)
                self.assertNotIn("start-up is over", process.errors)

    def test_goes_no_further_than_the_call_that_reaches_it(self):
        calls = ["plugin initialize 1", "plugin initialize 6"]
        for stage, number in (("modules", 0), ("loadables", 1), ("plugins", 1), ("plugin loadables", 1),
                              ("complete", 2)):
            with self.subTest(stage):
                (self.folder / "log").unlink(missing_ok=True)
                self.run_to_end(0, "-l", self.configure("plugin"), "--headless", "--until", f"{stage} finished")
                self.assertEqual(self.module_log("initialize"), calls[:number])

    def test_not_reached(self):
        process = self.run_to_end(6, "-l", self.configure("gui"), "--headless", *UNTIL_MODULES)
        self.assertIn("start-up ended without the stage given with --until", process.errors)
        self.assertIn(IN_ORDER + "6", process.errors)

    def test_progress_in_a_log(self):
        """A line for every ten percent at most."""
        configuration = self.configure(*["base3"] * 40)
        for mode in MODES:
            process = self.run_to_end(0, "-l", configuration, mode, *UNTIL_MODULES)
            for title in ("Load Base System + Plugins", "Initialize Base System"):
                tens = [int(line.split()[-2]) // 10 for line in process.errors.splitlines() if title in line]
                self.assertEqual(tens, list(range(11)))

    def test_progress_on_a_terminal(self):
        """A line that is written over and over."""
        configuration = self.configure(*["base3"] * 4)
        for code, arguments, expected in (
                (0, ["-l", configuration, "--headless", *UNTIL_MODULES],
                 ["Load Base System + Plugins", "Initialize Base System"]),
                (1, ["--check", configuration, "--probe"], [f"{number} of 4: base3.so" for number in range(1, 5)])):
            run = subprocess.run(["script", "-qec", shlex.join([MAINSTARTUP, *arguments]), "/dev/null"],
                                 env=self.environment, stdin=subprocess.DEVNULL, capture_output=True, timeout=60)
            self.assertEqual(run.returncode, code, run.stdout)
            lines = re.findall(r"\x1b\[K(\S.*?)(?: +\d+ %)?\r(?!\n)", run.stdout.decode())
            self.assertEqual(list(dict.fromkeys(lines)), expected)


class FailingModules(LauncherCase):
    def check(self, code, said, files, terminations, mode="--offscreen", **environment):
        process = self.run_to_end(code, "-l", self.configure(*files), mode, *UNTIL_MODULES, **environment)
        self.assertIn(f"mainstartup: {said}\n", process.errors)
        self.assertIn(IN_ORDER + str(code), process.errors)
        if terminations is not None:
            self.assertEqual(self.module_log("terminate"), [f"{name} terminate" for name in terminations])
        return process

    def test_throws_in_first_pass(self):
        self.check(5, "module Name_of_25_characters_abc threw: throws_in_initialize",
                   ["base3", "database", "throws_in_initialize", "scpi"], ["database", "base3"])

    def test_throws_out_of_an_event(self):
        for probe, text in (("throw later", "too late"),
                            ("throw later on the GUI thread", "an exception of unknown type")):
            process = self.start("-l", self.configure("gui", "probe"), "--offscreen", VQM_TEST_PROBE=probe)
            self.assertEqual(process.finish(), 5)
            self.assertIn(f"mainstartup: an event handler threw: {text}\n", process.errors)
            self.assertIn(IN_ORDER + "5", process.errors)

    def test_status_of_a_plug_in(self):
        """The call for its part ends there, start-up goes on."""
        for failing, calls in (("database_part_fails", ["database_part_fails initialize 1", "plugin initialize 6"]),
                               ("gui_part_fails", ["plugin initialize 1", "gui_part_fails initialize 6"])):
            with self.subTest(failing):
                (self.folder / "log").unlink(missing_ok=True)
                process = self.run_to_end(5, "-l", self.configure("base3", failing, "plugin"), "--headless",
                                          *UNTIL_COMPLETE)
                self.assertIn(f"initialization of module {failing} ended with status 7\n", process.errors)
                self.assertEqual(self.module_log("initialize", "completeFinished"), [
                    "base3 initialize -1", *calls, "base3 completeFinished", f"{failing} completeFinished",
                    "plugin completeFinished"])

    def test_plug_in_throws_in_the_database_call(self):
        """The Gui stage does not begin."""
        process = self.run_to_end(5, "-l", self.configure("base3", "throws_in_database_part", "gui"), "--offscreen")
        self.assertIn("module throws_in_database_part threw: throws_in_database_part\n", process.errors)
        self.assertEqual(self.module_log("initialize", "terminate"), [
            "base3 initialize -1", "throws_in_database_part initialize 1", "base3 terminate"])


class CommandLine(LauncherCase):
    def test_usage_errors(self):
        configuration = self.configure("base3")
        for said, arguments in (("-l FILE is required", []),
                                ("Missing value after '-l'", ["-l"]),
                                ("--check needs a configuration", ["--check", ""]),
                                ("Unknown option 'bogus'", ["-l", configuration, "--bogus"]),
                                ("unexpected argument 'x'", ["-l", configuration, "x"]),
                                ("--family 0x", ["-l", configuration, "--family", "0x"]),
                                ("\"plugin loadables finished\"", ["-l", configuration, "--until", "modules"]),
                                ("--trace: ", ["-l", configuration, "--headless", "--trace", str(self.folder)])):
            with self.subTest(arguments):
                process = self.run_to_end(2, *arguments)
                self.assertIn(said, process.errors)

    def test_skip(self):
        """By any of a file's names; one that is not there is said."""
        configuration = self.configure("base3", "database", "scpi", "loadable16")
        process, trace = self.run_traced(0, "-l", configuration, "--headless", "--skip", "database.so",
                                         "--skip", "scpi", "--skip", f"{MODULES}/loadable16.so", "--skip", "base",
                                         *UNTIL_MODULES)
        self.assertEqual(self.module_log("terminate"), ["base3 terminate"])
        self.assertIn("mainstartup: --skip base: the configuration lists no such file\n", process.errors)
        self.assertEqual(process.errors.count("--skip"), 1)

    def test_family_from_option_before_property(self):
        self.run_to_end(0, "-l", self.configure("family4"), "--headless", "--family", "0x4", *UNTIL_MODULES)
        self.assertEqual(self.module_log("terminate"), ["family4 terminate"])
        process = self.run_to_end(2, "-l", self.configure("base3", family=""), "--headless")
        self.assertIn("--family BITS or set the property Instrument/Family", process.errors)

    def test_load_list_is_read_as_the_startup_object_reads_it(self):
        """The last option whose second character is l or L counts."""
        arguments = ["-l", "--no such file", "--headless", "-Load", self.configure("base3"), *UNTIL_MODULES]
        self.run_to_end(0, *arguments)

    def test_help_and_version_need_nothing(self):
        process = self.run_to_end(0, "--help", QT_QPA_PLATFORM="none")
        for text in ("-l <file>", "--until <stage>", "  6  start-up was over"):
            self.assertIn(text, process.output)
        process = self.run_to_end(0, "--version", QT_QPA_PLATFORM="none")
        self.assertRegex(process.output, r"^mainstartup 0\.01 beta1, built \w{3} [ \d]\d \d{4} \d\d:\d\d:\d\d\n$")


class Configuration(LauncherCase):
    def test_nothing_to_load(self):
        malformed = self.folder / "malformed.xml"
        malformed.write_text("<Root><File")
        for path in (self.folder / "absent.xml", self.folder, malformed, self.configure()):
            with self.subTest(path):
                process = self.run_to_end(3, "-l", str(path), "--headless", "--family", "2")
                self.assertIn("no modules found, status 10001", process.errors)

    def test_properties(self):
        configuration = self.configure("base3")
        absent = str(self.folder / "absent.ini")
        process = self.run_to_end(3, "-l", configuration, "--headless", "--properties", absent)
        self.assertIn("absent.ini", process.errors)
        pathlib.Path(absent).write_text("[Instrument]\nFamily=all\n")
        process = self.run_to_end(3, "-l", configuration, "--headless", "--properties", absent)
        self.assertIn("Instrument/Family: all", process.errors)

    def test_no_display(self):
        for said, variables in (("no display", {"DISPLAY": ""}),
                                ("the display cannot be reached", {"DISPLAY": ":987"}),
                                ("the display cannot be reached", {"DISPLAY": "", "WAYLAND_DISPLAY": "absent"})):
            process = self.run_to_end(0, "-l", self.configure("base3"), *UNTIL_MODULES, **variables)
            self.assertIn(f"{said}, running offscreen", process.errors)

    def test_program_without_its_library(self):
        alone = self.folder / "mainstartup"
        shutil.copy(MAINSTARTUP, alone)
        process = subprocess.run([alone, "--version"], capture_output=True, text=True, timeout=60, check=False,
                                 env={**self.environment, "LD_LIBRARY_PATH": ""})
        self.assertEqual(process.returncode, 3, process.stderr)
        self.assertRegex(process.stderr, r"^mainstartup: libvqmlauncher\.so: cannot open")


class Memory(LauncherCase):
    def test_short(self):
        """exit() runs on a thread beside the GUI thread, hence often."""
        configuration = self.configure("base3", "gui", memory=999999999)
        for _ in range(10):
            for mode in MODES:
                process, trace = self.run_traced(1, "-l", configuration, mode)
                self.assertIn("Not enough memory to start application!", process.errors)
                self.assertEqual(trace[-1][1].split(r"\n")[:2], ["Could not find", "  ScpiDll"])
        self.assertEqual(self.module_log("initialize", "closed"), [])


class Instances(LauncherCase):
    def test_second_one_is_refused_until_the_first_is_gone(self):
        configuration = self.configure("base3")
        first = self.start("-l", configuration, "--headless")
        first.wait_for("start-up is over")
        other_name = self.folder / "link.xml"
        other_name.symlink_to(configuration)
        for path in (configuration, str(other_name)):
            process = self.run_to_end(4, "-l", path, "--headless", "--family", "2")
            self.assertIn(f"in use by process {first.process.pid} (mainstartup)", process.errors)
        first.process.send_signal(signal.SIGKILL)
        first.finish()
        self.run_to_end(0, "-l", configuration, "--headless", *UNTIL_MODULES)

    def test_lock_of_a_process_whose_number_is_in_use_again(self):
        running = self.start("-l", self.configure("base3"), "--headless")
        running.wait_for("start-up is over")
        configuration = self.configure("base3", name="other")
        name = hashlib.sha256(os.path.realpath(configuration).encode()).hexdigest()[:16]
        (lock,) = self.folder.glob("mainstartup-*.lock")
        (self.folder / f"mainstartup-{name}.lock").write_bytes(lock.read_bytes())
        self.run_to_end(0, "-l", configuration, "--headless", *UNTIL_MODULES)

    def test_lock_that_cannot_be_created(self):
        process = self.run_to_end(0, "-l", self.configure("base3"), "--headless", *UNTIL_MODULES,
                                  XDG_RUNTIME_DIR=str(self.folder / "absent"))
        self.assertIn("a second instance would go unnoticed", process.errors)

    def test_process_list(self):
        configuration = self.configure("base3")
        listing = self.folder / "ps"
        for launchers, code in ((1, 0), (2, 4)):
            line = f'[ "$PS_FORMAT" = pid,tty,args ] && echo "1 tty1 ./mainstartup -l {configuration}"\n'
            listing.write_text("#!/bin/sh\n" + line * launchers)
            listing.chmod(0o755)
            process = self.run_to_end(code, "-l", configuration, "--headless", *UNTIL_MODULES,
                                      PATH=f"{self.folder}:{os.environ['PATH']}")
            self.assertEqual("another mainstartup runs with" in process.errors, code == 4)


class Requests(LauncherCase):
    def test_signal_while_running(self):
        for mode, number in zip(MODES, (signal.SIGINT, signal.SIGTERM)):
            process = self.start("-l", self.configure("base3", "gui"), mode)
            process.wait_for("start-up is over")
            process.process.send_signal(number)
            self.assertEqual(process.finish(), 0)
            self.assertIn(IN_ORDER + "0", process.errors)

    def test_signal_during_discovery(self):
        """No further library is opened, and what was opened is taken down without having been initialized."""
        process, gate = self.start_up_to_gate("wait in discovery", "-l", self.configure("base3", "probe", "gui"),
                                              "--headless")
        with gate:
            process.process.send_signal(signal.SIGTERM)
            process.wait_for("SIGTERM, shutting down")
        self.assertEqual(process.finish(), 0, process.errors)
        self.assertEqual(self.module_log("create", "initialize", "deleted"), ["base3 create 3", "base3 deleted"])

    def test_signal_during_first_pass(self):
        """The pass finishes, the Gui pass does not begin."""
        process, gate = self.start_up_to_gate("wait in initialize", "-l", self.configure("probe", "scpi", "gui"),
                                              "--offscreen")
        with gate:
            process.process.send_signal(signal.SIGTERM)
            process.wait_for("SIGTERM, shutting down")
        self.assertEqual(process.finish(), 0, process.errors)
        self.assertEqual(self.module_log("initialize", "terminate"), ["scpi initialize -1", "scpi terminate"])

    def test_second_interrupt_ends_at_once(self):
        process, gate = self.start_up_to_gate("wait in initialize", "-l", self.configure("probe"), "--headless")
        with gate:
            process.process.send_signal(signal.SIGINT)
            process.wait_for("a second SIGINT ends at once")
            process.process.send_signal(signal.SIGINT)
            self.assertEqual(process.finish(), -signal.SIGINT)

    def test_module_quits_the_application(self):
        for mode in MODES:
            process = self.run_to_end(0, "-l", self.configure("probe", "base3"), mode, VQM_TEST_PROBE="quit")
            self.assertIn(IN_ORDER + "0", process.errors)
        self.assertEqual(self.module_log("terminate"), ["base3 terminate"] * 2)

    def test_gui_thread_answers_while_modules_are_taken_down(self):
        self.run_to_end(0, "-l", self.configure("probe"), "--offscreen", *UNTIL_MODULES,
                        VQM_TEST_PROBE="call the GUI thread")


if __name__ == "__main__":
    unittest.main(verbosity=2)
