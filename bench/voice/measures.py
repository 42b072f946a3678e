"""What is measured in the sound itself: joins, what lies between the harmonics, loudness, pitch."""
import shutil
import subprocess

import numpy as np

import engine
import singers
import sound
from phrases import Note, Phrase

PROGRAMS = 0, 1, 2, 3, 96, 97, 99
RATES = 44100, 48000, 96000
TONES = 48, 69, 84
KEYS = (-5, 0, 5, 10, 15)  # around the voice's home
STEADY = 0.35, 0.85  # of a second of note


def steps(samples, joins, rate):
    return max(sound.click(samples, rate, join) for join in joins)


def pitch_cents(samples, rate, hertz, folder, name):
    """The mean pitch of a steady tone by praat's autocorrelation, in cents from where it should be."""
    if not shutil.which("praat"):
        return None
    path, script = folder / f"{name}.wav", folder / f"{name}.praat"
    sound.write_wave(path, samples, rate)
    script.write_text(f'Read from file: "{path}"\n'
                      f"noprogress To Pitch (ac): 0, {hertz * 0.8}, 15, \"yes\", 0.03, 0.3, 0.01, 0.35, 0.14, {hertz * 1.25}\n"
                      'mean = Get mean: 0, 0, "semitones re 440 Hz"\nwriteInfoLine: mean\n')
    told = subprocess.run(["praat", "--run", script], check=True, capture_output=True, text=True).stdout
    semitones = told.split()[0]
    return None if semitones.startswith("--") else 100 * (float(semitones) - 12 * np.log2(hertz / 440))


def of_voice(torv, voice, folder):
    singer = singers.Sung(torv, voice, folder, rate=44100, options=["--plain"])
    vowel = "ら" if voice.language == "Japanese" else "la"
    scale = [Phrase("", (Note(key, 1.0, vowel),), "") for key in KEYS]
    samples, places = singer.whole(scale, "scale")
    cuts = [samples[int((begin + STEADY[0]) * 44100):int((begin + STEADY[1]) * 44100)] for begin, _ in places]
    levels = [sound.rms_db(cut) for cut in cuts]
    hertz = [440 * 2 ** ((singer.home + key - 69) / 12) for key in KEYS]
    floors = [sound.noise(cut, 44100, f0) for cut, f0 in zip(cuts, hertz)]
    cents = [pitch_cents(cut, 44100, f0, folder, f"{voice.name}-{i}") for i, (cut, f0) in enumerate(zip(cuts, hertz))]
    legato = [Phrase("", tuple(Note(key, 0.4, vowel if i == 0 else "-") for i, key in enumerate((0, 4, 7, 4, 0, 9, 0))), "")]
    samples, places = singer.whole(legato, "legato")
    joins = [places[0][0] + 0.4 * i for i in range(1, 7)]
    return {"level": float(np.mean(levels)), "range": max(levels) - min(levels), "floor": min(floors),
            "click": steps(samples, joins, 44100),
            "cents": None if None in cents else max(map(abs, cents))}


def foreign_lines(torv, program):
    """The strongest line that is no harmonic, of low and high tones without breath and unsteadiness at each rate: dB
    below the tone."""
    return [min(sound.strongest_line(engine.tone(torv, program, key, rate, 1.5)[rate // 2:rate * 5 // 4], rate,
                                     440 * 2 ** ((key - 69) / 12)) for key in TONES) for rate in RATES]


def show(voices, programs):
    print(f"\n{'':12}{'level, dB':>12}{'over range':>12}{'step at joins':>15}{'noise below':>13}{'cents off':>11}")
    for name, row in voices.items():
        cents = "SKIPPED" if row["cents"] is None else f"{row['cents']:.1f}"
        print(f"{name:12}{row['level']:12.1f}{row['range']:12.1f}{row['click']:15.2f}{row['floor']:13.0f}{cents:>11}")
    levels = [row["level"] for row in voices.values()]
    print(f"loudness across the voices: within {max(levels) - min(levels):.1f} dB")
    if any(row["cents"] is None for row in voices.values()):
        print("SKIPPED: pitch, which needs praat (apt-get install praat)")
    print("strongest line that is no harmonic, dB below the tone, at " + ", ".join(map(str, RATES)) + " Hz:")
    seen = []
    for program, lines in programs.items():
        if lines not in seen:  # numbers beyond the voices that there are fold back
            print(f"  program {program}: " + ", ".join(f"{line:.0f}" for line in lines))
        seen.append(lines)
