#!/usr/bin/env python3
"""Builds the wheel for Linux x86-64: the package with the libraries, the companions and their data of a release build.

    python/build_wheel.py BUILD FOLDER      BUILD is a built tree, FOLDER takes the wheel
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

from setuptools import build_meta

SOURCE = pathlib.Path(__file__).resolve().parent
COMPONENTS = ("library", "voices")


def version_of(build: pathlib.Path) -> str:
    """The project's, as the build was configured."""
    found = re.search(r"^CMAKE_PROJECT_VERSION:STATIC=(.*)$", (build / "CMakeCache.txt").read_text(), re.M)
    if not found:
        sys.exit(f"build_wheel: {build} is no configured build")
    return found[1]


def main(build: pathlib.Path, folder: pathlib.Path) -> None:
    folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as work:
        tree = pathlib.Path(work) / "tree"
        shutil.copytree(SOURCE / "torv", tree / "torv", ignore=shutil.ignore_patterns("__pycache__", "native"))
        project = (SOURCE / "pyproject.toml").read_text()
        (tree / "pyproject.toml").write_text(project.replace('dynamic = ["version"]', f'version = "{version_of(build)}"'))
        (tree / "setup.cfg").write_text("[bdist_wheel]\nplat_name = linux_x86_64\n")
        native = tree / "torv" / "native"
        for component in COMPONENTS:
            subprocess.run(["cmake", "--install", build, "--component", component, "--prefix", native], check=True,
                           stdout=subprocess.DEVNULL)
        # A wheel holds no links: of each library stays the name that the others know it by.
        for link in [path for path in native.rglob("*.so*") if path.is_symlink()]:
            whole = link.resolve()
            link.unlink()
            if re.search(r"\.so\.\d+$", link.name):
                shutil.copy2(whole, link)
        for whole in native.glob("lib/*.so.*.*"):
            whole.unlink()
        here = os.getcwd()
        os.chdir(tree)
        try:
            print(folder / build_meta.build_wheel(str(folder)))
        finally:
            os.chdir(here)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve())
