"""Who sings or speaks. Each gives for every phrase its samples at 16 kHz."""
import pathlib
import re
import shutil
import struct
import subprocess
import sys
from dataclasses import dataclass

import sound
from listener import RATE

sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "examples"))
from make_examples import TICKS, meta, track  # noqa: E402

TEMPO = 500000
LEAD = 3.0  # seconds before the first phrase
PAUSE = 0.8  # between two
BEFORE, AFTER = 0.35, 0.35  # what a phrase is cut out with
HOMES = {"soprano": 60, "mezzo": 57, "alto": 55, "child": 62, "tenor": 48, "baritone": 45, "bass": 41}
UNKNOWN = 55


@dataclass(frozen=True)
class Voice:
    """One of the engine's, as `torv voices` tells it."""
    name: str
    language: str
    kind: str

    @property
    def home(self):
        kinds = [home for kind, home in HOMES.items() if kind in self.kind.lower()]
        return kinds[0] if kinds else UNKNOWN


def voices(torv):
    rows = subprocess.run([torv, "voices"], check=True, capture_output=True, text=True).stdout.splitlines()[1:]
    return [Voice(*(row.split(None, 2) + [""])[:3]) for row in rows if row.strip()]


def song(phrases, home):
    """A MIDI file of all phrases, and where each begins and ends in seconds."""
    events = []
    places = []
    now = LEAD
    for phrase in phrases:
        begin = now
        for note in phrase.notes:
            start, end = (int(round(t * 1e6 * TICKS / TEMPO)) for t in (now, now + note.seconds))
            events += [(start, meta(0x05, note.lyric.encode())), (start, bytes([0x90, home + note.key, 96])),
                       (end, bytes([0x80, home + note.key, 0]))]
            now += note.seconds
        places.append((begin, now))
        now += PAUSE
    order = sorted(events, key=lambda event: (event[0], event[1][0] != 0x80))
    conductor = [(0, meta(0x51, struct.pack(">I", TEMPO)[1:]))]
    return b"MThd" + struct.pack(">IHHH", 6, 1, 2, TICKS) + track(conductor) + track(order), places


class Sung:
    """A voice of the engine, through the command that users have."""

    def __init__(self, torv, voice, folder, transpose=0, rate=48000, options=()):
        self.torv, self.voice, self.folder, self.rate = torv, voice, folder, rate
        self.home = voice.home + transpose
        self.options = list(options)
        self.name = voice.name

    def whole(self, phrases, name):
        """The whole song at its rate, and the phrases' places."""
        data, places = song(phrases, self.home)
        midi, wave = self.folder / f"{self.name}-{name}.mid", self.folder / f"{self.name}-{name}.wav"
        midi.write_bytes(data)
        subprocess.run([self.torv, "sing", midi, "-o", wave, "--voice", self.voice.name, "--rate", str(self.rate),
                        "--language", "ja" if self.voice.language == "Japanese" else "en", "--quiet", *self.options],
                       check=True)
        return sound.read_wave(wave)[0], places

    def perform(self, phrases, name):
        samples, places = self.whole(phrases, name)
        cuts = [samples[int((begin - BEFORE) * self.rate):int((end + AFTER) * self.rate)] for begin, end in places]
        return [sound.resample(cut, self.rate, RATE) for cut in cuts]


class Flite:
    """Speech as it comes."""

    def __init__(self, voice, folder):
        self.voice, self.folder, self.name = voice, folder, f"flite {voice}, spoken"

    def speak(self, phrase, path):
        """Speaks into a file; gives the sounds with their ends in seconds."""
        told = subprocess.run(["flite", "-voice", self.voice, "-psdur", "-t", phrase.spoken, "-o", path], check=True,
                              capture_output=True, text=True).stdout
        return [(name, float(end)) for name, end in re.findall(r"(\S+):([\d.]+)", told)]

    def perform(self, phrases, name):
        results = []
        for phrase in phrases:
            path = self.folder / f"flite-{self.voice}-{name}.wav"
            self.speak(phrase, path)
            results.append(sound.resample(*sound.read_wave(path), RATE))
        return results


class MovedFlite(Flite):
    """Speech whose vowels are stretched to the notes and whose pitch is theirs, by praat's overlap-add."""
    VOWELS = set("aa ae ah ao aw ax axr ay eh er ey ih ix iy ow oy uh uw".split())

    def __init__(self, voice, folder, home):
        super().__init__(voice, folder)
        self.home, self.name = home, f"flite {voice}, moved to the notes"

    def plan(self, phrase, sounds):
        """Stretches as (from, to, factor) and keys as (when, hertz), in the speech's own time."""
        begins = [0.0, *(end for _, end in sounds)]
        nuclei = [i for i, (name, _) in enumerate(sounds) if name in self.VOWELS][:len(phrase.notes)]
        last = max(i for i, (name, _) in enumerate(sounds) if name != "pau") if sounds else 0
        stretches, keys = [], []
        for j, i in enumerate(nuclei):
            note = phrase.notes[j]
            begin, end = begins[i], sounds[i][1]
            after = begins[nuclei[j + 1]] if j + 1 < len(nuclei) else sounds[max(last, i)][1]
            squeeze = min(1.0, 0.6 * note.seconds / max(after - end, 1e-3))
            stretches += [(begin, end, (note.seconds - (after - end) * squeeze) / (end - begin)), (end, after, squeeze)]
            keys.append((begin, 440 * 2 ** ((self.home + note.key - 69) / 12)))
        if nuclei: # what stands before the first note and after the last keeps its time
            stretches = [(0, begins[nuclei[0]], 1), *stretches, (stretches[-1][1], begins[-1], 1)]
        return [(a, b, factor) for a, b, factor in stretches if b > a + 1e-3], keys

    def perform(self, phrases, name):
        script = []
        paths = []
        for number, phrase in enumerate(phrases):
            source, target = (self.folder / f"{self.voice}-{name}-{number}-{side}.wav" for side in ("in", "out"))
            sounds = self.speak(phrase, source)
            stretches, keys = self.plan(phrase, sounds)
            paths.append(target)
            end = sounds[-1][1] if sounds else 1
            script += [f'Read from file: "{source}"', 'sound = selected ("Sound")',
                       "manipulation = To Manipulation: 0.01, 60, 400",
                       f'pitch = Create PitchTier: "p", 0, {end}']
            for i, (when, hertz) in enumerate(keys):
                until = keys[i + 1][0] if i + 1 < len(keys) else end
                script += [f"Add point: {when if i else 0}, {hertz}", f"Add point: {until - 0.002}, {hertz}"]
            script += ["plusObject: manipulation", "Replace pitch tier",
                       f'duration = Create DurationTier: "d", 0, {end}']
            for begin, stop, factor in stretches:
                script += [f"Add point: {begin + 0.0005}, {factor}", f"Add point: {stop - 0.0005}, {factor}"]
            script += ["plusObject: manipulation", "Replace duration tier", "selectObject: manipulation",
                       "result = Get resynthesis (overlap-add)", f'Save as WAV file: "{target}"',
                       "removeObject: sound, manipulation, pitch, duration, result"]
        path = self.folder / f"{self.voice}-{name}.praat"
        path.write_text("\n".join(script) + "\n")
        subprocess.run(["praat", "--run", path], check=True, capture_output=True)
        return [sound.resample(*sound.read_wave(path), RATE) for path in paths]


class Espeak:
    def __init__(self, language, folder):
        self.language, self.folder, self.name = language, folder, f"espeak-ng {language}, spoken"

    def perform(self, phrases, name):
        results = []
        for phrase in phrases:
            path = self.folder / f"espeak-{self.language}-{name}.wav"
            subprocess.run(["espeak-ng", "-v", self.language, "-w", path, phrase.spoken], check=True)
            results.append(sound.resample(*sound.read_wave(path), RATE))
        return results


def peers(folder, language):
    """Those that are installed; what is missing is told."""
    def has(program):
        if not shutil.which(program):
            print(f"SKIPPED: the rows that need {program}, which is not installed (apt-get install {program})")
        return shutil.which(program)

    if has("espeak-ng"):
        yield Espeak("en-us" if language == "English" else "ja", folder)
    if language == "English" and has("flite"):
        yield from (Flite(voice, folder) for voice in ("rms", "slt"))
        if has("praat"):
            yield from (MovedFlite(voice, folder, HOMES[kind]) for voice, kind in (("rms", "tenor"), ("slt", "alto")))
