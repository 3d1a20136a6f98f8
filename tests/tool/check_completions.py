#!/usr/bin/env python3
"""Lets shells complete with the scripts that a program writes for them: check_completions.py PROGRAM"""

import os
import subprocess
import sys
import tempfile

PROGRAM = os.path.abspath(sys.argv[1])

# What is typed, and what is offered: the words of the line, some that must be among the offers
# and some that must not.
CASES = [
    (["sh"], ["show"], ["set"]),
    (["check", "--str"], ["--strict"], ["--app"]),
    (["show", "--color", "a"], ["auto", "always"], ["never"]),
    (["get", "f", "Color"], ["ColorImageDict/QFactor", "ColorImageResolution"], ["Binding"]),
    (["describe", "DSC"], ["DSC-comments-and-EPS"], []),
    (["describe", "mono*depth"], ["MonoImageDepth"], ["GrayImageDepth"]),
    (["set", "f", "--from", "g", "EmbedAll"], ["EmbedAllFonts"], []),
    (["new", "f", "--from", "g", "EmbedAll"], [], ["EmbedAllFonts"]),
    (["describe", "Bind"], ["Binding"], ["CompressPages"]),
    (["check", "--ignore", "fa"], ["far-point"], ["stray"]),
    # Options do not shift the arguments.
    (["get", "--app", "Webrix", "Color"], [], ["ColorImageResolution"]),
    (["get", "--app", "Webrix", "f", "Color"], ["ColorImageResolution"], []),
    (["set", "-n", "EmbedAll"], [], ["EmbedAllFonts=", "EmbedAllFonts=true"]),
    (["completion", ""], ["bash", "zsh", "fish"], []),
]

# Assignments: bash makes three words of them.
ASSIGNMENTS = {
    "bash": [(["set", "f", "EmbedAll"], ["EmbedAllFonts="], []),
             (["set", "f", "AutoRotatePages", "=", "/P"], ["/PageByPage"], ["/All"])],
    "zsh": [(["set", "f", "AutoRotatePages=/P"], ["AutoRotatePages=/PageByPage"], [])],
    "fish": [(["set", "f", "AutoRotatePages=/P"], ["AutoRotatePages=/PageByPage"], [])],
}


def script(shell):
    return subprocess.run(
        [PROGRAM, "completion", shell], check=True, capture_output=True, text=True).stdout


def bash_offers(path, words):
    """The function of the script, called as bash calls it."""
    line = " ".join(f"'{word}'" for word in ["joboptions", *words])
    command = (f"source '{path}'; COMP_WORDS=({line}); COMP_CWORD={len(words)}; _joboptions joboptions; "
               "printf '%s\\n' \"${COMPREPLY[@]}\"")
    return subprocess.run(
        ["bash", "-c", command], check=True, capture_output=True, text=True).stdout.split("\n")


def fish_offers(path, words):
    """What fish itself offers; each line is an offer and its description."""
    command = f"source '{path}'; complete -C 'joboptions {' '.join(words)}'"
    lines = subprocess.run(
        ["fish", "--no-config", "-c", command], check=True, capture_output=True, text=True)
    return [line.split("\t")[0] for line in lines.stdout.split("\n")]


def zsh_offers(path, words):
    """What the function of the script hands to zsh."""
    line = " ".join(f"'{word}'" for word in ["joboptions", *words])
    command = ("compdef() {}; _files() { print FILES; }; "
               "_describe() { print -l -- ${${(P)2}%%:*}; }; "
               f"source '{path}'; words=({line}); CURRENT={len(words) + 1}; PREFIX='{words[-1]}'; _joboptions")
    lines = subprocess.run(["zsh", "-f", "-c", command], check=True, capture_output=True, text=True)
    return lines.stdout.split("\n")


OFFERS = {"bash": bash_offers, "zsh": zsh_offers, "fish": fish_offers}


def main():
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        os.environ["HOME"] = folder
        os.environ["PATH"] = os.path.dirname(PROGRAM) + ":" + os.environ["PATH"]
        for shell, offers_of in OFFERS.items():
            path = os.path.join(folder, shell)
            with open(path, "w", encoding="utf-8") as file:
                file.write(script(shell))
            failures += subprocess.run([shell, "-n", path], check=False).returncode != 0
            for words, wanted, unwanted in CASES + ASSIGNMENTS[shell]:
                offers = offers_of(path, words)
                missing = [word for word in wanted if word not in offers]
                wrong = [word for word in unwanted if word in offers]
                if missing or wrong:
                    failures += 1
                    print(f"{shell}: {words}: missing {missing}, wrong {wrong}, offered {offers}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
