#!/usr/bin/env python3
"""Writes the example songs, standard MIDI files with lyrics and the hymn as MusicXML too, beside this script.

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


def measures_of(notation, beats):
    """The notes of each measure as (key, beats, syllable, tied from, tied to): a note over a bar line is tied."""
    measures = [[]]
    at = 0
    for line in notation.strip().splitlines():
        for note in filter(str.strip, line.split(";")):
            key, length, *lyric = note.split()
            left = int(length)
            while left:
                if at == beats:
                    measures.append([])
                    at = 0
                taken = min(left, beats - at)
                measures[-1].append((key, taken, lyric and lyric[0], left < int(length), left > taken))
                lyric = None
                left -= taken
                at += taken
    return measures


def note_element(key, beats, syllable, is_tied, goes_on, begins_word):
    types = {1: "<type>quarter</type>", 2: "<type>half</type>", 3: "<type>half</type><dot/>", 4: "<type>whole</type>"}
    ties = "<tie type=\"stop\"/>" * is_tied + "<tie type=\"start\"/>" * goes_on
    notations = "<tied type=\"stop\"/>" * is_tied + "<tied type=\"start\"/>" * goes_on
    alter = "<alter>1</alter>" if "#" in key else ""
    text = (f"<note><pitch><step>{key[0]}</step>{alter}<octave>{key[-1]}</octave></pitch>"
            f"<duration>{beats}</duration>{ties}<voice>1</voice>{types[beats]}")
    if notations:
        text += f"<notations>{notations}</notations>"
    if syllable:
        goes_on = syllable.endswith("-")
        syllabic = ("begin" if goes_on else "single") if begins_word else ("middle" if goes_on else "end")
        text += f"<lyric number=\"1\"><syllabic>{syllabic}</syllabic><text>{syllable.rstrip('-')}</text></lyric>"
    return text + "</note>"


def score(title, composer, tempo, fifths, parts, clefs):
    """The same song as a score in MusicXML, four quarters a measure."""
    lines = ["<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
             "<!DOCTYPE score-partwise PUBLIC \"-//Recordare//DTD MusicXML 3.1 Partwise//EN\" "
             "\"http://www.musicxml.org/dtds/partwise.dtd\">",
             "<score-partwise version=\"3.1\">", f"<work><work-title>{title}</work-title></work>",
             f"<identification><creator type=\"composer\">{composer}</creator></identification>", "<part-list>"]
    lines += [f"<score-part id=\"P{i}\"><part-name>{name}</part-name></score-part>" for i, name in enumerate(parts, 1)]
    lines.append("</part-list>")
    for part, (name, notation) in enumerate(parts.items(), 1):
        lines.append(f"<part id=\"P{part}\">")
        begins_word = True
        measures = measures_of(notation, 4)
        for number, notes in enumerate(measures, 1):
            lines.append(f"<measure number=\"{number}\">")
            if number == 1:
                lines.append(f"<attributes><divisions>1</divisions><key><fifths>{fifths}</fifths></key><time><beats>4</beats>"
                             f"<beat-type>4</beat-type></time>{clefs[name]}</attributes>")
                lines.append("<direction placement=\"above\"><direction-type><metronome><beat-unit>quarter</beat-unit>"
                             f"<per-minute>{tempo}</per-minute></metronome></direction-type><sound tempo=\"{tempo}\"/>"
                             "</direction>")
            for key, beats, syllable, is_tied, goes_on in notes:
                lines.append(note_element(key, beats, syllable, is_tied, goes_on, begins_word))
                if syllable:
                    begins_word = not syllable.endswith("-")
            if number == len(measures):
                lines.append("<barline location=\"right\"><bar-style>light-heavy</bar-style></barline>")
            lines.append("</measure>")
        lines.append("</part>")
    return "\n".join([*lines, "</score-partwise>", ""])


if __name__ == "__main__":
    here = pathlib.Path(__file__).parent
    (here / "twinkle.mid").write_bytes(song("Twinkle, twinkle, little star", 100, {"Voice": TWINKLE}))
    (here / "sakura.mid").write_bytes(song("Sakura", 88, {"Voice": SAKURA}))
    hymn = {name: hymn_part(keys) for name, keys in HYMN.items()}
    (here / "hymn.mid").write_bytes(song("Old Hundredth", 80, hymn))
    treble = "<clef><sign>G</sign><line>2</line></clef>"
    clefs = {"Soprano": treble, "Alto": treble, "Bass": "<clef><sign>F</sign><line>4</line></clef>",
             "Tenor": treble.replace("</clef>", "<clef-octave-change>-1</clef-octave-change></clef>")}
    (here / "hymn.musicxml").write_text(score("Old Hundredth", "Genevan Psalter, 1551", 80, 1, hymn, clefs))
