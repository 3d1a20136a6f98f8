"""What all tests of the module use: a home of their own, and copies of the examples."""
import pathlib
import shutil

import pytest

EXAMPLES = pathlib.Path(__file__).parents[2] / "data"


@pytest.fixture(autouse=True)
def home(tmp_path, monkeypatch):
    """An empty home folder; the user's settings are in its folder data."""
    folder = tmp_path / "home"
    folder.mkdir()
    for name, value in {"HOME": "", "XDG_DATA_HOME": "data", "XDG_CONFIG_HOME": "config"}.items():
        monkeypatch.setenv(name, str(folder / value))
    return folder


@pytest.fixture
def folder(tmp_path, monkeypatch):
    """The current folder, with the examples in it."""
    place = tmp_path / "files"
    place.mkdir()
    for file in EXAMPLES.iterdir():
        shutil.copy(file, place)
    monkeypatch.chdir(place)
    return place
