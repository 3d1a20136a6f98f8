"""Checks the settings files in a folder, and repairs with --fix what has one meaning only."""
import argparse
import pathlib
import sys

import pdfsettings


def audit(file: pathlib.Path, fix: bool) -> tuple[int, int, int]:
    """Reports on a file. The numbers of its errors, warnings and repairs."""
    document = pdfsettings.Document.open(file)
    repairs: tuple[pdfsettings.Problem, ...] = ()
    if fix:
        repaired = pdfsettings.repair(document)
        if repaired.repairs:
            pdfsettings.save(file, repaired.document, seen=document)
        document, repairs = repaired.document, repaired.repairs
    for repair in repairs:
        print(f"{repair.place}: repaired: {repair.message} [{repair.id}]")
    problems = pdfsettings.check(document)
    for problem in problems:
        print(problem)
    errors = sum(problem.severity is pdfsettings.Severity.ERROR for problem in problems)
    return errors, len(problems) - errors, len(repairs)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder", type=pathlib.Path, help="is searched with all folders in it")
    parser.add_argument("--fix", action="store_true", help="repair and save")
    options = parser.parse_args()
    counts = []
    for file in sorted(options.folder.rglob("*.joboptions")):
        try:
            counts.append(audit(file, options.fix))
        except pdfsettings.Error as error:
            print(error, file=sys.stderr)
            counts.append((1, 0, 0))
    bad = sum(errors > 0 for errors, _, _ in counts)
    warnings = sum(found for _, found, _ in counts)
    repaired = sum(repairs > 0 for _, _, repairs in counts)
    files = "1 file" if len(counts) == 1 else f"{len(counts)} files"
    found = "1 warning" if warnings == 1 else f"{warnings} warnings"
    print(f"{files}, {bad} with errors, {found}, {repaired} repaired")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
