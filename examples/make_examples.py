#!/usr/bin/env python3
"""Writes the example songs, standard MIDI files with lyrics, beside this script.

The tunes are traditional; the hymn's is Old Hundredth (1551), its words are Thomas Ken's (1674). A song is a list of lines "KEY BEATS LYRIC": '-' as the key is a rest, a lyric that ends in
'-' goes on with the next syllable, and a note without a lyric goes on with the vowel before.
"""
import pathlib
import struct

TICKS = 480
STEPS = {"C": 0, "D": 2, "E": 4, "F": 5, "G": 7, "A": 9, "B": 11}

TWINKLE = """
- 4
C4 1 Twin- ; C4 1 kle ; G4 1 twin- ; G4 1 kle
A4 1 lit- ; A4 1 tle ; G4 2 star,
F4 1 how ; F4 1 I ; E4 1 won- ; E4 1 der
D4 1 what ; D4 1 you ; C4 2 are.
G4 1 Up ; G4 1 a- ; F4 1 bove ; F4 1 the
E4 1 world ; E4 1 so ; D4 2 high,
G4 1 like ; G4 1 a ; F4 1 dia- ; F4 1 mond
E4 1 in ; E4 1 the ; D4 2 sky.
C4 1 Twin- ; C4 1 kle ; G4 1 twin- ; G4 1 kle
A4 1 lit- ; A4 1 tle ; G4 2 star,
F4 1 how ; F4 1 I ; E4 1 won- ; E4 1 der
D4 1 what ; D4 1 you ; C4 2 are.
"""

SAKURA = """
- 4
A4 1 さ ; A4 1 く ; B4 2 ら
A4 1 さ ; A4 1 く ; B4 2 ら
A4 1 や ; B4 1 よ ; C5 1 い ; B4 1 の
A4 1 そ ; B4 .5 ら ; A4 .5 ; F4 2 わ
E4 1 み ; C4 1 わ ; E4 1 た ; F4 1 す
E4 1 か ; E4 .5 ぎ ; C4 .5 ; B3 2 り
A4 1 か ; B4 1 す ; C5 1 み ; B4 1 か
A4 1 く ; B4 .5 も ; A4 .5 ; F4 2 か
E4 1 に ; C4 1 お ; E4 1 い ; F4 1 ぞ
E4 1 い ; E4 .5 ず ; C4 .5 ; B3 2 る
A4 1 い ; A4 1 ざ ; B4 2 や
A4 1 い ; A4 1 ざ ; B4 2 や
E4 1 み ; F4 1 に ; B4 .5 ゆ ; A4 .5 ; F4 1 か
E4 4 ん
"""

HYMN_WORDS = """
Praise God, from whom all bles- sings flow;
Praise Him, all crea- tures here be- low;
Praise Him a- bove, ye heav'n- ly host;
Praise Fa- ther, Son, and Ho- ly Ghost.
"""
HYMN = {
    "Soprano": "G4 G4 F#4 E4 D4 G4 A4 B4  B4 B4 B4 A4 G4 C5 B4 A4  G4 A4 B4 A4 G4 E4 F#4 G4  D5 B4 G4 A4 C5 B4 A4 G4",
    "Alto": "D4 D4 D4 B3 A3 D4 D4 D4  D4 D4 D4 D4 D4 E4 D4 D4  D4 D4 D4 D4 D4 C4 D4 D4  D4 D4 E4 D4 E4 D4 D4 D4",
    "Tenor": "B3 B3 A3 G3 F#3 G3 F#3 G3  G3 G3 G3 F#3 B3 G3 G3 F#3  B3 F#3 G3 F#3 G3 G3 A3 B3  G3 G3 B3 F#3 G3 G3 F#3 B3",
    "Bass": "G3 G3 D3 E3 D3 B2 D3 G2  G3 G3 G3 D3 G3 C3 G3 D3  G3 D3 G3 D3 B2 C3 D3 G3  B2 G3 E3 D3 C3 G3 D3 G2",
}


def hymn_part(keys):
    """A voice of the hymn: quarters, with the last of each line held."""
    lines = []
    for i, words in enumerate(HYMN_WORDS.strip().splitlines()):
        notes = keys.split()[8 * i:8 * i + 8]
        lines.append(" ; ".join(f"{key} {1 if n < 7 else 5} {word}"
                                for n, (key, word) in enumerate(zip(notes, words.split()))))
    return "\n".join(lines)


def variable_length(value):
    groups = [value & 0x7F]
    while value := value >> 7:
        groups.append(value & 0x7F | 0x80)
    return bytes(reversed(groups))


def meta(kind, data):
    return bytes([0xFF, kind]) + variable_length(len(data)) + data


def track(events):
    """A chunk of (tick, bytes) events, which are in time order but for equal ticks."""
    data = b""
    last = 0
    for tick, event in events:
        data += variable_length(tick - last) + event
        last = tick
    data += b"\x00" + meta(0x2F, b"")
    return b"MTrk" + struct.pack(">I", len(data)) + data


def voice(name, channel, notation):
    events = [(0, meta(0x03, name.encode()))]
    tick = 0
    for line in notation.strip().splitlines():
        for note in filter(str.strip, line.split(";")):
            key, beats, *lyric = note.split()
            length = int(float(beats) * TICKS)
            if key != "-":
                number = 12 * (int(key[-1]) + 1) + STEPS[key[0]] + key.count("#")
                if lyric:
                    events.append((tick, meta(0x05, lyric[0].encode())))
                events.append((tick, bytes([0x90 | channel, number, 96])))
                events.append((tick + length, bytes([0x80 | channel, number, 0])))
            tick += length
    return track(events)


def song(title, tempo, parts):
    conductor = [(0, meta(0x03, title.encode())), (0, meta(0x51, struct.pack(">I", 60_000_000 // tempo)[1:])),
                 (0, meta(0x58, bytes([4, 2, 24, 8])))]
    voices = [voice(name, channel, notation) for channel, (name, notation) in enumerate(parts.items())]
    return b"MThd" + struct.pack(">IHHH", 6, 1, 1 + len(voices), TICKS) + track(conductor) + b"".join(voices)


if __name__ == "__main__":
    here = pathlib.Path(__file__).parent
    (here / "twinkle.mid").write_bytes(song("Twinkle, twinkle, little star", 100, {"Voice": TWINKLE}))
    (here / "sakura.mid").write_bytes(song("Sakura", 88, {"Voice": SAKURA}))
    hymn = {name: hymn_part(keys) for name, keys in HYMN.items()}
    (here / "hymn.mid").write_bytes(song("Old Hundredth", 80, hymn))
