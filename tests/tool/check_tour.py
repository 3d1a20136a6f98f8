#!/usr/bin/env python3
"""Runs the tour of a README and compares what it shows: check_tour.py PROGRAM README SOURCE_FOLDER

In the fenced blocks, a line that begins with "$ " is a command of the shell, and the lines up to the
next one are its output, standard error included. "joboptions" is PROGRAM; the commands run one after
the other in a folder of their own that has a copy of the source's data.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile

TIME_LIMIT = 120  # seconds; only a program that hangs meets it


def steps(text):
    """The commands of the tour with the output that they are shown with."""
    for block in re.findall(r"^```\n(.*?)^```$", text, flags=re.MULTILINE | re.DOTALL):
        for step in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
            command, _, output = step.partition("\n")
            yield command, output


def main():
    program, readme, source = (os.path.abspath(path) for path in sys.argv[1:])
    with open(readme, encoding="utf-8") as file:
        tour = list(steps(file.read()))
    failures = 0
    # For root, the program makes no folders where others could exchange them.
    with tempfile.TemporaryDirectory(dir="/run" if os.geteuid() == 0 else None) as folder:
        shutil.copytree(os.path.join(source, "data"), os.path.join(folder, "data"))
        home = os.path.join(folder, "home")
        environment = {
            **os.environ, "LC_ALL": "C", "XDG_DATA_HOME": home, "XDG_CONFIG_HOME": home}
        for command, expected in tour:
            shell = f'joboptions() {{ "{program}" "$@"; }}; {command}'
            result = subprocess.run(
                ["bash", "-c", shell], cwd=folder, env=environment, timeout=TIME_LIMIT, check=False,
                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8")
            if result.stdout != expected:
                failures += 1
                print(f"FAILED: {command}", "expected:", expected, "but:", result.stdout, sep="\n")
    print(f"{len(tour)} commands, {failures} failed")
    return 1 if failures or not tour else 0


if __name__ == "__main__":
    sys.exit(main())
