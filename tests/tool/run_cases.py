#!/usr/bin/env python3
"""Runs a case file against a program: run_cases.py PROGRAM CASE_FILE [ADMIN_FOLDER]

A case file is UTF-8 text. A line that begins with '@' is a directive, the lines up to the next one are
its body, and lines that begin with '# ' are comments:

  @input NAME       makes a file of the body, and the folders for it
  @admin NAME       the same in the administrator's folder, which is emptied before and after
  @mode NAME MODE   gives it permissions in octal
  @link NAME PLACE  makes a link that leads to a place in the case's folder
  @run ARGS...      runs the program; the body is the expected standard output. In front of it:
  @stdin PATH         for the next run: standard input comes from there (else it is empty)
  @stdout-to PATH     for the next run: standard output goes there
  @largest SIZE       for the next run: no file may grow beyond so many bytes
                    and behind it:
  @json               the body is the expected standard output as JSON, in any layout
  @stderr             the body is the expected standard error (else none)
  @status N           the expected exit status (else 0)
  @refused N        runs that write nothing but errors, and exit with N; in the body, each has a line
                    of arguments and, indented below it, "< " and a line of standard input, if it reads
                    one, and the errors, without the name of the program
  @wrong            the same with 2, for calls whose errors end in a hint to the help

In bodies and arguments \\xHH is a byte, \\{N*TEXT} is TEXT repeated N times and \\c at the end of a line
drops its line end. Each file runs in an empty folder of its own, which is home too: its settings lie
in data/ and its preferences in config/. All files have changed last at the same time. In what is
written, HOME and ADMIN stand for the two folders, and VERSION for the program's version; so does ADMIN in names, and ADMIN/ in files.
"""

import difflib
import json
import os
import re
import resource
import shlex
import shutil
import subprocess
import sys
import tempfile

NEWLINE = b"\n"
CHANGED = 1000000000  # when files have changed last: 2001-09-09T01:46:40Z
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

    def __init__(self, arguments, stdout=b"", stderr=b"", status=0):
        self.arguments = [decode(word) for word in shlex.split(arguments.replace("\\", "\\\\"))]
        self.title = arguments
        self.stdout = stdout
        self.stderr = stderr
        self.status = status
        self.input = None
        self.before = {}


def refused_runs(body, status, hint=b""):
    """The runs of a table of calls that fail."""
    for row in re.split(r"\n(?! )", body.rstrip("\n")):
        arguments, *lines = row.split("\n  ")
        errors = "".join(f"joboptions: error: {line}\n" for line in lines if not line.startswith("< "))
        run = Run(arguments, stderr=decode(errors) + hint, status=status)
        if lines[0].startswith("< "):
            run.input = decode(lines[0].removeprefix("< "))
        yield run


def parse(path):
    """What to make, as {directive: {name: value}}, and the runs."""
    with open(path, encoding="utf-8", newline="\n") as file:
        text = re.sub(r"^# .*\n", "", file.read(), flags=re.MULTILINE)
    parts = re.split(r"^@", text, flags=re.MULTILINE)
    if parts[0]:
        raise ValueError("text before the first directive")
    made, runs, pending = {"input": {}, "admin": {}, "mode": {}, "link": {}}, [], {}
    for part in parts[1:]:
        line, _, body = part.partition("\n")
        directive, _, argument = line.partition(" ")
        if directive in ("input", "admin"):
            made[directive][argument] = decode(body)
        elif directive in ("mode", "link"):
            name, _, value = argument.rpartition(" ")
            made[directive][name] = value
        elif directive in ("stdin", "stdout-to", "largest"):
            pending[directive] = argument
        elif directive == "run":
            runs.append(Run(argument, decode(body)))
            runs[-1].before, pending = pending, {}
        elif directive == "json":
            runs[-1].stdout = json_output(body)
        elif directive == "stderr":
            runs[-1].stderr = decode(body)
        elif directive == "status":
            runs[-1].status = int(argument)
        elif directive == "refused":
            runs += refused_runs(body, int(argument))
        elif directive == "wrong":
            runs += refused_runs(body, 2, b"Try joboptions --help.\n")
        else:
            raise ValueError(f"unknown directive @{directive}")
    if not runs or pending:
        raise ValueError("nothing to run")
    return made, runs


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
        os.utime(path, (CHANGED, CHANGED))


def clear(folder):
    """Leaves nothing in a folder."""
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)


def execute(program, run, places):
    """The differences between what a run gives and what is expected."""
    environment = {key: os.environ[key] for key in os.environ if key != "NO_COLOR"}
    environment.update(
        LC_ALL="C", TZ="EAT-3", HOME=os.getcwd(), XDG_DATA_HOME=os.path.join(os.getcwd(), "data"),
        XDG_CONFIG_HOME=os.path.join(os.getcwd(), "config"))

    def limit_files():
        if "largest" in run.before:
            resource.setrlimit(resource.RLIMIT_FSIZE, (int(run.before["largest"]), resource.RLIM_INFINITY))

    # A folder can be standard input too, but Python opens none.
    stdin = os.open(run.before.get("stdin", os.devnull), os.O_RDONLY)
    with open(run.before.get("stdout-to", os.devnull), "wb") as stdout:
        result = subprocess.run(
            [program.encode(), *run.arguments], env=environment, timeout=TIME_LIMIT, check=False,
            **({"stdin": stdin} if run.input is None else {"input": run.input}),
            stdout=stdout if "stdout-to" in run.before else subprocess.PIPE, stderr=subprocess.PIPE,
            preexec_fn=limit_files)
    os.close(stdin)
    stdout, stderr = result.stdout or b"", result.stderr
    for place, name in places.items():
        stdout, stderr = (text.replace(place.encode(), name) for text in (stdout, stderr))
    problems = difference("standard output", run.stdout, stdout)
    problems += difference("standard error", run.stderr, stderr)
    if result.returncode != run.status:
        problems.append(f"exit status {result.returncode}, expected {run.status}")
    return problems


def main():
    program, case_file, *admin_folder = (os.path.abspath(path) for path in sys.argv[1:])
    made, runs = parse(case_file)
    admin_place = "".join(admin_folder)
    failures = 0
    for place in admin_folder:
        clear(place)
        make(place, made["admin"])
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        make(folder, {
            name: content.replace(b"ADMIN/", admin_place.encode() + b"/")
            for name, content in made["input"].items()})
        version = subprocess.check_output([program, "--version"], text=True).split()[1]
        places = {os.getcwd(): b"HOME", version: b"VERSION"} | {place: b"ADMIN" for place in admin_folder}
        for name, mode in made["mode"].items():
            os.chmod(name, int(mode, 8))
        for name, place in made["link"].items():
            os.symlink(os.path.join(os.getcwd(), place), name.replace("ADMIN", admin_place))
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
