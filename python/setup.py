"""Builds the wheel: compiles the module with CMake, which also installs the libraries in it. Needs the
other folders of the project beside this one, CMake and pybind11; PDFSETTINGS_JOBS sets how many
compilers run at once (2)."""
import os
import pathlib
import re
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

PROJECT = pathlib.Path(__file__).resolve().parent.parent


def version() -> str:
    """That of the project."""
    text = (PROJECT / "CMakeLists.txt").read_text()
    return re.search(r"^project\(PDFSettings VERSION ([0-9.]+)", text, re.MULTILINE).group(1)


class BuildWithCMake(build_ext):
    def build_extension(self, extension: Extension) -> None:
        build = pathlib.Path(self.build_temp).resolve()
        options = {
            "CMAKE_BUILD_TYPE": "Release",
            "PDFSETTINGS_PYTHON": "ON",
            "PDFSETTINGS_PYTHON_WITH_LIBRARIES": "ON",
            "PDFSETTINGS_PYTHON_FOLDER": ".",
            "Python_EXECUTABLE": sys.executable,
        }
        cmake = ["cmake", "-S", PROJECT, "-B", build, *(f"-D{name}={value}" for name, value in options.items())]
        subprocess.run(cmake, check=True)
        jobs = os.environ.get("PDFSETTINGS_JOBS", "2")
        subprocess.run(["cmake", "--build", build, "-j", jobs, "--target", "pdfsettings_python"], check=True)
        prefix = pathlib.Path(self.build_lib).resolve()
        subprocess.run(["cmake", "--install", build, "--component", "python", "--strip", "--prefix", prefix], check=True)


setup(version=version(), ext_modules=[Extension("pdfsettings._core", sources=[])], cmdclass={"build_ext": BuildWithCMake})
