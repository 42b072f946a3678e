#pragma once

#include <torv/torv.h>

/// What notes get by themselves. The caller owns the icons.
CIconObject* MakeSinger(int language, int program);
CIconObject* MakeAttack();
/// A status 3 icon: the encoder sends that as a release.
CIconObject* MakeRelease();
/// A vibrato that sets in late in a note and grows, with the ticks from the note's start to its own in `offset`; null
/// for a note of less than about half a second.
CIconObject* MakeVibrato(DWORD ticks, DWORD milliseconds, DWORD& offset);
