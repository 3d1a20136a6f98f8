#!/usr/bin/env python3
"""Does what the page on version control says in a repository: version_control.py PROGRAM PAGE"""

import os
import re
import subprocess
import sys
import tempfile

BASE = "<<\n  /ColorImageResolution 300\n  /StartPage 1\n  /EndPage 9\n>> setalembicorparams\n"
FAILURES = []


def git(*arguments, fails=False):
    result = subprocess.run(
        ["git", *arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", timeout=120,
        check=False)
    if (result.returncode != 0) != fails:
        FAILURES.append(f"git {arguments}: status {result.returncode}: {result.stdout}")
    return result.stdout


def expect(what, expected, actual):
    if expected not in actual:
        FAILURES.append(f"{what}: expected {expected!r} in {actual!r}")


def commit(text, branch=None):
    """Commits a.joboptions with that text, on a new branch from the first commit."""
    if branch is not None:
        git("checkout", "-q", "-b", branch, "first")
    with open("a.joboptions", "w", encoding="ascii") as file:
        file.write(text)
    git("add", ".")
    git("commit", "-q", "-m", "change")


def merged(ours, theirs, fails):
    """What a merge prints and what it leaves in the file."""
    git("reset", "-q", "--hard")
    name = f"b{len(git('branch').splitlines())}"
    commit(theirs, name + "t")
    commit(ours, name + "o")
    printed = git("merge", name + "t", "-m", "merge", fails=fails)
    with open("a.joboptions", encoding="ascii") as file:
        text = file.read()
    if fails:
        expect("a difference in a conflict", "a.joboptions", git("diff"))
        git("merge", "--abort")
    return printed, text


def main():
    program, page = (os.path.abspath(path) for path in sys.argv[1:])
    with open(page, encoding="utf-8") as file:
        blocks = re.findall(r"^```sh\n(.*?)^```", file.read(), flags=re.MULTILINE | re.DOTALL)
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.environ.update(
            PATH=os.path.dirname(program) + ":" + os.environ["PATH"], HOME=folder, GIT_CONFIG_NOSYSTEM="1",
            GIT_AUTHOR_NAME="A", GIT_AUTHOR_EMAIL="a@example.org", GIT_COMMITTER_NAME="A",
            GIT_COMMITTER_EMAIL="a@example.org", GIT_PAGER="cat")
        git("init", "-q", "-b", "first")
        for block in blocks:
            subprocess.run(["sh", "-e", "-c", block], check=True, timeout=120)
        commit(BASE)

        with open("a.joboptions", "w", encoding="ascii") as file:
            file.write("<< /A")
        expect("a difference to a broken file", "a.joboptions:\n", git("diff"))
        with open("a.joboptions", "w", encoding="ascii") as file:
            file.write("<</EndPage 9.0/StartPage 1/ColorImageResolution 150>>setalembicorparams\n")
        expect("a difference", "~ ColorImageResolution 300 -> 150\n", git("diff"))
        git("config", "--unset", "diff.joboptions.command")
        expect("a difference of lines", "+ColorImageResolution  150\n", git("diff"))

        printed, text = merged(BASE.replace("300", "150"), BASE.replace("9", "8"), fails=False)
        expect("a merge", BASE.replace("300", "150").replace("9", "8"), text)
        printed, text = merged(BASE.replace("300", "150"), BASE.replace("300", "200"), fails=True)
        expect("a conflict", "a.joboptions: ColorImageResolution: conflict: ours 150, theirs 200, before 300\n", printed)
        expect("its comment", "  %   theirs: 200\n  /ColorImageResolution 150\n", text)
        printed, text = merged(BASE.replace("1\n", "5\n"), BASE.replace("9", "3"), fails=True)
        expect("a rule between settings", "a.joboptions: StartPage: expected at most 3", printed)

        git("checkout", "-q", "first")
        with open("a.joboptions", "w", encoding="ascii") as file:
            file.write("<< /ColorImageDepth 3 >> setalembicorparams\n")
        git("add", ".")
        with open("a.joboptions", "w", encoding="ascii") as file:
            file.write(BASE)
        expect("a commit", "ColorImageDepth: 3 is not one of", git("commit", "-m", "invalid", fails=True))
    for failure in FAILURES:
        print(f"FAILED: {failure}")
    return 1 if FAILURES else 0


if __name__ == "__main__":
    sys.exit(main())
