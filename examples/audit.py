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
            for warning in pdfsettings.save(file, repaired.document, seen=document):
                print(f"{file}: {warning}", file=sys.stderr)
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
    if not options.folder.is_dir():
        parser.error(f"{options.folder} is not a folder")
    counts = []
    for file in sorted(options.folder.rglob("*.joboptions")):
        try:
            counts.append(audit(file, options.fix))
        except pdfsettings.Error as error:
            print(error, file=sys.stderr)
            counts.append((1, 0, 0))
    bad, repaired = sum(count[0] > 0 for count in counts), sum(count[2] > 0 for count in counts)
    warnings = sum(count[1] for count in counts)
    print(f"files: {len(counts)}, with errors: {bad}, repaired: {repaired}; warnings: {warnings}")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
