#!/usr/bin/env python3
"""Reads 1,000 sets into values of Python, and prints how that compares with the C++ API and with plistlib:
python.py PROGRAM, which is read_sets. PYTHONPATH has the module. Medians of nine runs in turn, processor time."""
import gc
import os
import pathlib
import plistlib
import statistics
import subprocess
import sys
import tempfile
import time

import pdfsettings

SETS = 1000
RUNS = int(os.environ.get("BENCH_REPETITIONS", "9"))
EXAMPLE = pathlib.Path(__file__).parent.parent / "data/press.joboptions"


def make(folder):
    """The sets, each with another resolution, and property lists with the same values."""
    settings = pdfsettings.open(EXAMPLE)
    for number in range(SETS):
        with settings.edit() as edit:
            edit["ColorImageResolution"] = 100 + number
        pathlib.Path(folder, f"{number}.joboptions").write_bytes(bytes(settings))
        for form, suffix in ((plistlib.FMT_XML, "plist"), (plistlib.FMT_BINARY, "bplist")):
            pathlib.Path(folder, f"{number}.{suffix}").write_bytes(plistlib.dumps(settings.as_dict(), fmt=form))


def timed(read, files):
    """The processor time of reading all files; the values live until the next is read."""
    gc.collect()
    begin = time.process_time()
    for file in files:
        read(file)
    return time.process_time() - begin


def read_plist(file):
    with open(file, "rb") as stream:
        return plistlib.load(stream)


def main(program):
    with tempfile.TemporaryDirectory() as folder:
        make(folder)
        files = {suffix: [f"{folder}/{number}.{suffix}" for number in range(SETS)] for suffix in ("joboptions", "plist", "bplist")}
        assert pdfsettings.open(files["joboptions"][7]).as_dict() == read_plist(files["plist"][7])
        readers = {
            "C++ API": lambda: float(subprocess.run([program, folder], capture_output=True, check=True, text=True).stdout),
            "pdfsettings": lambda: timed(lambda file: pdfsettings.open(file).as_dict(), files["joboptions"]),
            "plistlib, XML": lambda: timed(read_plist, files["plist"]),
            "plistlib, binary": lambda: timed(read_plist, files["bplist"]),
        }
        times = {name: [] for name in readers}
        for _ in range(RUNS):
            for name, read in readers.items():
                times[name].append(read())
    medians = {name: statistics.median(found) for name, found in times.items()}
    print("| work | time | against | time | ratio | at most |\n|---|---|---|---|---|---|")
    for name, goal in (("C++ API", 3.0), ("plistlib, XML", 1.0), ("plistlib, binary", 1.0)):
        ratio = medians["pdfsettings"] / medians[name]
        print(f"| read 1,000 sets in Python | {medians['pdfsettings'] * 1000:.1f} ms | {name} | {medians[name] * 1000:.1f} ms "
              f"| {ratio:.2f} | {goal}{'' if ratio <= goal else ' (missed)'} |")


if __name__ == "__main__":
    main(sys.argv[1])
