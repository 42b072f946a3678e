#pragma once

#include "torv/platform/platform.h"

namespace torv {

/// Posted to the window of a playing sequence: wParam is one of the codes, lParam the number that it comes with.
constexpr UINT kMidiPlayMessage = 1234;
constexpr WPARAM kMidiPlayEnd = 1;           ///< the play time in ms
constexpr WPARAM kMidiPlayPosition = 2;      ///< the play time in ms
constexpr WPARAM kMidiPlayTempo = 3;         ///< microseconds per quarter note
constexpr WPARAM kMidiPlayTimeSignature = 4; ///< the meta event's four bytes, the first one lowest

/// Bytes of a system-exclusive message that go to the device at a time.
constexpr DWORD kLongestMidiPiece = 65536;

} // namespace torv
