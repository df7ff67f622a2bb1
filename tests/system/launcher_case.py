"""A test case that starts mainstartup as a process, on configurations of its own.

The environment names the program (MAINSTARTUP) and the folder of the module libraries (TEST_MODULES).
"""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import threading
import unittest

MAINSTARTUP = os.environ["MAINSTARTUP"]
MODULES = pathlib.Path(os.environ["TEST_MODULES"])
DEADLINE = 60  # seconds; no process of a test lives longer
TRACE_LINE = re.compile(r"^ *\d+\.\d{6} \[(\d+) [^\]]*\] (.*)$")
LAUNCHER_TEXT = re.compile(r"(begin|end) [a-z-]+(:|$)|(listed|skipped|mainstartup|exit): ")  # and of the platform


class Process:
    """A running mainstartup; `errors` is what it has written to standard error so far."""

    def __init__(self, arguments, environment):
        self.process = subprocess.Popen([MAINSTARTUP, *arguments], env=environment, text=True,
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.errors = ""
        self.watchdog = threading.Timer(DEADLINE, self.process.kill)
        self.watchdog.start()

    def wait_for(self, text):
        while text not in self.errors:
            line = self.process.stderr.readline()
            if not line:
                raise AssertionError(f"ended without saying {text!r}:\n{self.errors}")
            self.errors += line

    def finish(self):
        """Returns the exit code, -9 when it took too long."""
        self.output, rest = self.process.communicate()
        self.errors += rest
        self.watchdog.cancel()
        return self.process.returncode


class LauncherCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="mainstartup-test-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.environment = {name: value for name, value in os.environ.items()
                            if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
        self.environment.update(XDG_RUNTIME_DIR=str(self.folder), VQM_TEST_MODULE_LOG=str(self.folder / "log"))
        self.trace_file = self.folder / "trace"

    def configure(self, *modules, memory=0, name="instrument", family="Family=0x2"):
        """Writes a configuration and its properties; returns its path."""
        files = "".join(f'<File name="{module}.so"/>' for module in modules)
        path = self.folder / f"{name}.xml"
        path.write_text(f'<Root><Instrument><Module name="MainStartup"><ModuleLoadList>'
                        f'<Directory nameLinux="{MODULES}">{files}</Directory></ModuleLoadList>'
                        f'<Startup><RegKey type="requiredMemoryMB" value="{memory}"/></Startup>'
                        f'</Module></Instrument></Root>')
        path.with_suffix(".ini").write_text("[Instrument]\n" + family + "\n[StartupProcess]\nProgressBar=1\n")
        return str(path)

    def start(self, *arguments, **environment):
        process = Process(arguments, {**self.environment, **environment})
        self.addCleanup(process.finish)
        self.addCleanup(process.process.kill)
        return process

    def run_to_end(self, expected_code, *arguments, **environment):
        process = self.start(*arguments, **environment)
        self.assertEqual(process.finish(), expected_code, process.errors)
        return process

    def run_traced(self, expected_code, *arguments, **environment):
        """Returns the process and what the library traced: (runs on the GUI thread, text) of each line."""
        process = self.run_to_end(expected_code, "--trace", str(self.trace_file), *arguments, **environment)
        lines = [TRACE_LINE.match(line) for line in self.trace_file.read_text().splitlines()]
        lines = [line for line in lines if not LAUNCHER_TEXT.match(line[2])]
        return process, [(int(line[1]) == process.process.pid, line[2]) for line in lines]

    def module_log(self, *words):
        """The lines of the modules' log whose second word is one of `words`."""
        lines = (self.folder / "log").read_text().splitlines()
        return [line for line in lines if line.split()[1] in words]

    def start_up_to_gate(self, probe, *arguments):
        """Starts a process whose probe module waits until the file returned is closed."""
        gate = self.folder / "gate"
        os.mkfifo(gate)
        process = self.start(*arguments, VQM_TEST_PROBE=probe, VQM_TEST_GATE=str(gate))
        process.wait_for("at the gate")
        return process, open(gate, "w")
