"""Transposes a song and gives it other words.    reword.py SONG WAVE"""
import sys

import torv

song = torv.Song.open(sys.argv[1])
part = song.parts[0]
part.transpose(-3)
part.set_words("Float-ing on the qui-et sea")
sound = song.sing(end=song.seconds_at(part.notes[6].end))
saved = sound.save(sys.argv[2])
print(f"{part.name or 'the first part'}: {' '.join(word.text for note in part.notes[:7] for word in note.words)}, "
      f"{sound.seconds:.1f} s")
