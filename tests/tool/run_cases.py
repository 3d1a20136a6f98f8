#!/usr/bin/env python3
"""Runs a case file against a program: run_cases.py PROGRAM CASE_FILE

A case file is UTF-8 text. A line that begins with '@' is a directive, the lines up to the next one are
its body, '#' lines before the first directive are comments:

  @input NAME       makes a file of the body
  @mode NAME MODE   gives it permissions in octal
  @run ARGS...      runs the program; the body is the expected standard output. In front of it:
  @stdin NAME         for the next run: standard input comes from that file (else it is empty)
  @stdout-to PATH     for the next run: standard output goes there
                    and behind it:
  @stderr             the body is the expected standard error (else none)
  @status N           the expected exit status (else 0)

In bodies and arguments \\xHH is a byte, \\{N*TEXT} is TEXT repeated N times and \\c at the end of a line
drops its line end. Each file runs in an empty folder of its own.
"""

import difflib
import os
import re
import shlex
import subprocess
import sys
import tempfile

TIME_LIMIT = 120  # seconds; only a program that hangs meets it


def decode(text):
    """The bytes that a body or an argument stands for."""
    text = re.sub(r"\\\{(\d+)\*([^}]*)\}", lambda m: m[2] * int(m[1]), text)
    text = text.replace("\\c\n", "")
    pieces = re.split(r"\\x([0-9A-F]{2})", text)
    return b"".join(
        bytes([int(piece, 16)]) if at % 2 else piece.encode() for at, piece in enumerate(pieces))


class Run:
    """One call of the program and what is expected of it."""

    def __init__(self, arguments, stdout):
        self.arguments = [decode(word) for word in shlex.split(arguments.replace("\\", "\\\\"))]
        self.title = arguments
        self.stdout = stdout
        self.stderr = b""
        self.status = 0
        self.stdin_from = os.devnull
        self.stdout_to = None


def parse(path):
    """The files to make, as {name: bytes}, their permissions and the runs of a case file."""
    with open(path, encoding="utf-8", newline="\n") as file:
        parts = re.split(r"^@", file.read(), flags=re.MULTILINE)
    if any(line and not line.startswith("#") for line in parts[0].splitlines()):
        raise ValueError("text before the first directive")
    inputs, modes, runs, pending = {}, {}, [], {}
    for part in parts[1:]:
        line, _, body = part.partition("\n")
        directive, _, argument = line.partition(" ")
        if directive == "input":
            inputs[argument] = decode(body)
        elif directive == "mode":
            name, mode = argument.split()
            modes[name] = int(mode, 8)
        elif directive in ("stdin", "stdout-to"):
            pending[directive] = argument
        elif directive == "run":
            runs.append(Run(argument, decode(body)))
            runs[-1].stdin_from = pending.pop("stdin", os.devnull)
            runs[-1].stdout_to = pending.pop("stdout-to", None)
        elif directive == "stderr":
            runs[-1].stderr = decode(body)
        elif directive == "status":
            runs[-1].status = int(argument)
        else:
            raise ValueError(f"unknown directive @{directive}")
    if not runs or pending:
        raise ValueError("nothing to run")
    return inputs, modes, runs


def visible(data):
    """Bytes as lines of text for a difference, without losing any."""
    return data.decode("utf-8", "backslashreplace").replace("\r", "\\x0D").splitlines()


def difference(what, expected, actual):
    if expected == actual:
        return []
    lines = difflib.unified_diff(
        visible(expected), visible(actual), f"expected {what}", f"actual {what}", lineterm="")
    return list(lines) or [f"{what}: line ends differ"]


def execute(program, run):
    """The differences between what a run gives and what is expected."""
    environment = {key: os.environ[key] for key in os.environ if key != "NO_COLOR"}
    environment["LC_ALL"] = "C"
    with open(run.stdin_from, "rb") as stdin, open(run.stdout_to or os.devnull, "wb") as stdout:
        result = subprocess.run(
            [program.encode(), *run.arguments], stdin=stdin, env=environment, timeout=TIME_LIMIT,
            stdout=stdout if run.stdout_to else subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    problems = difference("standard output", run.stdout, result.stdout or b"")
    problems += difference("standard error", run.stderr, result.stderr)
    if result.returncode != run.status:
        problems.append(f"exit status {result.returncode}, expected {run.status}")
    return problems


def main():
    program, case_file = (os.path.abspath(path) for path in sys.argv[1:])
    inputs, modes, runs = parse(case_file)
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for name, content in inputs.items():
            with open(name, "wb") as file:
                file.write(content)
        for name, mode in modes.items():
            os.chmod(name, mode)
        for run in runs:
            problems = execute(program, run)
            failures += bool(problems)
            if problems:
                print(f"FAILED: {run.title}", *problems, sep="\n")
        os.chdir("/")
    print(f"{len(runs)} runs, {failures} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
