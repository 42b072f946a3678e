"""Makes practice files: for each part a wave in which it is loud and the others are soft.    practice.py SONG FOLDER"""
import pathlib
import sys

import torv

song = torv.Song.open(sys.argv[1])
folder = pathlib.Path(sys.argv[2])
folder.mkdir(exist_ok=True)
end = float(sys.argv[3]) if len(sys.argv) > 3 else None
score = song.score()
sounds = [score.sing(part=index, channels=1, end=end) for index in range(len(score.parts))]
for own, part in enumerate(score.parts):
    name = song.parts[part.song_part].name or f"part {own + 1}"
    torv.mix((sound, 0 if index == own else -15, 0) for index, sound in enumerate(sounds)).save(folder / f"{name}.wav")
    print(f"{name}.wav: sung by {part.voice}")
