#!/usr/bin/env python3
"""Changes a settings file between its reading and its saving: changed_file.py PROGRAM

The program warns of each unknown key once it has read the file. Its warnings go to a pipe that is too
small for all of them, so after the first one has come it cannot have saved before the rest is read.
"""

import fcntl
import os
import subprocess
import sys
import tempfile

TIME_LIMIT = 120  # seconds; only a program that hangs meets it
PIPE_SIZE = 4096
KEYS = [f"k{number:0249}" for number in range(40)]


def run(program, *options):
    """The exit status, the errors, and the file afterwards; it is changed while the program runs."""
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "a.joboptions")
        with open(path, "w", encoding="ascii") as file:
            file.write("<< /A 1 >> setalembicorparams")
        end, start = os.pipe()
        fcntl.fcntl(start, fcntl.F_SETPIPE_SZ, PIPE_SIZE)
        with open(end, "rb", buffering=0) as errors:
            process = subprocess.Popen(
                [program, "set", *options, path, *(key + "=1" for key in KEYS)], stderr=start,
                cwd=folder)
            os.close(start)
            first = errors.read(1)
            os.utime(path, (0, 0))
            text = first + b"".join(iter(lambda: errors.read(65536), b""))
        status = process.wait(timeout=TIME_LIMIT)
        with open(path, encoding="ascii") as file:
            return status, text.decode().splitlines()[-1], KEYS[0] in file.read()


def main():
    program = os.path.abspath(sys.argv[1])
    assert len(KEYS) * len(KEYS[0]) > 2 * PIPE_SIZE
    refused = True
    for options in ([], ["-o", "./a.joboptions"]):
        status, error, is_saved = run(program, *options)
        refused = refused and status == 5 and not is_saved and error.endswith(
            "a.joboptions: changed on disk since it was read; use --force")
    print("refused" if refused else f"FAILED: {status}, {error}, saved: {is_saved}")
    status, error, is_saved = run(program, "--force")
    forced = status == 0 and is_saved
    print("forced" if forced else f"FAILED: {status}, {error}, saved: {is_saved}")
    return 0 if refused and forced else 1


if __name__ == "__main__":
    sys.exit(main())
