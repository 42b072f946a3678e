"""What notebooks show of a song."""
from __future__ import annotations

from html import escape
from typing import TYPE_CHECKING, List

if TYPE_CHECKING:
    from .song import Song

_WIDTH, _ROW, _MARGIN = 960, 8, 16
_COLOURS = ("#2b6cb0", "#c05621", "#2f855a", "#805ad5", "#b83280", "#718096")
_BLACK_KEYS = {1, 3, 6, 8, 10}


def piano_roll(song: "Song") -> str:
    """The song as a picture of its notes with their words: a colour for each part, lines for measures."""
    parts = [(part.name, part.notes) for part in song.parts]
    keys = [note.key for _, notes in parts for note in notes] or [60]
    low, high = min(keys) - 2, max(keys) + 2
    scale = _WIDTH / max(song.end, 1)
    height = (high - low + 1) * _ROW
    shapes: List[str] = []
    for key in range(low, high + 1):
        if key % 12 in _BLACK_KEYS:
            shapes.append(f'<rect x="0" y="{(high - key) * _ROW}" width="{_WIDTH}" height="{_ROW}" fill="#f2f2f2"/>')
    for tick, _, number in song.measures:
        x = tick * scale
        shapes.append(f'<line x1="{x:.1f}" x2="{x:.1f}" y1="0" y2="{height}" stroke="#ccc"/>')
        shapes.append(f'<text x="{x + 2:.1f}" y="{height + _MARGIN - 4}" font-size="9" fill="#888">{number}</text>')
    for index, (name, notes) in enumerate(parts):
        colour = _COLOURS[index % len(_COLOURS)]
        for note in notes:
            words = " ".join(word.text for word in note.words if word.verse == 1)
            x, y, width = note.tick * scale, (high - note.key) * _ROW, max(note.length * scale - 1, 1)
            shapes.append(f'<rect x="{x:.1f}" y="{y}" width="{width:.1f}" height="{_ROW}" rx="2" fill="{colour}">'
                          f"<title>{escape(name)} {escape(words)}</title></rect>")
            if words:
                shapes.append(f'<text x="{x:.1f}" y="{y - 1}" font-size="8" fill="{colour}">{escape(words)}</text>')
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 -{_MARGIN} {_WIDTH} {height + 2 * _MARGIN}" '
            f'font-family="sans-serif">{"".join(shapes)}</svg>')
