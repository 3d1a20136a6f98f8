#!/usr/bin/env python3
"""Prints the medians of runs of the benchmarks, and the ratios of those that belong together."""
import collections
import json
import os
import platform
import re
import statistics
import subprocess
import sys

# What is measured, against what, and the most that the ratio shall be; None where that is open.
# Two times for each item are compared where the last column says so.
RATIOS = [
    ("read, 10 KB", "ReadSettings/few/1", "ReadRapidJson/few/1", 1.7, False),
    ("read, 10 KB", "ReadSettings/few/1", "ReadJsonC/few/1", 0.55, False),
    ("read, 10 KB", "ReadSettings/few/1", "ReadPlist/few/1", 0.21, False),
    ("read, 100 KB", "ReadSettings/few/10", "ReadRapidJson/few/10", None, False),
    ("read, 1 MB", "ReadSettings/few/100", "ReadRapidJson/few/100", None, False),
    ("read, 10 MB", "ReadSettings/few/1000", "ReadRapidJson/few/1000", None, False),
    ("read a key, few keys", "ReadSettings/few/100", "ReadSettings/few/1", 1.4, True),
    ("read a key, all distinct", "ReadSettings/distinct/100", "ReadSettings/distinct/1", 2.2, True),
    ("write, 10 KB", "WriteSettings/1", "WriteRapidJson/1", 2.6, False),
    ("write, 10 KB", "WriteSettings/1", "WriteJsonC/1", None, False),
    ("write, 10 KB", "WriteSettings/1", "WritePlist/1", 0.9, False),
    ("write, 1 MB", "WriteSettings/100", "WriteRapidJson/100", None, False),
    ("validate, 10 KB", "Validate/1", "ReadSettings/few/1", None, False),
    ("change and validate, 10 KB", "SetSettings/1", "ReadSettings/few/1", None, False),
    ("list 1,000 files", "ListSettings/1000", "ReadFolder/1000", 2.0, False),
    ("list 1,000 files", "ListSettings/1000", "EnumerateFolder/1000", None, False),
    ("list as C++ values, 1,000 files", "ListSettingsAsValues/1000", "ReadFolder/1000", None, False),
    ("list a file, 10,000 files", "ListSettings/10000", "ListSettings/1000", 1.5, True),
    ("open a file, 10 KB", "OpenSettings/1", "ReadFileThenSettings/1", 1.1, False),
    ("save a file, 10 KB", "SaveSettings/1", "ReplaceFilePlainly/1", None, False),
    ("load, start, stop, unload", "StartComponent", "LoadLibrary", 1.1, False),
]

PEERS = ["RapidJSON", "json-c", "libplist-2.0", "gio-2.0"]


def measurements(paths):
    """The names of all single measurements, and what was measured."""
    for path in paths:
        with open(path, encoding="utf-8") as file:
            results = json.load(file)
        for run in results["benchmarks"]:
            if run["run_type"] == "iteration" and not run.get("error_occurred"):
                yield run["run_name"], run


def medians(paths):
    """The median of each benchmark's times, in nanoseconds, and of its times for each item."""
    times = collections.defaultdict(list)
    items = collections.defaultdict(list)
    for name, run in measurements(paths):
        times[name].append(run["cpu_time"])
        if "items_per_second" in run:
            items[name].append(1e9 / run["items_per_second"])
    return tuple({name: statistics.median(found) for name, found in all_times.items()}
                 for all_times in (times, items))


def version(command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout.split("\n")[0]


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        return re.search(r"model name\s*:\s*(.*)", info.read()).group(1)


def readable(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.2f} {unit}"
    return f"{nanoseconds:.0f} ns"


def main(paths):
    times, items = medians(paths)
    print(f"{processor()}, {os.cpu_count()} processors; Linux {platform.release()}; "
          f"{version(['g++', '--version'])}")
    print("; ".join(f"{peer} {version(['pkg-config', '--modversion', peer])}" for peer in PEERS))
    print("\n| work | time | against | time | ratio | at most |\n|---|---|---|---|---|---|")
    for work, ours, peer, goal, is_of_items in RATIOS:
        found = items if is_of_items else times
        if ours in found and peer in found:
            ratio = found[ours] / found[peer]
            verdict = "" if goal is None else f"{goal}" + ("" if ratio <= goal else " (missed)")
            print(f"| {work} | {readable(found[ours])} | {peer} | {readable(found[peer])} "
                  f"| {ratio:.2f} | {verdict} |")


if __name__ == "__main__":
    main(sys.argv[1:])
