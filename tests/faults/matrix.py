"""A fault matrix: rows of a fault, what must be reported and what must still work, each checked on a mainstartup
of its own, several at a time. What came of every row is printed, failed or not."""
import concurrent.futures
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "system"))
from launcher_case import DEADLINE, MAINSTARTUP, MODULES, TRACE_LINE  # noqa: E402

WORKERS = max(2, min(8, os.cpu_count() or 2))
PARTS = {"plugin": 5, "plugin_scpi": 2, "loadable16": 3, "plugload256": 1}  # of plug-ins; others are base modules
UNTIL_COMPLETE = ("--until", "complete finished")
# A root without its way past permissions. The words say why a row was left out.
UNPRIVILEGED = ["setpriv", "--bounding-set", "-dac_override,-dac_read_search",
                "--inh-caps", "-dac_override,-dac_read_search", "--"] if os.geteuid() == 0 else []


class Skipped(Exception):
    """A row that this machine cannot show."""


def check(holds, text):
    if not holds:
        raise AssertionError(text)


class Sandbox:
    """A folder with a configuration of its own, in which mainstartup runs."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="mainstartup-fault-"))
        self.log = self.folder / "log"
        self.trace_file = self.folder / "trace"
        self.breadcrumb = self.folder / "state"
        self.runtime = self.folder / "run"
        self.temporary = self.folder / "tmp"
        self.runtime.mkdir(0o700)
        self.temporary.mkdir()
        self.configuration = self.folder / "instrument.xml"
        self.properties = self.folder / "instrument.ini"
        self.environment = {name: value for name, value in os.environ.items()
                            if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
        self.environment.update(XDG_RUNTIME_DIR=str(self.runtime), TMPDIR=str(self.temporary),
                                VQM_TEST_MODULE_LOG=str(self.log))
        # The end of the process is the test's subject, also where a sanitizer would rather tell of it.
        self.environment["ASAN_OPTIONS"] = os.environ.get("ASAN_OPTIONS", "") + ":handle_segv=0:handle_abort=0"

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.folder, ignore_errors=True)

    def configure(self, files):
        """Modules by their name, other files by their path."""
        entries = "".join(f'<Directory nameLinux="{path.parent}"><File name="{path.name}"/></Directory>'
                          for path in (MODULES / f"{file}.so" if isinstance(file, str) else file for file in files))
        self.configuration.write_text(f'<Root><Instrument><Module name="MainStartup"><ModuleLoadList>{entries}'
                                      '</ModuleLoadList></Module></Instrument></Root>')
        self.properties.write_text("[Instrument]\nFamily=0x2\n[StartupProcess]\nBreadcrumb=state\n")
        return self

    def run(self, *arguments, wrapper=(), **environment):
        """Returns the exit code, or the number of the signal with a minus; `errors` is what it has said."""
        command = [*wrapper, MAINSTARTUP, "-l", str(self.configuration), "--trace", str(self.trace_file), *arguments]
        try:
            done = subprocess.run(command, env={**self.environment, **environment}, stdin=subprocess.DEVNULL,
                                  capture_output=True, timeout=DEADLINE, cwd=self.folder)
        except subprocess.TimeoutExpired as late:
            raise AssertionError(f"hangs:\n{(late.stderr or b'').decode(errors='replace')}") from None
        self.errors = done.stderr.decode(errors="replace")
        return done.returncode

    def says(self, pattern):
        check(re.search(pattern, self.errors, re.MULTILINE), f"not said: {pattern}\n{self.errors}")

    def traces(self, pattern):
        trace = self.trace_file.read_text(errors="replace").rstrip("\0")
        check(re.search(pattern, trace, re.MULTILINE), f"not in the trace: {pattern}\n{trace}")

    def calls(self, *words):
        """Of the modules' log, in pairs: file and operation."""
        lines = [line.split() for line in self.log.read_text().splitlines()] if self.log.exists() else []
        return [(line[0], line[1]) for line in lines if line[1] in words]

    @staticmethod
    def parts(file):
        """None of a base module."""
        return PARTS.get(file.removeprefix("calling_"))

    def came_up(self):
        """Modules whose parts have all been initialized, in the order of the last one."""
        initialized, up = {}, []
        for line in self.log.read_text().splitlines():
            file, word, *argument = line.split()
            if word == "initialize":
                initialized[file] = initialized.get(file, 0) | int(argument[0])
                parts = self.parts(file) or 1
                if initialized[file] & parts == parts and file not in up:
                    up.append(file)
        return up

    def told(self, stage):
        """Which modules were told of it, and which were there then."""
        calls = self.calls("create", "deleted", stage)
        first = next(number for number, (_, word) in enumerate(calls) if word == stage)
        before = calls[:first]
        there = {file for file, word in before if word == "create"} - {file for file, word in before if word == "deleted"}
        return {file for file, word in calls if word == stage}, there

    def check_order(self, but=()):
        """All modules that came up, but these, have been terminated once, and all there were have been deleted before
        their libraries were closed. Plug-ins go before base modules, these in the reverse order."""
        def files(word):
            return [file for file, _ in self.calls(word) if file not in but]
        up = [file for file in self.came_up() if file not in but]
        down = files("terminate")
        check(sorted(down) == sorted(up), f"{up} came up, {down} went down")
        base = [file for file in up if not self.parts(file) and file.removeprefix("calling_") != "gui"]
        check([file for file in down if file in base] == base[::-1], f"{up} came up, {down} went down")
        kinds = [self.parts(file) is None for file in down]
        check(kinds == sorted(kinds), f"{down} went down in this order")
        check(sorted(files("deleted")) == sorted(files("create")), f"left over: {files('create')} {files('deleted')}")
        check(set(files("create")) <= set(files("closed")), "not closed")
        self.says(r"^mainstartup: shut down in order, exit code \d$")
        check(list(self.runtime.iterdir()) == [], "left behind: the lock file")


def run_matrix(title, rows):
    """`rows`: (fault, expected, function) each, the function raises what is wrong. Prints the matrix and returns the
    failures."""
    def result(row):
        try:
            row[2]()
            return "ok"
        except Skipped as reason:
            return f"left out: {reason}"
        except Exception as failure:  # whatever it is, the other rows are of interest, too
            return f"FAILED: {type(failure).__name__} {failure}"
    with concurrent.futures.ThreadPoolExecutor(WORKERS) as workers:
        results = list(workers.map(result, rows))
    print(f"\n{title}")
    for (fault, expected, _), text in zip(rows, results):
        print(f"  {fault:45} | {expected:75} | {text.splitlines()[0]}")
    return [f"{row[0]}: {text}" for row, text in zip(rows, results) if text.startswith("FAILED")]


class MatrixCase(unittest.TestCase):
    maxDiff = None

    def check_rows(self, rows):
        failures = run_matrix(self.id().removeprefix("__main__."), rows)
        self.assertGreater(len(rows), 0)
        self.assertFalse(failures, "\n".join(failures))


def unprivileged():
    """The command in front of another that takes away root's way past permissions."""
    probe = [*UNPRIVILEGED, "true"]
    if subprocess.run(probe, capture_output=True).returncode != 0:
        raise Skipped("privileges cannot be dropped")
    return UNPRIVILEGED


def name_of_signal(number):
    return signal.Signals(-number).name if number < 0 else f"exit code {number}"
