#!/usr/bin/env python3
"""Several programs change the same files at once: concurrency.py PROGRAM"""

import fcntl
import os
import subprocess
import sys
import tempfile

TIME_LIMIT = 300  # seconds; only a program that hangs meets it
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


def five_processes_lose_no_change(program):
    """Each of five processes changes a key of its own, again and again."""
    rounds, keys = 20, [f"K{number}" for number in range(5)]
    write("a.joboptions", "<< /A 1 >> setalembicorparams\n")
    loop = (f'for i in $(seq {rounds}); do "{program}" set -q --allow-unknown --wait 120 a.joboptions $0=$i '
            "|| exit 1; done")
    processes = [subprocess.Popen(["bash", "-c", loop, key]) for key in keys]
    expect("all changes go through", [0] * 5, [p.wait(timeout=TIME_LIMIT) for p in processes])
    values = subprocess.run(
        [program, "get", "a.joboptions", *keys], capture_output=True, encoding="ascii", check=False)
    expect("no change is lost", f"{rounds}\n" * 5, values.stdout)
    expect("nothing stays behind", ["a.joboptions"], os.listdir("."))


def change_meanwhile(program, arguments, change):
    """Runs set, which stops in the middle, until the pipe for its long report is read; what it says."""
    keys = [f"k{number:0249}" for number in range(40)]
    end, start = os.pipe()
    fcntl.fcntl(start, fcntl.F_SETPIPE_SZ, 4096)
    with open(end, "rb", buffering=0) as report:
        process = subprocess.Popen(
            [program, "set", "--allow-unknown", "--json", *arguments, *(key + "=1" for key in keys)],
            stdout=start, stderr=subprocess.PIPE, encoding="utf-8")
        os.close(start)
        report.read(1)
        change()
        while report.read(65536):
            pass
    errors = process.communicate(timeout=TIME_LIMIT)[1]
    return process.returncode, errors.removesuffix("\n")


def changes_meanwhile_are_conflicts(program):
    """What others change while the program works is not overwritten."""
    def replace(path, text):
        write("new", text)
        os.rename("new", path)

    refusal = "joboptions: error: {}: changed since it was read"
    write("a.joboptions", "<< /A 1 >> setalembicorparams\n")
    old = os.stat("a.joboptions")

    def rewrite():
        """Other bytes, with the size and the time of the old ones."""
        write("a.joboptions", "<< /A 2 >> setalembicorparams\n")
        os.utime("a.joboptions", ns=(old.st_atime_ns, old.st_mtime_ns))

    for arguments in (["a.joboptions"], ["a.joboptions", "-o", "./a.joboptions"]):
        write("a.joboptions", "<< /A 1 >> setalembicorparams\n")
        expect("a change in place", (5, refusal.format(arguments[-1])),
               change_meanwhile(program, arguments, rewrite))
        expect("the other's bytes", "<< /A 2 >> setalembicorparams\n", read("a.joboptions"))
    for text in (None, "old"):
        if text:
            write("out", text)
        arguments = ["a.joboptions", "-o", "out"]
        expect("a change of the output", (5, refusal.format("out")),
               change_meanwhile(program, arguments, lambda: replace("out", "other")))
        expect("the other's output", "other", read("out"))
    status, _ = change_meanwhile(
        program, ["a.joboptions", "--overwrite-changed", "-o", "out"], lambda: replace("out", "x"))
    expect("overwriting on demand", (0, True), (status, "k0" in read("out")))
    expect("a touched file is no other", 0,
           change_meanwhile(program, ["a.joboptions"], lambda: os.utime("a.joboptions", (0, 0)))[0])


def a_lock_is_waited_for_in_time(program):
    """Whoever holds the folder's lock too long is reported; what is no file needs no lock."""
    write("a.joboptions", "<< /A 1 >> setalembicorparams\n")
    folder = os.open(".", os.O_RDONLY)
    fcntl.flock(folder, fcntl.LOCK_EX)

    def run(*arguments):
        result = subprocess.run(
            [program, *arguments], capture_output=True, encoding="utf-8", timeout=TIME_LIMIT,
            check=False)
        return result.returncode, result.stderr

    busy = ("joboptions: error: {}: another program is changing files in its folder; try again\n")
    expect("a locked folder", (5, busy.format("a.joboptions")),
           run("set", "--wait", "0.05", "a.joboptions", "EmbedAllFonts=true"))
    expect("a locked output", (5, busy.format("b")),
           run("export", "--wait", "0", "a.joboptions", "-o", "b"))
    expect("standard output", 0, run("set", "a.joboptions", "EmbedAllFonts=true", "-o", "-")[0])
    expect("a device", 0, run("set", "a.joboptions", "EmbedAllFonts=true", "-o", "/dev/null")[0])
    expect("reading", 0, run("show", "a.joboptions")[0])
    os.close(folder)
    expect("an unlocked folder", (0, ""),
           run("set", "--wait", "0", "a.joboptions", "EmbedAllFonts=true"))


def an_output_is_never_the_input(program):
    """Another name of the same file is a file of its own, and its content is compared too."""
    write("a.joboptions", "<< /A 1 >> setalembicorparams\n")
    os.link("a.joboptions", "b")
    words = [program, "set", "-q", "--allow-unknown", "a.joboptions", "A=2", "-o"]
    expect("a hard link", 0, subprocess.run([*words, "b"], check=False).returncode)
    expect("the input", "<< /A 1 >> setalembicorparams\n", read("a.joboptions"))
    expect("the output", "<< /A 2 >> setalembicorparams\n", read("b"))
    expect("another spelling", 0, subprocess.run([*words, "./a.joboptions"], check=False).returncode)
    expect("the changed input", "<< /A 2 >> setalembicorparams\n", read("a.joboptions"))
    with open("log", "w", encoding="ascii") as log:
        log.write("first\n")
        log.flush()
        subprocess.run([program, "get", "b", "A", "-o", "/dev/stdout"], stdout=log, check=False)
    expect("where standard output stands", "first\n2\n", read("log"))


def what_is_no_file_is_refused_at_once(program):
    """A pipe by name would be waited for; one by descriptor is what the caller asked for."""
    os.mkfifo("pipe")
    for arguments in (["show"], ["check"], ["get", "-n"], ["fmt", "--check"], ["unset"], ["set"]):
        words = [program, *arguments, "pipe", *(["A"] if arguments[0] in ("get", "unset") else []),
                 *(["A=1"] if arguments[0] == "set" else [])]
        result = subprocess.run(words, capture_output=True, timeout=TIME_LIMIT, check=False)
        expect(f"{arguments[0]} of a pipe", (3, b"joboptions: error: pipe: not a regular file\n"),
               (result.returncode, result.stderr))
    result = subprocess.run(
        ["bash", "-c", f'"{program}" check <(echo "<< /EmbedAllFonts true >> setalembicorparams")'],
        capture_output=True, timeout=TIME_LIMIT, check=False)
    expect("a substituted process", (0, b""), (result.returncode, result.stderr))


def main():
    program = os.path.abspath(sys.argv[1])
    for test in (five_processes_lose_no_change, changes_meanwhile_are_conflicts,
                 a_lock_is_waited_for_in_time, an_output_is_never_the_input,
                 what_is_no_file_is_refused_at_once):
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            test(program)
            os.chdir("/")
    print(f"{len(FAILURES)} failed")
    return 1 if FAILURES else 0


if __name__ == "__main__":
    sys.exit(main())
