#!/usr/bin/env python3
"""Draws the buttons of the preset dynamics and of the expression kinds; --check compares those on disk instead."""
import math
import pathlib
import struct
import sys

WIDTH, HEIGHT = 16, 15
BACKGROUND = (192, 192, 192)
INK = (24, 24, 48)
MIDDLE = HEIGHT // 2

# Slanted, with their feet below the line.
LETTERS = {
    "p": (".....",
          ".....",
          ".###.",
          ".#..#",
          ".#..#",
          "#.##.",
          "#....",
          "#...."),
    "m": ("......",
          "......",
          "####..",
          "#.#.#.",
          "#.#.#.",
          "#.#.#.",
          "......",
          "......"),
    "f": ("...##",
          "..#..",
          ".###.",
          "..#..",
          ".#...",
          ".#...",
          ".#...",
          "#...."),
}
LEVELS = ("ppp", "pp", "p", "mp", "mf", "f", "ff", "fff")
# How far the hairpin opens, and the power of time by which it does: above 1 late, below 1 early.
HAIRPINS = {"": (4, 1), " Wide": (6, 1), " Late": (5, 2.5), " Early": (5, 0.4)}


class Picture:
    def __init__(self):
        self.rows = [[BACKGROUND] * WIDTH for _ in range(HEIGHT)]

    def dot(self, x, y):
        self.rows[y][x] = INK

    def curve(self, first, last, height):
        """The line through height(t) for t from 0 to 1 between two columns, without gaps where it is steep."""
        steps = 16 * (last - first)
        for i in range(steps + 1):
            t = i / steps
            self.dot(round(first + (last - first) * t), round(height(t)))

    def bitmap(self):
        pixels = b"".join(bytes(reversed(pixel)) for row in reversed(self.rows) for pixel in row)
        offset = 54
        return (struct.pack("<2sIHHI", b"BM", offset + len(pixels), 0, 0, offset) +
                struct.pack("<IiiHHIIiiII", 40, WIDTH, HEIGHT, 1, 24, 0, len(pixels), 2835, 2835, 0, 0) + pixels)


def level(name):
    picture = Picture()
    x = (WIDTH - sum(len(LETTERS[letter][0]) for letter in name)) // 2
    for letter in name:
        for y, row in enumerate(LETTERS[letter]):
            for column, mark in enumerate(row):
                if mark == "#":
                    picture.dot(x + column, 4 + y)
        x += len(LETTERS[letter][0])
    return picture


def hairpin(opening, power, falling):
    picture = Picture()
    for side in (-1, 1):
        picture.curve(1, WIDTH - 2,
                      lambda t: MIDDLE + side * opening * (1 - t ** power if falling else t ** power))
    return picture


def wedge(falling):
    picture = Picture()
    for x in range(2, WIDTH - 2):
        top = 2 + (x - 2 if falling else WIDTH - 3 - x) * 9 // 11
        for y in range(top, HEIGHT - 2):
            picture.dot(x, y)
    return picture


def s_curve():
    picture = Picture()
    for below in (0, 1):
        picture.curve(2, WIDTH - 3, lambda t: MIDDLE - 4.5 * math.tanh(8 * t - 4) + below)
    return picture


def wave():
    picture = Picture()
    for below in (0, 1):
        picture.curve(1, WIDTH - 2, lambda t: MIDDLE - 4 * math.sin(4 * math.pi * t) + below)
    return picture


def buttons():
    """Every picture by its path from the root of the tree."""
    dynamics = "data/AiconDB/Dynamics/"
    pictures = {f"{dynamics}{name}.bmp": level(name) for name in LEVELS}
    for suffix, (opening, power) in HAIRPINS.items():
        pictures[f"{dynamics}Crescendo{suffix}.bmp"] = hairpin(opening, power, False)
        pictures[f"{dynamics}Decrescendo{suffix}.bmp"] = hairpin(opening, power, True)
    kinds = {"attack": wedge(False), "transition": s_curve(), "release": wedge(True), "vibrato": wave()}
    for kind, picture in kinds.items():
        pictures[f"companions/dbm/data/{kind}/{kind}.bmp"] = picture
    return pictures


def main():
    root = pathlib.Path(__file__).resolve().parent.parent
    check = sys.argv[1:] == ["--check"]
    if sys.argv[1:] and not check:
        sys.exit("usage: make_buttons.py [--check]")
    differ = False
    for name, picture in buttons().items():
        path = root / name
        if not check:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(picture.bitmap())
        elif not path.is_file() or path.read_bytes() != picture.bitmap():
            print(f"make_buttons: {name} is {'not what is drawn' if path.exists() else 'missing'}", file=sys.stderr)
            differ = True
    sys.exit(differ)


if __name__ == "__main__":
    main()
