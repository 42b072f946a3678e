#!/usr/bin/env python3
"""Runs the pages of the guide as a reader would: every block of code of every page, in order, in a folder of the page's
own that has the example songs in it, against an installed tree.

    run_pages.py BUILD COMPILER PAGE...

A block says what it is by its fence (cpp, c, python, sh, text) and by an HTML comment before it, which no reader sees:

    <!-- file: NAME -->       is written under this name; what comes after uses it
    <!-- run: ARGUMENTS -->   a C++ or C program, run with these
    <!-- inside: NAME -->     C++ that stands for BLOCK in NAME.cpp beside this script
    <!-- library: NAME -->    C++ or C, built as the library NAME
    <!-- output -->           text, which the block before has printed
    <!-- not run: REASON -->  counted and told
"""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
COMPILED = {"cpp", "c"}
RUN = COMPILED | {"python", "sh", "output"}
WARNINGS = ["-Wall", "-Wextra", "-Werror"]


class PageError(Exception):
    pass


class Block:
    def __init__(self, page, line, language, mark, value):
        self.page, self.line, self.language, self.mark, self.value = page, line, language, mark, value
        self.lines = []

    @property
    def text(self):
        return "\n".join(self.lines) + "\n"

    @property
    def kind(self):
        """What is done with it: nothing for text that is no code."""
        if self.mark in ("not run", "file", "library", "output"):
            return self.mark
        if self.language not in RUN:
            return "text"
        if self.language == "cpp" and self.mark != "inside" and "int main(" not in self.text:
            raise PageError(f"{self}: C++ that is no program: say what it is inside of")
        return self.language

    def __str__(self):
        return f"{self.page}:{self.line}"


def blocks_of(path):
    page, blocks, current, mark = path.relative_to(ROOT), [], None, ("", "")
    for number, line in enumerate(path.read_text(encoding="utf-8").split("\n"), 1):
        if current is not None:
            if line.startswith("```"):
                blocks.append(current)
                current = None
            else:
                current.lines.append(line)
        elif line.startswith("```"):
            current = Block(page, number, line[3:].strip(), *mark)
            mark = ("", "")
        elif found := re.fullmatch(r"<!-- (file|run|inside|library|output|not run)(?:: (.*))? -->", line):
            mark = found.groups(default="")
        elif line.strip():
            mark = ("", "")
            if line.startswith("    ") and page.parts[0] == "docs" and not blocks_continue(path, number):
                raise PageError(f"{page}:{number}: code without a fence says not what it is")
    return blocks


def blocks_continue(path, number):
    """Whether an indented line goes on with a list or a paragraph."""
    return path.read_text(encoding="utf-8").split("\n")[number - 2].strip() != ""


class Reader:
    """Somebody with an installed tree and nothing else."""

    def __init__(self, work, compiler):
        self.work, self.compiler, self.tree = work, compiler, work / "tree"
        clean = {key: value for key, value in os.environ.items() if not key.startswith(("TORV_", "XDG_"))}
        self.environment = clean | {
            "PATH": f"{self.tree}/bin:{os.environ['PATH']}", "LD_LIBRARY_PATH": f"{self.tree}/lib",
            "CMAKE_PREFIX_PATH": str(self.tree), "PKG_CONFIG_PATH": f"{self.tree}/lib/pkgconfig",
            "CMAKE_BUILD_TYPE": "Debug", "CMAKE_GENERATOR": "Ninja", "CXX": compiler,
            "PYTHONPATH": os.pathsep.join(str(ROOT / folder) for folder in ("python", "bindings/python")),
            "TORV_USER_DATA": str(work / "user"), "HOME": str(work / "home")}

    def do(self, block, command, folder, **more):
        done = subprocess.run(command, cwd=folder, env=self.environment, capture_output=True, text=True, timeout=120,
                              **more)
        if done.returncode != 0:
            raise PageError(f"{block}: {' '.join(map(str, command))[:200]}\n{done.stdout}{done.stderr}")
        return done.stdout

    def compile(self, block, sources, output, *options):
        """C sources, or C++ ones, of an installed library's host."""
        is_cpp = any(source.suffix == ".cpp" for source in sources)
        libraries = [name for name in ("torvsongs", "torv", "torvc") if (self.tree / f"lib/lib{name}.so").exists()]
        self.do(block, [self.compiler if is_cpp else "cc", "-std=c++20" if is_cpp else "-std=c11", *WARNINGS, *options,
                        "-I", self.tree / "include", *sources, "-o", output, "-L", self.tree / "lib",
                        *(f"-l{name}" for name in libraries)], self.work)


def program_of(blocks, folder):
    """One source for all C++ programs and fragments, each in a namespace of its own: one compilation, one program, whose
    first argument says which block it is."""
    includes, bodies, calls = [], [], []
    for index, block in enumerate(blocks):
        text = f'#line {block.line + 1} "{block.page}"\n{block.text}'
        if block.mark == "inside":
            text = (HERE / f"{block.value}.cpp").read_text(encoding="utf-8").replace("BLOCK", "\n" + text)
        includes += re.findall(r"^#include .*$", text, re.M)
        text = re.sub(r"^#include .*$", "", text, flags=re.M)
        takes = bool(re.search(r"int main\(\s*int", text))
        bodies.append(f"namespace block_{index} {{\n{re.sub(r'int main[(]', 'int Main(', text)}\n}}\n")
        calls.append(f"    case {index}: return block_{index}::Main({'count - 1, arguments + 1' if takes else ''});\n")
    source = folder / "pages.cpp"
    source.write_text("#include <cstdlib>\n" + "".join(line + "\n" for line in dict.fromkeys(includes)) + "".join(bodies) +
                      "int main([[maybe_unused]] int count, char** arguments) {\n    switch (std::atoi(arguments[1])) {\n" +
                      "".join(calls) + "    default: return 2;\n    }\n}\n", encoding="utf-8")
    return source


def run_page(reader, blocks, programs, program):
    folder = reader.work / "pages" / pathlib.Path(str(blocks[0].page)).stem
    folder.mkdir(parents=True)
    for song in (ROOT / "examples").glob("*.mid"):
        shutil.copy(song, folder)
    printed = ""
    for block in blocks:
        source = folder / f"block_{block.line}.{block.language}"
        match block.kind:
            case "file":
                (folder / block.value).write_text(block.text, encoding="utf-8")
            case "library":
                source.write_text(block.text, encoding="utf-8")
                reader.compile(block, [source], folder / f"{block.value}.so", "-shared", "-fPIC")
            case "cpp":
                arguments = shlex.split(block.value) if block.mark == "run" else []
                printed = reader.do(block, [program, str(programs.index(block)), *arguments], folder)
            case "c":
                source.write_text(block.text, encoding="utf-8")
                reader.compile(block, [source], source.with_suffix(""), "-pedantic")
                printed = reader.do(block, [source.with_suffix(""), *shlex.split(block.value)], folder)
            case "python":
                printed = reader.do(block, [sys.executable, "-c", block.text], folder)
            case "sh":
                printed = reader.do(block, ["bash", "-euc", block.text], folder)
            case "output":
                if block.text.split() != printed.split():
                    raise PageError(f"{block}: the block before prints something else:\n{printed}")


def main():
    build, compiler, pages = sys.argv[1], sys.argv[2], [pathlib.Path(page).resolve() for page in sys.argv[3:]]
    by_page = {page: blocks_of(page) for page in pages}
    every = [block for blocks in by_page.values() for block in blocks]
    programs = [block for block in every if block.kind == "cpp"]
    with tempfile.TemporaryDirectory() as work:
        reader = Reader(pathlib.Path(work), compiler)
        subprocess.run(["cmake", "--install", build, "--prefix", reader.tree], check=True, stdout=subprocess.DEVNULL)
        program = reader.work / "pages_program"
        reader.compile("the pages' C++", [program_of(programs, reader.work)], program)
        for blocks in by_page.values():
            if blocks:
                run_page(reader, blocks, programs, program)
    for block in every:
        if block.kind == "not run":
            print(f"not run: {block}: {block.value}")
    counts = {kind: sum(block.kind == kind for block in every) for kind in sorted({block.kind for block in every})}
    print(f"pages: {len(pages)}, blocks: {len(every)}: " + ", ".join(f"{count} {kind}" for kind, count in counts.items()))


try:
    main()
except PageError as error:
    sys.exit(f"pages: {error}")
