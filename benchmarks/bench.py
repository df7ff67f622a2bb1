#!/usr/bin/env python3
"""What the start-up costs beside what the loader alone would: bench.py BUILD OUTPUT [--quick]

Every figure is a ratio of medians of interleaved runs, each run a process of its own, or a number of instructions.
Prints tables; writes results.json and chart.svg to the folder OUTPUT.
"""
import argparse
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import chart
import measure
import modules

STOP = ["--headless", "--until", "complete finished"]
ENVIRONMENT = {name: value for name, value in os.environ.items() if "DISPLAY" not in name}
LOOPS = {"plain": ["QLibrary", "Boost.DLL"], "qt": ["QLibrary", "QPluginLoader", "Boost.DLL"]}
LOOP_NAMES = {"QLibrary": "qlibrary", "QPluginLoader": "qpluginloader", "Boost.DLL": "boost"}
# What is to be reached, at most: from the figures of a program that does nothing but this work.
TARGETS = {"discovery": 1.05, "whole": 1.10, "instructions": 1.20, "QPluginLoader": 0.60, "cold discovery": 0.42,
           "cold whole": 0.55}


class Bench:
    def __init__(self, build, folder, quick):
        self.programs, self.folder, self.quick = build / "bin", folder, quick
        self.patterns = {kind: build / "lib" / f"{kind}-module.so" for kind in LOOPS}
        self.qt_loaded = ["beside", build / "lib" / "libvqmlauncher.so"]
        self.example = build / "instrument" / "instrument.xml"
        self.trace = folder / "trace.txt"
        self.lists, self.modules = {}, {}
        self.results = {"cpus": os.cpu_count(), "targets": TARGETS}
        (folder / "empty.ini").touch()

    def prepare(self, kind, count):
        if (kind, count) not in self.lists:
            self.modules[kind, count] = modules.write_modules(self.patterns[kind], self.folder / f"{kind}{count}", count)
            self.lists[kind, count] = modules.write_list(self.folder / f"{kind}{count}.xml", self.modules[kind, count])
        return self.modules[kind, count]

    def launcher(self, configuration):
        return [self.programs / "mainstartup", "-l", configuration, "--properties", self.folder / "empty.ini",
                "--family", modules.FAMILY, "--trace", self.trace, *STOP]

    def start(self, kind, count):
        self.prepare(kind, count)
        return self.launcher(self.lists[kind, count])

    def bare(self, kind, count):
        self.prepare(kind, count)
        return [self.programs / "bare-start", "whole", self.lists[kind, count]]

    def bare_beside_qt(self, kind, count):
        program, *arguments = self.bare(kind, count)
        return [program, *self.qt_loaded, *arguments]

    def spans(self, operation):
        """The microseconds of all spans whose first line holds this, in the order in which they began."""
        times, open_spans = [], []
        for line in self.trace.read_text(errors="replace").splitlines():
            stamp, thread, text = re.match(r" *(\d+\.\d+) \[(\d+)[^]]*\] (.*)", line).groups()
            if text.startswith("begin "):
                open_spans.append((thread, len(times), stamp))
                times.append(None if operation in text else -1)
            elif text.startswith("end "):
                position = next(i for i in range(len(open_spans) - 1, -1, -1) if open_spans[i][0] == thread)
                _, index, begin = open_spans.pop(position)
                if times[index] is None:
                    times[index] = (float(stamp) - float(begin)) * 1e6
        return [span for span in times if span is not None and span >= 0]

    def discovery_time(self, kind, count):
        measure.run(self.start(kind, count), env=ENVIRONMENT)
        return self.spans("phase: module discovery")[0] * 1e3

    def loop_time(self, name, kind, count):
        program, *arguments = {"bare loop": ["bare-start", "discover"],
                               "bare loop beside Qt": ["bare-start", *self.qt_loaded, "discover"],
                               }.get(name) or ["other-loops", LOOP_NAMES[name]]
        return int(measure.run([self.programs / program, *arguments, *self.prepare(kind, count)]))

    def discovery(self):
        """Discovery with warm caches, against loops that do nothing else."""
        rows = []
        for kind in LOOPS:
            for count in (20,) if self.quick else (10, 100, 500, 1000, 5000):
                names = ["bare loop", "bare loop beside Qt", *LOOPS[kind]]
                work = {name: (lambda name=name: self.loop_time(name, kind, count)) for name in names}
                work["findModules"] = lambda: self.discovery_time(kind, count)
                times = measure.interleaved(work, self.runs(count))
                row = {"modules": count, "kind": kind, "bare loop us": times["bare loop"] / 1e3 / count}
                for name in names[1:] + ["findModules"]:
                    row[f"{name}/bare"] = times[name] / times["bare loop"]
                row["findModules/beside Qt"] = times["findModules"] / times["bare loop beside Qt"]
                if "QPluginLoader" in times:
                    row["findModules/QPluginLoader"] = times["findModules"] / times["QPluginLoader"]
                rows.append(row)
        return rows

    def runs(self, count):
        return 1 if self.quick else 101 if count <= 100 else 51 if count <= 1000 else 7

    def whole(self):
        """The whole process less a run with one module, against the bare program less the same."""
        rows = []
        for kind in LOOPS:
            for count in (20,) if self.quick else (100, 500, 1000):
                times = measure.interleaved(
                    {(name, n): (lambda command=command(kind, n): measure.wall_time(command, env=ENVIRONMENT))
                     for n in (count, 1)
                     for name, command in (("bare", self.bare), ("beside", self.bare_beside_qt), ("start", self.start))},
                    self.runs(count))
                bare, beside, start = (times[name, count] - times[name, 1] for name in ("bare", "beside", "start"))
                rows.append({"modules": count, "kind": kind, "bare program us": bare / 1e3 / (count - 1),
                             "bare beside Qt/bare": beside / bare, "start/bare": start / bare,
                             "start/beside Qt": start / beside})
        return rows

    def instructions(self):
        """Instructions a module of the whole process, less a run with one module."""
        rows = []
        for count in (20,) if self.quick else (500, 5000):
            (bare, _), (start, loader) = (
                [(many - one) / (count - 1) for many, one in zip(
                    measure.instructions(command("plain", count), self.folder),
                    measure.instructions(command("plain", 1), self.folder))]
                for command in (self.bare, self.start))
            rows.append({"modules": count, "bare program": bare, "start": start, "start/bare": start / bare,
                         "beside the loader": start - loader})
        return rows

    def cold(self):
        """Discovery and whole process after the kernel has forgotten all files."""
        if not measure.can_drop_caches():
            return "left out: only root may empty the caches"
        count = 20 if self.quick else 500
        work = {"bare loop": lambda: self.loop_time("bare loop", "plain", count),
                "findModules": lambda: self.discovery_time("plain", count)}
        for n in (count, 1):
            work["bare", n] = lambda n=n: measure.wall_time(self.bare("plain", n))
            work["start", n] = lambda n=n: measure.wall_time(self.start("plain", n), env=ENVIRONMENT)
        times = measure.interleaved(work, 1 if self.quick else 7, measure.drop_caches)
        return [{"modules": count, "bare loop us": times["bare loop"] / 1e3 / count,
                 "discovery/bare": times["findModules"] / times["bare loop"],
                 "whole/bare": (times["start", count] - times["start", 1])
                 / (times["bare", count] - times["bare", 1])}]

    def configuration(self):
        """Reading a large configuration: milliseconds of each reader."""
        rows = []
        module = self.prepare("plain", 1)[0]
        for count in (100,) if self.quick else (1000, 10000):
            path = modules.write_large_list(self.folder / f"large{count}.xml", module, count)
            measure.run(self.launcher(path), env=ENVIRONMENT)
            load_list, menus, languages = (span / 1e3 for span in self.spans("read: ")[:3])
            rows.append({"files and menu entries": count, "languages": count // 100, "load list ms": load_list,
                         "menus ms": menus, "languages ms": languages,
                         "us an element": (load_list + menus + languages) * 1e3 / (count * 2 + count // 100)})
        return rows

    def instrument(self):
        """The example instrument, without a window: start to "complete finished", SIGTERM to the end."""
        totals, phases = [], []
        for _ in range(1 if self.quick else 11):
            begin = time.monotonic()
            process = subprocess.Popen([self.programs / "mainstartup", "-l", self.example, "--offscreen", "--trace", self.trace],
                                       stderr=subprocess.PIPE, text=True, env=ENVIRONMENT)
            for line in process.stderr:
                if "start-up is over" in line:
                    break
            ready = time.monotonic()
            time.sleep(0.5)
            term = time.monotonic()
            process.send_signal(signal.SIGTERM)
            process.communicate(timeout=60)
            if process.returncode:
                raise measure.Failed(f"the example instrument ended with {process.returncode}")
            totals.append({"ready ms": (ready - begin) * 1e3, "SIGTERM to exit ms": (time.monotonic() - term) * 1e3})
            phases.append(self.phases())
        median = lambda rows, name: sorted(row.get(name, 0) for row in rows)[len(rows) // 2]
        row = {name: median(totals, name) for name in totals[0]}
        return [row], [{"phase": name, "ms": median(phases, name)} for name in phases[0]]

    def phases(self):
        names = dict.fromkeys(re.findall(r"begin phase: (.*)", self.trace.read_text(errors="replace")))
        return {name: self.spans(f"begin phase: {name}")[0] / 1e3 for name in names}

    def memory(self):
        """Bytes of heap that each module costs beyond what the loader takes for it."""
        few, many = (10, 20) if self.quick else (100, 500)
        bare, start = ((measure.heap(command("plain", many), self.folder)
                        - measure.heap(command("plain", few), self.folder)) / (many - few)
                       for command in (self.bare, self.start))
        return [{"bare program bytes": bare, "start bytes": start, "ours": start - bare}]


def print_table(title, rows):
    print(f"\n{title}")
    if isinstance(rows, str):
        print(rows)
        return
    for names in dict.fromkeys(tuple(row) for row in rows):
        texts = [[str(value) if not isinstance(value, float) else f"{value:.2f}" if value < 100 else f"{value:,.0f}"
                  for value in row.values()] for row in rows if tuple(row) == names]
        widths = [max(map(len, column)) for column in zip(names, *texts)]
        for line in [names, *texts]:
            print("  ".join(f"{text:>{width}}" for text, width in zip(line, widths)), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("output", type=pathlib.Path)
    parser.add_argument("--quick", action="store_true", help="few modules, one run: whether all works, no figures")
    parser.add_argument("--only", help="the measurements of these names, separated by commas")
    arguments = parser.parse_args()
    arguments.output.mkdir(parents=True, exist_ok=True)
    build = arguments.build.resolve()
    with tempfile.TemporaryDirectory(prefix="modules-", dir=arguments.output) as name:
        bench = Bench(build, pathlib.Path(name).resolve(), arguments.quick)
        for section in ("discovery", "whole", "instructions", "cold", "configuration", "instrument", "memory"):
            if arguments.only and section not in arguments.only.split(","):
                continue
            if section in ("instructions", "memory") and shutil.which("valgrind") is None:
                bench.results[section] = "left out: valgrind is missing"
                continue
            work = getattr(bench, section)
            rows = work()
            if section == "instrument":
                rows, bench.results["phases"] = rows
            bench.results[section] = rows
            print_table(work.__doc__, rows)
            if section == "instrument":
                print_table("Its phases.", bench.results["phases"])
    (arguments.output / "results.json").write_text(json.dumps(bench.results, indent=1) + "\n")
    chart.write(bench.results, arguments.output / "chart.svg")
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (measure.Failed, subprocess.TimeoutExpired) as failure:
        sys.exit(f"bench: {failure}")
