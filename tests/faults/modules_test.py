#!/usr/bin/env python3
"""Modules that misbehave in every operation: who is named, and that all others come up and go down."""
import re
import signal
import unittest

from matrix import MatrixCase, Sandbox, UNTIL_COMPLETE, check

FILES = ("base3", "scpi", "gui", "plugin", "plugin_scpi", "loadable16", "plugload256")
INFO, CREATE = "VQMGetModuleInfo", "VQMCreateModuleInterfaceInstance"
NAMES = {"gui": "GuiDll", "scpi": "ScpiDll"}

# Where it happens, in the words of the breadcrumb: (file, operation, words, what fails there)
PLACES = (
    ("base3", "opened", "open base3.so", "discovery"),
    ("base3", "info", "describe base3.so", "discovery"),
    ("base3", "create", "create base3.so", "discovery"),
    ("base3", "getInterfaceVersion", "create base3.so", "discovery"),
    ("base3", "getModuleName", "create base3.so", "discovery"),
    ("base3", "getModuleId", "create base3.so", "discovery"),
    ("base3", "initialize", "initialize base3", "start"),
    ("plugin", "initialize 1", "initialize plugin", "start"),
    ("gui", "initialize", "initialize GuiDll", "start"),
    ("base3", "modulesFinished", "stage modules finished: base3", "stage"),
    ("plugin", "initialize 6", "initialize plugin", "start"),
    ("loadable16", "loadablesFinished", "stage loadables finished: loadable16", "stage"),
    ("plugin", "pluginsFinished", "stage plugins finished: plugin", "stage"),
    ("plugload256", "pluginLoadablesFinished", "stage plugin loadables finished: plugload256", "stage"),
    ("gui", "startGui", "start-gui GuiDll", "start"),
    ("gui", "completeFinished", "stage complete finished: GuiDll", "stage"),
    ("gui", "getMainWidget", "start-gui GuiDll", "start"),
    ("plugin", "terminatePluginLoadables", "stage terminate plugin loadables: plugin", "down"),
    ("plugin", "terminatePlugins", "stage terminate plugins: plugin", "down"),
    ("loadable16", "terminateLoadables", "stage terminate loadables: loadable16", "down"),
    ("plugin_scpi", "terminate", "terminate plugin_scpi", "down"),
    ("plugin", "terminate", "terminate plugin", "down"),
    ("base3", "terminateModules", "stage terminate modules: base3", "down"),
    ("gui", "terminate", "terminate GuiDll", "down"),
    ("scpi", "terminate", "terminate ScpiDll", "down"),
    ("base3", "terminate", "terminate base3", "down"),
    ("base3", "deleted", "terminate base3", "deletion"),
    ("base3", "closed", "close base3.so", "closing"),
)


def run(box, how, file, operation):
    box.configure(FILES)
    return box.run("--offscreen", *UNTIL_COMPLETE, VQM_TEST_MISBEHAVES=f"{how} {file} {operation}")


def check_named_by_next_start(box, words):
    """The breadcrumb, and the trace too, which ends in the middle of it."""
    left = box.breadcrumb.read_text()
    check(f" {words} " in left, f"breadcrumb: {left.strip()}")
    trace = box.trace_file.read_text(errors="replace").rstrip("\0")
    begun = len(re.findall(r"\] begin ", trace))
    check(begun > len(re.findall(r"\] end ", trace)), "the trace ends outside of everything")


def dies(how, number, place):
    file, operation, words, _ = place
    with Sandbox() as box:
        code = run(box, how, file, operation)
        check(code == -number, f"ended with {code}\n{box.errors}")
        check_named_by_next_start(box, words)


def all_are_up(box, but=()):
    expected = {file for file in FILES if file not in but}
    up = {file for file, _ in box.calls("completeFinished")}
    check(expected <= up, f"up are {sorted(up)}")


def throws(how, text, place):
    file, operation, _, where = place
    with Sandbox() as box:
        code = run(box, how, file, operation)
        name = NAMES.get(file, file)
        if where == "discovery":
            check(code == 0, f"ended with {code}\n{box.errors}")
            box.says(f"Could not access the interface method {INFO if operation == 'info' else CREATE}"
                     rf"of module /.*/{file}\.so!")
            box.says(rf"^mainstartup: [a-z ]+: {file}\.so: ")
            all_are_up(box, but=[file])
            box.check_order(but=[file])
            return
        check(code == 5, f"ended with {code}\n{box.errors}")
        box.says(rf"^mainstartup: module {name} threw: {text}$")
        if operation != "terminate":
            box.traces(rf"end [a-z-]+: threw {text}$")
        if operation.endswith("Finished") or operation.startswith("terminate") and operation != "terminate":
            told, there = box.told(operation)
            check(told == there, f"told of the stage are {told} of {there}")
        # A plug-in that did not come up as a whole is deleted without having been terminated.
        box.check_order(but=[file] if operation.startswith("initialize") else [])


def fails(place):
    """Returns a status, a null, nothing."""
    file, operation, _, where = place
    with Sandbox() as box:
        code = run(box, "fail", file, operation)
        if where == "discovery":
            check(code == 0, f"ended with {code}\n{box.errors}")
            gone = [file] if operation in ("info", "create") else []
            if gone:
                box.says(rf"Could not access the interface method VQM\w+of module /.*/{file}\.so!")
            all_are_up(box, but=gone)
            box.check_order(but=gone)
            return
        check(code == 5, f"ended with {code}\n{box.errors}")
        box.says(rf"initialization of module {NAMES.get(file, file)} ended with status 5$")
        box.says(rf"^mainstartup: failed: {NAMES.get(file, file)}: initialize returned 5")
        all_are_up(box)
        box.check_order(but=[file])


def hangs(place):
    file, operation, _, _ = place
    with Sandbox() as box:
        code = run(box, "hang", file, operation)
        check(code == 0, f"ended with {code}\n{box.errors}")
        all_are_up(box)
        box.check_order()
        # The longest gap in the trace follows lines that name the module.
        lines = re.findall(r"^ *(\d+\.\d+) \[\d+ [^]]*\] (.*)$", box.trace_file.read_text(), re.MULTILINE)
        gaps = [float(after[0]) - float(before[0]) for before, after in zip(lines, lines[1:])]
        place = gaps.index(max(gaps))
        before = "\n".join(text for _, text in lines[max(place - 3, 0):place + 1])
        check(gaps[place] >= 0.3, "no gap in the trace")
        check(re.search(rf"\b({file}\.so|{NAMES.get(file, file)})\b", before), f"before the gap: {before}")


def deletes_itself(place):
    """What comes of a call to an object that is gone is undefined; that it has been and who it was is told."""
    file, operation, words, where = place
    with Sandbox() as box:
        code = run(box, "delete-itself", file, operation)
        check(code < 0, f"ended with {code}\n{box.errors}")
        name = NAMES.get(file, file)
        left = box.breadcrumb.read_text()
        check(re.search(rf"\b({file}\.so|{name})\b", left), f"breadcrumb: {left.strip()}")


def calls_back(place):
    """Asks the others for their names and wants the shutdown, in both ways there are."""
    file, operation, _, where = place
    with Sandbox() as box:
        caller = f"calling_{file}"
        box.configure([caller if name == file else name for name in FILES])
        until = UNTIL_COMPLETE if where in ("down", "deletion") else ()
        code = box.run("--offscreen", *until, VQM_TEST_MISBEHAVES=f"call-back {caller} {operation}")
        check(code == 0, f"ended with {code}\n{box.errors}")
        # Before the end of discovery there is nobody to be found, nor when all are gone.
        others = r"\d" if where in ("discovery", "deletion") or operation == "terminate" else "[1-9]"
        box.says(rf"^called back: {others}$")
        if where != "discovery":
            box.check_order()
        box.says(r"^mainstartup: shut down in order, exit code 0$")


def rows(how, expected, function, places):
    return [(f"{how}: {place[0]} {place[1]}", expected, lambda place=place: function(place)) for place in places]


def places(*kinds):
    return [place for place in PLACES if place[3] in kinds]


class Signals(MatrixCase):
    def test_every_operation(self):
        numbers = (signal.SIGSEGV, signal.SIGABRT)
        self.check_rows([row for number in numbers for row in rows(
            number.name, "breadcrumb and trace name module and operation",
            lambda place, number=number: dies(int(number), number, place), PLACES)])


class Exceptions(MatrixCase):
    def test_every_operation(self):
        calls = [place for place in PLACES if place[1] not in ("opened", "closed", "deleted")]
        self.check_rows(
            rows("std::exception", "named with its text; all others up or down",
                 lambda place: throws("throw", place[0], place), calls) +
            rows("int", "named as of unknown type; all others up or down",
                 lambda place: throws("throw-int", "an exception of unknown type", place), calls) +
            # The language ends a process whose destructor throws.
            rows("throws", "SIGABRT; breadcrumb and trace name it",
                 lambda place: dies("throw", signal.SIGABRT, place), places("deletion")))


class Failures(MatrixCase):
    def test_every_result(self):
        answering = [place for place in PLACES if place[1] in (
            "info", "create", "getInterfaceVersion", "getModuleName", "initialize", "initialize 1", "initialize 6")]
        self.check_rows(rows("status or null", "named, the others up and down", fails, answering))


class Delays(MatrixCase):
    def test_every_operation(self):
        self.check_rows(rows("300 ms", "start goes on; the trace shows where", hangs, PLACES))


class Callers(MatrixCase):
    def test_every_operation(self):
        # Not while its library is being closed: what it posts then is code that is gone.
        there = [place for place in PLACES if place[3] != "closing" and place[0] not in ("scpi", "plugin_scpi")]
        self.check_rows(rows("calls back", "answered; the shutdown in order", calls_back, there))


class Deletion(MatrixCase):
    def test_every_operation(self):
        objects = [place for place in PLACES if place[1] not in ("opened", "info", "create", "deleted", "closed")]
        self.check_rows(rows("deletes itself", "dies; the breadcrumb names the module", deletes_itself, objects))


if __name__ == "__main__":
    unittest.main(verbosity=2)
