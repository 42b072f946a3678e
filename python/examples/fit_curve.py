"""Draws a smooth curve through a few points, of pitch and of loudness, and sings with it.    fit_curve.py SONG WAVE"""
import sys

import numpy as np

import torv

song = torv.Song.open(sys.argv[1])
part = song.parts[0]
first, last = part.notes[0], part.notes[3]

# A parabola through three points: the voice begins a tone too low, is true in the first note, and falls at the end.
known_ticks = np.array([first.tick, first.end, last.end])
known_semitones = np.array([-2.0, 0.0, -1.0])
fit = np.polynomial.Polynomial.fit(known_ticks, known_semitones, deg=2)
ticks = np.arange(first.tick, last.end, 20)
part.set_curve("pitch", ticks, np.clip(fit(ticks), -24, 24))
part.set_curve("dynamics", ticks, 30 + 90 * np.sin(np.linspace(0, np.pi, len(ticks))))

song.sing(end=song.seconds_at(last.end)).save(sys.argv[2])
print(f"{len(ticks)} points, from {fit(ticks).min():.2f} to {fit(ticks).max():.2f} semitones")
