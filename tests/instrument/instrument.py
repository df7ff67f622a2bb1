"""The example instrument as a process, and its remote-control clients, for tests.

Needs the environment variables MAINSTARTUP (the program) and INSTRUMENT (the folder with its configuration).
"""
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import threading

DEADLINE = 30  # seconds


class Instrument:
    """A copy of the instrument's configuration in a folder of its own, started as often as wanted."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self.folder.name)
        for name in ("instrument.xml", "instrument.ini"):
            shutil.copy(pathlib.Path(os.environ["INSTRUMENT"]) / name, self.path)
        self.database = self.path / "instrument.sqlite"
        self.process = None

    def set_property(self, key, value):
        ini = self.path / "instrument.ini"
        text, count = re.subn(rf"^{key}=.*$", f"{key}={value}", ini.read_text(), flags=re.MULTILINE)
        assert count == 1, key
        ini.write_text(text)

    def start(self, display="--headless"):
        """Returns once start-up is over; `log` holds what it has said."""
        self.log, self.port, self.changed = [], None, threading.Condition()
        environment = {**os.environ, "XDG_RUNTIME_DIR": self.folder.name}
        # So that memory() tells of the instrument and not of what a sanitizer holds back.
        environment["ASAN_OPTIONS"] = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1"
        self.process = subprocess.Popen(
            [os.environ["MAINSTARTUP"], "-l", "instrument.xml", display], cwd=self.path, text=True,
            stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, env=environment)
        self.reader = threading.Thread(target=self._read)
        self.reader.start()
        self.wait_for("start-up is over")
        match = re.search(r"SCPI: listening on 127\.0\.0\.1 port (\d+)$", "\n".join(self.log), re.MULTILINE)
        self.port = int(match.group(1)) if match else None
        return self

    def _read(self):
        for line in self.process.stderr:
            with self.changed:
                self.log.append(line.rstrip("\n"))
                self.changed.notify_all()
        with self.changed:
            self.log.append("(end of the log)")
            self.changed.notify_all()

    def has_logged(self, text):
        return any(text in line for line in self.log)

    def wait_for(self, text):
        with self.changed:
            self.changed.wait_for(lambda: self.has_logged(text) or self.has_logged("(end of the log)"), DEADLINE)
            if not self.has_logged(text):
                raise AssertionError(f"no {text!r} in the log:\n" + "\n".join(self.log))

    def stop(self, number=signal.SIGTERM):
        """Ends the process and returns its exit code."""
        self.process.send_signal(number)
        code = self.process.wait(DEADLINE)
        self.reader.join()
        self.process.stderr.close()
        self.process = None
        return code

    def memory(self):
        """Resident memory of the process in bytes."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        return int(re.search(r"VmRSS:\s+(\d+) kB", status).group(1)) * 1024

    def close(self):
        if self.process:
            self.stop(signal.SIGKILL)
        self.folder.cleanup()

    def client(self):
        return Client(self.port)


class Client:
    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port), DEADLINE)
        self.lines = self.socket.makefile("rb")

    def send(self, message):
        self.socket.sendall(message if isinstance(message, bytes) else message.encode() + b"\n")

    def ask(self, message):
        self.send(message)
        return self.line()

    def line(self):
        line = self.lines.readline()
        assert line.endswith(b"\n"), f"connection closed after {line!r}"
        return line[:-1].decode()

    def errors(self):
        """Empties the error queue and returns the numbers."""
        numbers = []
        while (answer := self.ask("SYST:ERR?")) != '0,"No error"':
            numbers.append(int(answer.split(",")[0]))
        return numbers

    def close(self):
        self.lines.close()
        self.socket.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()
