#!/usr/bin/env python3
"""Runs a case file against a program: run_cases.py PROGRAM CASE_FILE [ADMIN_FOLDER]

A case file is UTF-8 text. A line that begins with '@' is a directive, the lines up to the next one are
its body, '#' lines before the first directive are comments:

  @input NAME       makes a file of the body, and the folders for it
  @admin NAME       the same in the administrator's folder, which is emptied before and after
  @mode NAME MODE   gives it permissions in octal
  @size NAME SIZE   makes it so many bytes large, without filling them
  @link NAME PLACE  makes a link that leads to a place in the case's folder
  @mtime NAME TIME  lets it have changed last so many seconds after 1970
  @run ARGS...      runs the program; the body is the expected standard output. In front of it:
  @stdin PATH         for the next run: standard input comes from there (else it is empty); with
                      socket: before it, through a socket
  @stdout-to PATH     for the next run: standard output goes there
  @largest SIZE       for the next run: no file may grow beyond so many bytes
                    and behind it:
  @json               the body is the expected standard output as JSON, in any layout
  @stderr             the body is the expected standard error (else none)
  @stderr-lines N     it has so many lines, whatever they say
  @status N           the expected exit status (else 0)

In bodies and arguments \\xHH is a byte, \\{N*TEXT} is TEXT repeated N times and \\c at the end of a line
drops its line end. Each file runs in an empty folder of its own, which is home too: its settings lie
in data/ and its preferences in config/. In what is written, HOME and ADMIN stand for the two folders;
so does ADMIN in names, and ADMIN/ in files.
"""

import difflib
import json
import os
import re
import resource
import shlex
import shutil
import socket
import subprocess
import sys
import tempfile

NEWLINE = b"\n"
TIME_LIMIT = 120  # seconds; only a program that hangs meets it


def decode(text):
    """The bytes that a body or an argument stands for."""
    text = re.sub(r"\\\{(\d+)\*([^}]*)\}", lambda m: m[2] * int(m[1]), text)
    text = text.replace("\\c\n", "")
    pieces = re.split(r"\\x([0-9A-F]{2})", text)
    return b"".join(
        bytes([int(piece, 16)]) if at % 2 else piece.encode() for at, piece in enumerate(pieces))


def json_output(body):
    """JSON in the layout of the program's output."""
    return json.dumps(json.loads(decode(body)), indent=2, ensure_ascii=False).encode() + NEWLINE


class Run:
    """One call of the program and what is expected of it."""

    def __init__(self, arguments, stdout):
        self.arguments = [decode(word) for word in shlex.split(arguments.replace("\\", "\\\\"))]
        self.title = arguments
        self.stdout = stdout
        self.stderr = b""
        self.stderr_lines = None
        self.status = 0
        self.stdin_from = os.devnull
        self.stdout_to = None
        self.largest = None


def parse(path):
    """The files to make, as {name: bytes}, those of the administrator, permissions, times and runs."""
    with open(path, encoding="utf-8", newline="\n") as file:
        parts = re.split(r"^@", file.read(), flags=re.MULTILINE)
    if any(line and not line.startswith("#") for line in parts[0].splitlines()):
        raise ValueError("text before the first directive")
    inputs, admin, modes, times, sizes, links, runs, pending = {}, {}, {}, {}, {}, {}, [], {}
    for part in parts[1:]:
        line, _, body = part.partition("\n")
        directive, _, argument = line.partition(" ")
        if directive == "input":
            inputs[argument] = decode(body)
        elif directive == "admin":
            admin[argument] = decode(body)
        elif directive == "mtime":
            name, _, seconds = argument.rpartition(" ")
            times[name] = int(seconds)
        elif directive == "mode":
            name, _, mode = argument.rpartition(" ")
            modes[name] = int(mode, 8)
        elif directive == "size":
            name, _, size = argument.rpartition(" ")
            sizes[name] = int(size)
        elif directive == "link":
            name, _, place = argument.rpartition(" ")
            links[name] = place
        elif directive in ("stdin", "stdout-to", "largest"):
            pending[directive] = argument
        elif directive == "run":
            runs.append(Run(argument, decode(body)))
            runs[-1].stdin_from = pending.pop("stdin", os.devnull)
            runs[-1].stdout_to = pending.pop("stdout-to", None)
            runs[-1].largest = pending.pop("largest", None)
        elif directive == "json":
            runs[-1].stdout = json_output(body)
        elif directive == "stderr":
            runs[-1].stderr = decode(body)
        elif directive == "stderr-lines":
            runs[-1].stderr_lines = int(argument)
        elif directive == "status":
            runs[-1].status = int(argument)
        else:
            raise ValueError(f"unknown directive @{directive}")
    if not runs or pending:
        raise ValueError("nothing to run")
    return inputs, admin, modes, times, sizes, links, runs


def visible(data):
    """Bytes as lines of text for a difference, without losing any."""
    return data.decode("utf-8", "backslashreplace").replace("\r", "\\x0D").splitlines()


def difference(what, expected, actual):
    if expected == actual:
        return []
    lines = difflib.unified_diff(
        visible(expected), visible(actual), f"expected {what}", f"actual {what}", lineterm="")
    return list(lines) or [f"{what}: line ends differ"]


def make(folder, files):
    """Makes files in a folder, and the folders for them."""
    for name, content in files.items():
        path = os.path.join(folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)


def clear(folder):
    """Leaves nothing in a folder."""
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)


def open_input(place):
    """A descriptor on a file or a folder, or on a socket, which no path leads to."""
    if not place.startswith("socket:"):
        return os.open(place, os.O_RDONLY)
    ours, theirs = socket.socketpair()
    with ours, open(place.removeprefix("socket:"), "rb") as file:
        ours.sendall(file.read())
    return theirs.detach()


def execute(program, run, places):
    """The differences between what a run gives and what is expected."""
    environment = {key: os.environ[key] for key in os.environ if key != "NO_COLOR"}
    environment.update(
        LC_ALL="C", TZ="EAT-3", HOME=os.getcwd(), XDG_DATA_HOME=os.path.join(os.getcwd(), "data"),
        XDG_CONFIG_HOME=os.path.join(os.getcwd(), "config"))

    def limit_files():
        if run.largest:
            resource.setrlimit(resource.RLIMIT_FSIZE, (int(run.largest), resource.RLIM_INFINITY))

    # A folder can be standard input too, but Python opens none.
    stdin = open_input(run.stdin_from)
    with open(run.stdout_to or os.devnull, "wb") as stdout:
        result = subprocess.run(
            [program.encode(), *run.arguments], stdin=stdin, env=environment, timeout=TIME_LIMIT,
            stdout=stdout if run.stdout_to else subprocess.PIPE, stderr=subprocess.PIPE, check=False,
            preexec_fn=limit_files)
    os.close(stdin)
    stdout, stderr = result.stdout or b"", result.stderr
    for place, name in places.items():
        stdout, stderr = (text.replace(place.encode(), name) for text in (stdout, stderr))
    problems = difference("standard output", run.stdout, stdout)
    if run.stderr_lines is None:
        problems += difference("standard error", run.stderr, stderr)
    elif stderr.count(NEWLINE) != run.stderr_lines:
        problems.append(f"{stderr.count(NEWLINE)} lines of errors, expected {run.stderr_lines}")
    if result.returncode != run.status:
        problems.append(f"exit status {result.returncode}, expected {run.status}")
    return problems


def main():
    program, case_file, *admin_folder = (os.path.abspath(path) for path in sys.argv[1:])
    inputs, admin, modes, times, sizes, links, runs = parse(case_file)
    admin_place = "".join(admin_folder)
    failures = 0
    for place in admin_folder:
        clear(place)
        make(place, admin)
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        make(folder, {
            name: content.replace(b"ADMIN/", admin_place.encode() + b"/") for name, content in inputs.items()})
        places = {os.getcwd(): b"HOME"} | {place: b"ADMIN" for place in admin_folder}
        for name, mode in modes.items():
            os.chmod(name, mode)
        for name, size in sizes.items():
            with open(name, "wb") as file:
                file.truncate(size)
        for name, place in links.items():
            os.symlink(os.path.join(os.getcwd(), place), name.replace("ADMIN", admin_place))
        for name, seconds in times.items():
            os.utime(name.replace("ADMIN", admin_place), (seconds, seconds))
        for run in runs:
            problems = execute(program, run, places)
            failures += bool(problems)
            if problems:
                print(f"FAILED: {run.title}", *problems, sep="\n")
        os.chdir("/")
    for place in admin_folder:
        clear(place)
    print(f"{len(runs)} runs, {failures} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
