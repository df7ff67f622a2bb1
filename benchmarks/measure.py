"""Measurements of whole processes, each a number: nanoseconds, instructions or bytes."""
import os
import pathlib
import re
import statistics
import subprocess
import time

DROP_CACHES = pathlib.Path("/proc/sys/vm/drop_caches")


class Failed(Exception):
    pass


def run(command, **options):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, timeout=3600, **options)
    if done.returncode:
        raise Failed(f"{' '.join(map(str, command[:4]))} ...: exit code {done.returncode}\n{done.stderr[-2000:]}")
    return done.stdout


def wall_time(command, **options):
    """From before fork to after wait."""
    begin = time.monotonic_ns()
    run(command, **options)
    return time.monotonic_ns() - begin


def instructions(command, folder):
    """What the program's own process executes, as callgrind counts it: (all, those of them within the loader)."""
    name = folder / "callgrind.out"
    run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={name}", *command])
    table = run(["callgrind_annotate", "--inclusive=yes", "--threshold=100", name])
    loader = re.findall(r"^ *([\d,]+) .*:dl(?:open|close|sym)(?:@@[\w.]+)? ", table, re.M)
    if not loader:
        raise Failed("callgrind does not know the loader's functions")
    total = re.search(r"^(?:totals|summary): (\d+)", name.read_text(), re.M)[1]
    return int(total), sum(int(number.replace(",", "")) for number in loader)


def heap(command, folder):
    """The largest size of the heap, in bytes."""
    name = folder / "massif.out"
    run(["valgrind", "--tool=massif", "--peak-inaccuracy=0.1", f"--massif-out-file={name}", *command])
    return max(int(size) for size in re.findall(r"^mem_heap_B=(\d+)", name.read_text(), re.M))


def can_drop_caches():
    return os.access(DROP_CACHES, os.W_OK)


def drop_caches():
    os.sync()
    DROP_CACHES.write_text("3\n")


def interleaved(measurements, runs, before=lambda: None):
    """Runs all in turn, `runs` times after one for nothing; the median of each."""
    results = {name: [] for name in measurements}
    for turn in range(runs + 1):
        for name, measure in measurements.items():
            before()
            value = measure()
            if turn > 0:
                results[name].append(value)
    return {name: statistics.median(values) for name, values in results.items()}
