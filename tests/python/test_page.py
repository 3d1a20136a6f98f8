"""The examples of docs/python.md, the program of the page, and the types."""
import ast
import doctest
import inspect
import pathlib
import re
import shutil
import subprocess
import sys

import pytest

import pdfsettings
from pdfsettings import _core

ROOT = pathlib.Path(__file__).parents[2]
PAGE = (ROOT / "docs/python.md").read_text(encoding="utf-8")
EXAMPLES = re.findall(r"^```pycon\n(.*?)^```$", PAGE, flags=re.MULTILINE | re.DOTALL)


@pytest.mark.parametrize("number", range(len(EXAMPLES)))
def test_an_example_of_the_page_gives_what_it_shows(folder, number, capsys):
    example = doctest.DocTestParser().get_doctest(EXAMPLES[number], {"pdfsettings": pdfsettings}, f"example {number + 1}", "python.md", 0)
    failed = doctest.DocTestRunner(verbose=False, optionflags=doctest.ELLIPSIS).run(example).failed
    assert example.examples and failed == 0, capsys.readouterr().out


def test_the_page_has_twenty_numbered_examples():
    assert re.findall(r"^\*\*(\d+)\.\*\*", PAGE, flags=re.MULTILINE) == [str(number) for number in range(1, 21)]
    assert len(EXAMPLES) == 20 and len((ROOT / "examples/audit.py").read_text().splitlines()) <= 50


def audit(*arguments):
    done = subprocess.run([sys.executable, ROOT / "examples/audit.py", *arguments], capture_output=True, text=True)
    return done.returncode, done.stdout + done.stderr


def test_the_audit_reports_and_repairs_as_the_page_shows(folder):
    (folder / "presets/inner").mkdir(parents=True)
    odd = folder / "presets/odd.joboptions"
    odd.write_text("<<\n  /EmbedAllFonts TRUE\n>> setalembicorparams\n")
    assert audit("presets") == (1, (
        'presets/odd.joboptions:2:18: error: "TRUE" is not a value: write true [unknown-value]\nfiles: 1, with errors: 1, repaired: 0; warnings: 0\n'))
    shown = re.search(r"\$ python3 audit.py --fix presets\n(.*?)```", PAGE, flags=re.DOTALL).group(1)
    assert audit("--fix", "presets") == (0, shown)
    assert odd.read_text() == "<<\n  /EmbedAllFonts true\n>> setalembicorparams\n"
    shutil.copy("office.joboptions", "presets/inner")
    (folder / "presets/inner/gone.joboptions").symlink_to("nowhere")
    status, report = audit("presets")
    assert audit("missing")[0] == 2 and status == 1 and "inner/gone.joboptions: No such file" in report and "files: 3, with errors: 1, repaired: 0; warnings: 0\n" in report


def test_a_strict_type_check_accepts_a_program_that_uses_everything(folder, tmp_path):
    program = pathlib.Path(__file__).with_name("everything.py")
    package = pathlib.Path(pdfsettings.__file__).parent
    for paths in ([package], [program, ROOT / "examples/audit.py"]):
        done = subprocess.run(
            [sys.executable, "-m", "mypy", "--strict", "--cache-dir", tmp_path, *paths], capture_output=True, text=True, cwd=package.parent)
        assert done.returncode == 0, done.stdout + done.stderr
    done = subprocess.run([sys.executable, "-W", "error", program, folder], capture_output=True, text=True)
    assert (done.returncode, done.stderr) == (0, "")
    used = set(re.findall(r"[a-zA-Z_]+", program.read_text()))
    assert [name for name in pdfsettings.__all__ if name not in used] == []
    for public in (pdfsettings.Settings, pdfsettings.Document, pdfsettings.Schema, pdfsettings.Edit, pdfsettings.Watcher):
        assert sorted(members(public) - used) == []


def members(owner):
    return {name for name in vars(owner) if name[0] != "_"}


def test_stubs_have_what_the_module_has_and_all_of_it_is_documented():
    tree = ast.parse((ROOT / "python/pdfsettings/_core.pyi").read_text())
    classes = {node.name: node for node in tree.body if isinstance(node, ast.ClassDef)}
    functions = {node.name for node in tree.body if isinstance(node, ast.FunctionDef)}
    for name, public in inspect.getmembers(_core, inspect.isclass):
        stubbed = {node.name for node in classes[name].body if isinstance(node, ast.FunctionDef) and node.name[0] != "_"}
        if classes[name].bases:
            stubbed |= {"as_dict", "get", "items", "keys", "values"}
        assert members(public) == stubbed, name
    assert {name for name in members(_core) if not inspect.isclass(getattr(_core, name))} == functions
    for name in set(pdfsettings.__all__) - {"Value", "ValueLike"}:
        public = getattr(pdfsettings, name)
        assert public.__doc__, name
        for member in members(public) if inspect.isclass(public) and public.__module__ == "pdfsettings" else ():
            if callable(getattr(public, member)) or isinstance(vars(public)[member], property):
                assert inspect.getdoc(getattr(public, member)), f"{name}.{member}"
