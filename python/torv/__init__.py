"""Singing: songs from files or made here, sung by the voices of the databases, as arrays of samples.

    import torv
    sound = torv.Song.open("hymn.mid").sing()
    sound.save("hymn.wav")
"""
from ._library import Busy, Cancelled, NotFound, TorvError, version
from .databases import Databases, Icon, default_databases
from .player import Player, devices
from .score import Score, ScoreNote, ScorePart
from .song import CURVES, Mark, Note, Part, Song, Word
from .sound import Saved, Sound, mix

__all__ = ["Busy", "CURVES", "Cancelled", "Databases", "Icon", "Mark", "Note", "NotFound", "Part", "Player", "Saved", "Score",
           "ScoreNote", "ScorePart", "Song", "Sound", "TorvError", "Word", "default_databases", "devices", "mix", "version"]
__version__ = version()
