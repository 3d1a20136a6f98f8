#!/usr/bin/env python3
"""Files that several programs use at once, and inputs that are no files: concurrency.py PROGRAM"""

import fcntl
import os
import socket
import subprocess
import sys
import tempfile

TIME_LIMIT = 300  # seconds; only a program that hangs meets it
OLD = "<< /EmbedAllFonts false >> setalembicorparams\n"
FAILURES = []


def expect(what, expected, actual):
    if expected != actual:
        FAILURES.append(what)
        print(f"FAILED: {what}: expected {expected!r}, found {actual!r}")


def read(path):
    with open(path, encoding="ascii") as file:
        return file.read()


def write(path, text):
    with open(path, "w", encoding="ascii") as file:
        file.write(text)


def call(program, *arguments, **options):
    """The exit status and the errors of a run."""
    result = subprocess.run(
        [program, *arguments], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, encoding="utf-8",
        timeout=TIME_LIMIT, check=False, **options)
    return result.returncode, result.stderr


def refused(message):
    return 5, f"joboptions: error: {message}\n"


def five_processes_lose_no_change(program):
    """Each of five processes changes a key of its own, again and again."""
    rounds, keys = 20, [f"K{number}" for number in range(5)]
    write("a.joboptions", OLD)
    loop = (f'for i in $(seq {rounds}); do "{program}" set -q --allow-unknown --wait 120 a.joboptions $0=$i '
            "|| exit 1; done")
    processes = [subprocess.Popen(["bash", "-c", loop, key]) for key in keys]
    expect("all changes go through", [0] * 5, [p.wait(timeout=TIME_LIMIT) for p in processes])
    text = read("a.joboptions")
    expect("no change is lost", [], [key for key in keys if f"/{key} {rounds} " not in text])
    expect("nothing stays behind", ["a.joboptions"], os.listdir("."))


def change_meanwhile(program, arguments, changed):
    """Runs set, which stops in the middle, until the pipe for its long report is read."""
    keys = [f"k{number:0249}" for number in range(40)]
    end, start = os.pipe()
    fcntl.fcntl(start, fcntl.F_SETPIPE_SZ, 4096)
    with open(end, "rb", buffering=0) as report:
        process = subprocess.Popen(
            [program, "set", "--allow-unknown", "--json", *arguments, *(key + "=1" for key in keys)],
            stdout=start, stderr=subprocess.PIPE, encoding="utf-8")
        os.close(start)
        report.read(1)
        write(changed, "other")
        while report.read(65536):
            pass
    errors = process.communicate(timeout=TIME_LIMIT)[1]
    return process.returncode, errors


def changes_meanwhile_are_conflicts(program):
    """What others write while the program works is not overwritten, except on demand."""
    for arguments, changed, outcome in (
            (["a.joboptions"], "a.joboptions", refused("a.joboptions: changed since it was read")),
            (["a.joboptions", "-o", "./a.joboptions"], "a.joboptions",
             refused("./a.joboptions: changed since it was read")),
            (["a.joboptions", "-o", "new"], "new", refused("new: changed since it was read")),
            (["a.joboptions", "--overwrite-changed"], "a.joboptions", (0, "")),
            (["a.joboptions", "--overwrite-changed", "-o", "out"], "out", (0, ""))):
        write("a.joboptions", OLD)
        expect(f"what is written meanwhile: {arguments}", outcome,
               change_meanwhile(program, arguments, changed))
        expect(f"who has written last: {arguments}", outcome[0] == 5, read(changed) == "other")


def a_lock_is_waited_for_in_time(program):
    """Whoever holds the folder's lock too long is reported; what is no file needs no lock."""
    write("a.joboptions", OLD)
    folder = os.open(".", os.O_RDONLY)
    fcntl.flock(folder, fcntl.LOCK_EX)
    change = ["set", "--wait", "0.5", "a.joboptions", "EmbedAllFonts=true"]
    busy = "{}: another program is changing files in its folder; try again"
    for arguments, outcome in (
            (change, refused(busy.format("a.joboptions"))),
            (["export", "--wait", "0", "a.joboptions", "-o", "b"], refused(busy.format("b"))),
            ([*change, "-n"], (0, "")),
            ([*change, "-o", "-"], (0, "")),
            ([*change, "-o", "/dev/null"], (0, "")),
            (["show", "a.joboptions"], (0, ""))):
        expect(f"in a locked folder: {arguments}", outcome, call(program, *arguments))
    os.close(folder)
    expect("in an unlocked folder", (0, ""), call(program, *change))


def what_is_no_file_is_read_only_by_descriptor(program):
    """A pipe by name would be waited for; one by descriptor is what the caller asked for."""
    os.mkfifo("pipe")
    for arguments in (["show", "pipe"], ["set", "pipe", "A=1"]):
        expect(f"a pipe: {arguments}", (3, "joboptions: error: pipe: not a regular file\n"),
               call(program, *arguments))
    command = f'"{program}" set <(echo "{OLD.strip()}") EmbedAllFonts=true -o -'
    expect("a substituted process", (0, ""), call("bash", "-c", command))
    ours, theirs = socket.socketpair()
    with theirs:
        with ours:
            ours.sendall(OLD.encode())
        expect("a socket", (0, ""), call(program, "check", "-", stdin=theirs))


def main():
    program = os.path.abspath(sys.argv[1])
    for test in (five_processes_lose_no_change, changes_meanwhile_are_conflicts,
                 a_lock_is_waited_for_in_time, what_is_no_file_is_read_only_by_descriptor):
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            test(program)
            os.chdir("/")
    print(f"{len(FAILURES)} failed")
    return 1 if FAILURES else 0


if __name__ == "__main__":
    sys.exit(main())
