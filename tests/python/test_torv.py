"""The Python package: what it adds to the C interface, which has its own tests."""
import gc
import pathlib
import time
import xml.dom.minidom

import numpy as np
import pytest

import torv

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"


def make_song():
    song = torv.Song()
    part = song.add_part("Soprano")
    for index, word in enumerate(torv.Word.split("a-men now")):
        part.add_note(torv.Note(480 * index, 480, 60 + index, words=[word]))
    return song


def test_three_lines(tmp_path):
    sound = torv.Song.open(EXAMPLES / "twinkle.mid").sing(end=4)
    assert sound.samples.shape == (4 * 44100, 1)
    assert 0.01 < np.abs(sound.samples).max() < 1
    sound.save(tmp_path / "歌.wav")
    assert np.array_equal(torv.Sound.open(tmp_path / "歌.wav").samples, sound.samples)


def test_notes_come_back_as_they_went():
    part = make_song().parts[0]
    notes = part.notes
    notes[1].words[0].phonemes = "m aI n"
    notes[1].staccato = True
    notes.append(torv.Note(240, 120, 72, velocity=99, accent=True))
    part.notes = notes
    assert part.notes == sorted(notes, key=lambda note: note.tick)


def test_words_are_put_under_the_notes():
    song = make_song()
    part = song.parts[0]
    part.set_words("glo-ri-a")
    assert [note.syllables for note in song.score().parts[0].notes] == ["glo", "ri", "a"]
    part.set_words("oh _")
    assert [len(note.words) for note in part.notes] == [1, 0, 0]


def test_curve_is_sung():
    song = make_song()
    song.parts[0].set_curve("pitch", np.arange(0, 1440, 10), np.full(144, 3.0))
    assert song.parts[0].curve("pitch").shape == (144, 2)
    score = song.score()
    _, pitch, _ = score.measure(score.sing())
    assert abs(np.nanmedian(pitch) - 64) < 1  # keys 60 to 62, three semitones higher


def test_breaths_are_heard_in_pauses_and_are_no_notes():
    song = make_song()
    song.parts[0].add_note(torv.Note(3840, 960, 72, words=[torv.Word("la")]))  # 4 s, after a pause of 2.5
    song.parts[0].set_icon("vibrato", "Wide Vibrato", 3)
    silent, breathing = song.sing(), song.sing(breaths=True)

    def level(sound, start, end):
        return np.abs(sound.samples[int(start * sound.rate):int(end * sound.rate)]).max()

    assert level(silent, 2, 3.9) == 0
    assert 0 < level(breathing, 3, 3.9) < level(breathing, 4.2, 4.8)
    assert level(breathing, 2, 3) == 0
    score = song.score(breaths=True)
    assert [note.key for note in score.parts[0].notes] == [60, 61, 62, 72]
    _, pitch, _ = score.measure(breathing)
    _, steady, _ = song.score().measure(silent)
    assert np.nanmax(pitch[-60:]) == pytest.approx(np.nanmax(steady[-60:]), abs=0.1)  # the icon is the note's


def test_errors_are_told_and_typed():
    song = make_song()
    song.parts[0].set_voice("Thmas")
    with pytest.raises(torv.NotFound, match="Thomas"):
        song.sing()
    with pytest.raises(OSError):
        torv.Song.open("no such file.mid")
    with pytest.raises(ValueError):
        song.parts[0].add_note(torv.Note(0, 480, 128))
    with pytest.raises(IndexError):
        song.parts[0].remove_note(-1)
    for start in (1e9, 60, -1):
        with pytest.raises(ValueError, match="over after"):
            make_song().sing(start=start)
    torv.default_databases()
    with pytest.raises(torv.Busy):
        torv.Databases()
    closed = make_song()
    closed.close()
    with pytest.raises(torv.TorvError, match="null"):
        closed.parts


def test_what_a_callback_raises_comes_through():
    score = make_song().score()
    with pytest.raises(torv.Cancelled):
        score.sing(progress=lambda done: False)
    with pytest.raises(ZeroDivisionError):
        score.blocks(lambda block: 1 / 0)


def test_blocks_and_events_outlive_their_calls():
    score = make_song().score()
    blocks = []
    score.blocks(blocks.append, channels=2)
    gc.collect()
    assert np.array_equal(np.concatenate(blocks), score.sing(channels=2).samples)
    times, messages = zip(*score.encode())
    assert all(len(message) % 3 == 0 for message in messages)
    assert list(times) == sorted(times)
    assert times[0] < 0  # in the lead


def test_player_reads_what_is_sung():
    score = make_song().score()
    player = torv.Player(score, pull=True)
    while player.state.sung < player.state.length:
        time.sleep(0.001)
    player.start()
    player.seek(0.5)
    assert np.allclose(player.read(4410), score.sing(channels=2, start=0.5, end=0.6).samples, atol=1e-5)
    assert player.state.position == 0.6


def test_mix():
    one = torv.Sound(np.full(4, 0.5), 8000)
    mixed = torv.mix([(one, 0, -1), one])
    assert mixed.samples[0].tolist() == [1.5, 0.5]
    assert "audio/wav" in one._repr_html_()


def test_piano_roll_is_a_picture():
    song = torv.Song.open(EXAMPLES / "hymn.mid")
    picture = xml.dom.minidom.parseString(song._repr_svg_())
    notes = [shape for shape in picture.getElementsByTagName("rect") if shape.getAttribute("rx")]
    assert len(notes) == sum(len(part) for part in song.parts)
