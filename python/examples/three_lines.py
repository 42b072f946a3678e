"""Sings a song.    three_lines.py SONG WAVE"""
import sys

import torv

song = torv.Song.open(sys.argv[1])
song.sing().save(sys.argv[2])
