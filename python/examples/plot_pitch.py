"""Draws the pitch that is heard over the notes of the score, as an SVG picture.    plot_pitch.py SONG SVG"""
import sys

import numpy as np

import torv

song = torv.Song.open(sys.argv[1])
score = song.score()
notes = score.parts[0].notes[:8]
end = notes[-1].end
seconds, pitch, _ = score.measure(score.sing(part=0, end=end))

low, high = min(note.key for note in notes) - 2, max(note.key for note in notes) + 2
x, y = 900 / end, 300 / (high - low)
shapes = [f'<rect x="{note.start * x:.1f}" y="{(high - note.key - 0.5) * y:.1f}" width="{(note.end - note.start) * x:.1f}" '
          f'height="{y:.1f}" fill="#cbd5e0"/><text x="{note.start * x:.1f}" y="{(high - note.key + 1.4) * y:.1f}">{note.syllables}</text>'
          for note in notes]
heard = np.flatnonzero(~np.isnan(pitch))
shapes += [f'<circle cx="{seconds[i] * x:.1f}" cy="{(high - pitch[i]) * y:.1f}" r="2" fill="#c05621"/>' for i in heard]
with open(sys.argv[2], "w", encoding="utf-8") as file:
    file.write(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 900 320">{"".join(shapes)}</svg>')

wanted = np.interp(seconds[heard], [t for note in notes for t in (note.start, note.end)],
                   [note.key for note in notes for _ in range(2)])
print(f"{len(heard)} places heard, half of them within {np.median(np.abs(pitch[heard] - wanted)) * 100:.0f} cents of the score")
