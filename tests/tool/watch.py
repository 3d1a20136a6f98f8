#!/usr/bin/env python3
"""What the program reports of changes while it watches: watch.py PROGRAM ADMIN_FOLDER"""

import json
import os
import shutil
import subprocess
import sys
import tempfile

SETTINGS = "<< /EmbedAllFonts false >> setalembicorparams\n"
HIDDEN = ('<plist><dict><key>ShowHide</key><dict><key>Webrix</key><dict>'
          "<key>own</key><string>{}</string></dict></dict></dict></plist>\n")


class Watch:
    """A run of watch; it is ready once it has said so."""

    def __init__(self, program, *arguments, **options):
        self.process = subprocess.Popen(
            [program, "watch", *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8",
            **options)
        self.notes = []
        while not self.notes or "note" not in self.notes[-1]:
            self.notes.append(self.process.stderr.readline() or "note that it ended")

    def next(self):
        return self.process.stdout.readline()

    def stop(self):
        """Reads no more, which ends it at the next change or before."""
        self.process.stdout.close()
        return self.process.wait(timeout=120)


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path + ".tmp", "w", encoding="ascii") as file:
        file.write(text)
    os.rename(path + ".tmp", path)


def json_change(change, file, name):
    return json.dumps({"version": 1, "change": change, "file": file, "name": name}, separators=(",", ":")) + "\n"


def listed(program, admin, folder):
    """Expected and reported lines for what an application lists."""
    environment = dict(os.environ, XDG_DATA_HOME=folder, XDG_CONFIG_HOME=folder, HOME=folder)
    user = os.path.join(folder, "Ardeo", "Ardeo PDF", "Settings", "own.joboptions")
    preferences = os.path.join(admin, "xdg", "com.ardeo.PDFAdminSettings.plist")
    watch = Watch(program, "--app", "Webrix", "--json", env=environment)
    for change, action in (
            ("added", lambda: write(user, SETTINGS)),
            ("hidden", lambda: write(preferences, HIDDEN.format(0))),
            ("shown", lambda: write(preferences, HIDDEN.format(1))),
            ("changed", lambda: write(user, SETTINGS.replace("false", "true"))),
            ("read-only", lambda: os.chmod(user, 0o444)),
            ("writable", lambda: os.chmod(user, 0o644)),
            ("removed", lambda: os.remove(user))):
        action()
        yield json_change(change, user, "own"), watch.next()
    yield 0, watch.stop()


def named(program, folder):
    """The same for a file and a folder that are made later."""
    file, later = os.path.join(folder, "a.joboptions"), os.path.join(folder, "later", "\x1b.joboptions")
    watch = Watch(program, file, os.path.dirname(later), "/proc/self")
    warning = "joboptions: warning: /proc/self: its file system does not report the changes that others make\n"
    yield warning, watch.notes[0]
    write(later, SETTINGS)
    yield "added       " + later.replace("\x1b", "\\033") + "\n", watch.next()
    write(file, SETTINGS)
    yield f"added       {file}\n", watch.next()
    yield 0, watch.stop()


def main():
    program, admin = (os.path.abspath(path) for path in sys.argv[1:])
    shutil.rmtree(admin, ignore_errors=True)
    with tempfile.TemporaryDirectory() as folder:
        results = [*listed(program, admin, folder), *named(program, folder)]
    shutil.rmtree(admin, ignore_errors=True)
    wrong = [(expected, actual) for expected, actual in results if expected != actual]
    for expected, actual in wrong:
        print(f"FAILED: expected {expected!r}, found {actual!r}")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
