"""vqm-startup-analyze on hand-written traces. The environment names the program (ANALYZE)."""
import json
import os
import pathlib
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

INIT, GUI = "101 init-context", "100 mainstartup"
FOLDER = "/opt/fw/modules/"


class Trace:
    """Lines a millisecond apart."""

    def __init__(self):
        self.lines, self.time = [], 0

    def say(self, *texts, thread=INIT):
        for text in texts:
            self.time += 1000
            self.lines.append(f"{self.time // 1000000:5}.{self.time % 1000000:06} [{thread}] {text}")
        return self

    def opens(self, name, *texts):
        return self.say(f"begin open: {FOLDER}{name}.so", *texts or ["end open"])

    def describes(self, name):
        return self.opens(name).say("begin look-up: VQMGetModuleInfo", "end look-up")

    def creates(self, name, file=None):
        return self.describes(file or name).say(f"Module Name             : {name}",
                                        "begin look-up: VQMCreateModuleInterfaceInstance", "end look-up")

    def discovers(self, name, number, file=None):
        return self.creates(name, file).say(f"Module Id               : {number}")

    def initializes(self, label, end="end initialize", parts=-1, thread=INIT):
        return self.say(f"begin initialize: {label}, parts {parts}", end, thread=thread)

    def stage(self, name, *labels, thread=INIT, end="end stage"):
        self.say(f"Stage: {name}", thread=thread)
        for label in labels:
            self.say(f"begin stage: {name.split('    ')[0]}: {label}", end, thread=thread)
        return self

    def text(self):
        return "\n".join(self.lines) + "\n"


def good():
    trace = Trace().say("begin phase: module discovery", "begin read: /opt/fw/i.xml",
                        *(f"listed: {FOLDER}{name}.so" for name in ("Database", "AmMod")), "end read")
    trace.discovers("Database", 4).discovers("AmMod", 10000).say("end phase", "begin phase: base modules")
    trace.say("begin initialize: 4 Database, parts -1", "begin calibrate: ch1", "end calibrate", "end initialize")
    trace.stage("modules finished", "4 Database").say("end phase")
    trace.say("begin phase: the Gui stage", thread=GUI).initializes("10000 AmMod", parts=6, thread=GUI)
    trace.stage("plugins finished    Parts: Scpi Gui ", "4 Database", thread=GUI)
    trace.stage("complete finished", "4 Database", "10000 AmMod", thread=GUI).say("end phase", thread=GUI)
    trace.say("begin phase: shutdown", "Terminate Plugin: AmMod", "...ok", "Terminate Database...", "...ok",
              f"begin close: {FOLDER}Database.so", "end close: stays mapped", "end phase")
    return trace.say("exit: 0", thread=GUI)


def mixed():
    """Every kind of outcome."""
    names = ("Up", "Absent", "NoEntry", "NoInfo", "NoObject", "Refused", "Wrong", "Status", "Throws", "Stage", "Down",
             "Idle", "Late")
    trace = Trace().say("begin phase: discovery", "begin read: /x/i.xml",
                        "/x/i.xml:3:5: XML error: tag mismatch; what was read before it stays in effect",
                        *(f"listed: {FOLDER}{name}.so" for name in names), f"skipped: {FOLDER}Skipped.so",
                        "end read: failed", "begin read: /x/menu.xml", "end read: failed")
    for number, name in enumerate(("Up", "Status", "Throws", "Stage", "Down", "Idle")):
        trace.discovers(name, number)
    trace.discovers("Up", 77)  # not listed, of a name that there is already
    trace.opens("Absent", f"end open: {FOLDER}Absent.so: No such file", "Could not load module\\n/x/Absent.so")
    no_entry = "Could not access the interface method {}of module /x/x.so!"
    trace.opens("NoEntry").say("begin look-up: VQMGetModuleInfo", "end look-up: undefined symbol",
                               no_entry.format("VQMGetModuleInfo"))
    trace.describes("NoInfo").say(no_entry.format("VQMGetModuleInfo"))
    trace.creates("NoObject").say(no_entry.format("VQMCreateModuleInterfaceInstance"))
    unloaded = " module will be unloaded because "
    trace.describes("Refused").say(f"Refused.so{unloaded}it isn't necessary for this device!",
                                   f"begin close: {FOLDER}Refused.so", "end close")
    trace.describes("Wrong").say(f"Wrong.so{unloaded}of wrong module type")
    trace.say("Could not find\\n  Database\\nmodule in\\n /some/folder", "No load list ", "end phase")
    trace.initializes("0 Up").initializes("77 Up", "end initialize: status 1").initializes("3 Stage")
    trace.initializes("1 Status", "end initialize: status 5").initializes("2 Throws", "end initialize: threw no disk")
    trace.initializes("4 Down").stage("modules finished", "3 Stage", "1 Status", end="end stage: threw bad state")
    trace.say("begin phase: shutdown", "Terminate Idle...", "...ok", "Terminate Down...", "Terminate Throws...",
              "...ok", "end phase", "exit: 5")
    return trace


MIXED = [
    "refused: Refused.so: isn't necessary for this device",
    "refused: Wrong.so: wrong module type", "failed: Status: initialize returned 5",
    "failed: Throws: initialize threw no disk", "failed: Stage: stage modules finished threw bad state",
    "failed: Down: terminate threw", "failed: Up: initialize returned 1",
    "no entry point: NoEntry.so: undefined symbol",
    "no entry point: NoInfo.so: VQMGetModuleInfo threw or gave nothing",
    "no entry point: NoObject.so: VQMCreateModuleInterfaceInstance threw or gave nothing",
    "missing: Absent.so: No such file", "missing: Database (required)", "not initialized: Idle", "skipped: Skipped.so",
    "never reached: Late.so", "not well formed: /x/i.xml:3:5: tag mismatch; what was read before it stays in effect",
    "configuration: /x/menu.xml: could not be read", "configuration: No load list",
    "stage not reached: complete finished", "exit code 5"]


class AnalyzeTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_tool(self, *arguments, code=0):
        done = subprocess.run([os.environ["ANALYZE"], *map(str, arguments)], capture_output=True, timeout=30)
        self.assertEqual(done.returncode, code, done.stdout[-2000:] + done.stderr)
        return (done.stderr if code == 2 else done.stdout).decode()

    def analyze(self, trace, *command, code=0):
        file = self.folder / "trace"
        content = trace if isinstance(trace, (str, bytes)) else trace.text()
        file.write_bytes(content.encode() if isinstance(content, str) else content)
        return self.run_tool(*command, file, code=code)

    def assert_has(self, text, *pieces):
        for piece in pieces:
            self.assertIn(piece, text)

    def test_summary(self):
        text = self.analyze(good())
        self.assertEqual(text, self.analyze(good(), "summary"))
        self.assert_has(text, "2 of 2 modules up in 0.04 s\nstage reached: modules finished at 0.028 s\n",
                        "plugins finished (Scpi Gui) at", "ended in order after 0.052 s, exit code 0")
        text = self.analyze(mixed(), code=1)
        self.assert_has(text, *MIXED)
        self.assertTrue(text.startswith("1 of 15 modules up in "), text)
        self.assertEqual(text.count("i.xml"), 1, text)

    def test_died_in(self):
        def started():
            return Trace().say("begin phase: event loop", thread=GUI).say("begin phase: base modules").discovers(
                "Database", 4)

        for trace, where in (
                (Trace().opens("Crash", "a module's own text"), "open Crash.so"),
                (Trace().describes("Crash"), "describe Crash.so"),
                (Trace().creates("Crash").say("begin open: /x/plug.so", "end open"), "create Crash.so"),
                (started().discovers("Database", 5).say("Terminate Database...", "...ok", "Terminate Database..."),
                 "terminate Database (id 4)"),
                (started().say("begin initialize: 4 Database, parts -1", "begin calibrate: ch1"),
                 "initialize Database (id 4), in its calibrate: ch1"),
                (started().say("begin stage: modules finished: 4 Database"),
                 "stage modules finished: Database (id 4)"),
                (started().say("begin start-gui: 4 Database"), "start-gui Database (id 4)"),
                (started().say("Terminate Database..."), "terminate Database (id 4)")):
            with self.subTest(where):
                begun = trace.time - (1000 if "calibrate" in where or "open C" in where else 0)
                trace.say("begin phase: event loop", "hello", thread=GUI)
                if "create" in where:
                    begun -= 2000
                text = self.analyze(trace.text().encode() + b"    0.9 [1 x] begin init" + bytes(4096), code=1)
                self.assert_has(text, f"died in: {where}, on thread init-context, {trace.time / 1e6:.3f} s after the "
                                f"start, {(trace.time - begun) / 1e6:.3f} s into it",
                                "thread mainstartup was in: event loop")
                self.assert_has(text, " of 2 modules" if "...ok" in trace.text() else " of 1 module ",
                                "not initialized: ")
        text = self.analyze(started().say("Terminate Database...", "...ok"), code=1)
        self.assert_has(text, "died in: base modules, on")
        self.assert_has(self.analyze(good().say("later"), code=1), "nothing under way")

    def test_one_defect_is_enough(self):
        for defect in (["Could not find\\n  Database\\nmodule in\\n /x"], ["No load list "],
                       [f"begin open: {FOLDER}x.so", "end open: no"],
                       ["begin stage: x: 4 Database", "end stage: threw"]):
            trace = good()
            last = trace.lines.pop()
            self.analyze(trace.say(*defect, last.split("] ")[1]), code=1)

    def test_blame_counts_time_once(self):
        trace = Trace().discovers("Fast", 1).discovers("Slow", 2).say("begin initialize: 2 Slow, parts -1")
        trace.initializes("1 Fast").say("end initialize", "exit: 0")
        rows = {line.split()[0]: line.split()[1:] for line in self.analyze(trace, "blame").splitlines()[2:]}
        self.assertEqual(list(rows), ["Slow", "Fast"])
        self.assertEqual(rows["Slow"], ["7.000", "3.000", "1.000", "1.000", "2.000", "-", "-", "-", "-"])
        self.assertEqual(rows["Fast"][4], "1.000")

    def test_critical_path(self):
        lines = self.analyze(good(), "critical-path").splitlines()
        self.assertEqual(lines[0], "complete finished after 0.042000 s")
        table = [line.split(None, 2) for line in lines[2:]]
        chain = [row[2] for row in table]
        self.assertEqual([text for text in chain if ": " in text and not text.startswith("stage")],
                         ["init-context: module discovery", "init-context: base modules", "mainstartup: the Gui stage"])
        self.assertEqual([row for row in table if "waited" in row[2]],
                         [["0.000000", "0.032000", "mainstartup waited for init-context"]])
        self.assertIn(["0.024000", "0.003000", "initialize Database"], table)
        outer = [row for row, line in zip(table, lines[2:]) if line[27] != " " and "waited" not in line]
        self.assertEqual(sum(float(row[1]) for row in outer), 0.042)

    def test_json(self):
        for trace, code in ((good(), 0), (mixed(), 1), (Trace().describes("Crash").text(), 1)):
            events = json.loads(self.analyze(trace, "json", code=code))["traceEvents"]
            names = {event["tid"]: event["args"]["name"] for event in events if event["name"] == "thread_name"}
            self.assertEqual(names.get(101), "init-context")
            stacks = {}
            for event in sorted((e for e in events if e["ph"] in "XB"), key=lambda e: (e["ts"], -e.get("dur", 1e9))):
                stack = stacks.setdefault(event["tid"], [])
                end = event["ts"] + event["dur"] if event["ph"] == "X" else float("inf")
                while stack and stack[-1] <= event["ts"]:
                    stack.pop()
                self.assertTrue(not stack or end <= stack[-1], event)
                stack.append(end)
        self.assertEqual([e["name"] for e in events if e["ph"] == "B"], ["describe Crash.so"])
        events = json.loads(self.analyze(mixed(), "json", code=1))["traceEvents"]
        self.assertIn(("terminate Down", 1000), [(event["name"], event.get("dur")) for event in events])
        events = json.loads(self.analyze(good(), "json"))["traceEvents"]
        self.assertIn({"cat": "initialize", "dur": 3000, "ph": "X", "pid": 1, "tid": 101, "ts": 24000,
                       "name": "initialize Database", "args": {"path": FOLDER + "Database.so"}}, events)
        twins = Trace().discovers("Twin", 1, "a").discovers("Twin", 2, "b").initializes("2 Twin").initializes("1 Twin")
        twins = json.loads(self.analyze(twins, "json", code=1))["traceEvents"]
        self.assertEqual([event["args"]["path"] for event in twins if event.get("cat") == "initialize"],
                         [FOLDER + "b.so", FOLDER + "a.so"])
        self.assertEqual([e["name"] for e in events if e["ph"] == "i"],
                         ["stage modules finished", "stage plugins finished", "stage complete finished"])

    def svg_texts(self, trace, *options, code=0):
        file = self.folder / "chart.svg"
        self.analyze(trace, "svg", "--output", file, *options, code=code)
        root = ElementTree.parse(file).getroot()
        width = float(root.get("width"))
        for box in root.iter("{http://www.w3.org/2000/svg}rect"):
            self.assertGreaterEqual(float(box.get("width")), 2)
            self.assertLessEqual(float(box.get("x")) + float(box.get("width")), width)
        return [text.text for text in root.iter("{http://www.w3.org/2000/svg}text")]

    def test_svg(self):
        texts = self.svg_texts(good())
        for text in ("Database", "AmMod", "init-context", "the Gui stage", "init", "complete finished"):
            self.assertIn(text, texts)
        self.assertNotIn("shutdown", texts)
        self.assertIn("shutdown", self.svg_texts(good(), "--all"))
        texts = self.svg_texts(mixed(), code=1)
        for text in ("Throws", "init: threw no disk", "failed", "refused", "not opened", "no entry point"):
            self.assertIn(text, texts)
        texts = self.svg_texts(Trace().say("begin phase: a\x1b<&>").describes("Cr\xe4sh"), code=1)
        for text in ("a\ufffd<&>: did not end", "did not end", "Cr\xe4sh.so"):
            self.assertIn(text, texts)

    def test_large_and_odd(self):
        trace = Trace().say("end phase", "end", "begin ", "begin", "begin open", "end open", "Terminate ",
                            "Terminate x", "Stage: ", "Module Id : x", "...ok", "Could not find",
                            "begin initialize: x, parts", "begin stage: 1", "begin open: ", "Module Name",
                            "Could not access the interface method ",
                            "exit: x", "exit: 0 not the last", "begin close: ", "listed: ", "Could not load module")
        for number in range(100000):
            trace.say(f"begin step: {number % 7}", "end step" if number % 3 else "end other")
        trace.say("end phase", "exit: 0")
        for command in ("summary", "blame", "critical-path", "svg", "json"):
            self.assertTrue(self.analyze(trace, command, code=1))

    def test_no_trace(self):
        line = good().lines[0]
        for content, problem in ((b"", "no trace"), (bytes(100), "no trace"), (b"    0.1", "no trace"),
                                 (b"\xff\x07 noise\n", ":1: not a line"), (f"{line}\n\n{line}\n", ":2: not a line"),
                                 (f"{line}\n{line[:12]}\n", ":2: not a line"), ("    1.5 [1 x] y\n", ":1: not a line"),
                                 ("    1.000000 [1 x]\n", ":1: not a line"), (b"\0" + line.encode() + b"\n", ":1:")):
            text = self.analyze(content, code=2)
            self.assert_has(text, "vqm-startup-analyze: ", "trace", problem)
            self.assertEqual(text.count("\n"), 1, text)

    def test_command_line(self):
        for arguments, problem in (([], "no trace given"), (["blame"], "no trace given"), (["paint", "x"], "'paint'"),
                                   (["svg", "x", "y"], "too many"), (["--loud"], "loud"),
                                   ([self.folder], str(self.folder)), (["/no/such"], "/no/such: ")):
            self.assert_has(self.run_tool(*arguments, code=2), problem)
        self.analyze(good())
        trace = self.folder / "trace"
        self.assert_has(self.run_tool("svg", trace, "--output", self.folder / "no" / "x", code=2), "no/x: ")
        self.assert_has(self.run_tool("--help"), "critical-path", "Exit codes:")
        with open("/dev/full", "wb") as full:
            self.assertEqual(subprocess.run([os.environ["ANALYZE"], trace], stdout=full, stderr=-3).returncode, 2)


if __name__ == "__main__":
    unittest.main()
