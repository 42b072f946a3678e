#pragma once

#include "torv/audio/shared_value.h"
#include "torv/platform/platform.h"

namespace torv {

/// As a region's end, in milliseconds: the song's, wherever that is.
constexpr DWORD kOpenRegionEnd = 0x7FFFFFFF;

/// Milliseconds between two looks of a thread that waits for another's progress.
constexpr DWORD kLookInterval = 1;

/// Where a play is to go and how far its two threads are: all that the host, the synthesis thread and the wave-output
/// thread know of each other. Positions are milliseconds from the song's start. Any thread may ask; what changes
/// several values at once is called while the others are stopped. Nothing here waits.
class PlayState {
public:
    // Where to, as the host says. A position at or past the region's end, and any position of an empty region, becomes
    // the region's start.

    /// As it is given, without that rule. Equal ends are no region.
    void Place(DWORD regionStart, DWORD regionEnd, DWORD position, int loop);
    void ChangeRegion(DWORD start, DWORD end, DWORD position);
    void ChangeLoop(int loop, DWORD position);
    /// Unlike the other changes, a position before an empty region stays where it was asked for.
    void Seek(DWORD position);
    void EndLoop() { m_isLooping = 0; }
    void SetSongEnd(DWORD position) { m_songEnd = position; }

    DWORD Position() const { return m_position; }
    DWORD RegionStart() const { return m_regionStart; }
    /// kOpenRegionEnd without a region.
    DWORD RegionEnd() const;
    bool IsLooping() const { return m_isLooping; }
    DWORD SongEnd() const { return m_songEnd; }
    bool EndsWithSong() const { return RegionEnd() == kOpenRegionEnd || RegionEnd() <= m_songEnd; }
    /// Where the first pass is heard from: the position, but the region's start when a loop begins behind its end.
    DWORD FirstPassBegin() const;

    // Stopping and failing.

    void AskToStop() { m_isStopAsked = 1; }
    void Fail();
    bool IsStopAsked() const { return m_isStopAsked; }
    bool HasFailed() const { return m_hasFailed; }

    // The synthesis. Whoever seeks asks it to begin anew; until it has, the rings are its alone.

    void BeginSynthesis();
    void AskForRestart() { m_restartsAsked = m_restartsAsked + 1; }
    DWORD RestartsAsked() const { return m_restartsAsked; }
    bool IsRestartDue() const { return m_restartsAsked != m_restartsDone; }
    /// It has begun anew as often as it was asked by then.
    void RestartsDone(DWORD asked);
    /// All is made; a restart is still obeyed.
    void FinishSynthesis() { m_isSynthesizing = 0; }
    /// Its thread is over.
    void EndSynthesis();
    bool IsSynthesizing() const { return m_isSynthesizing; }
    /// Nothing more comes into the rings.
    bool HasSynthesisStopped() const { return m_isSynthesisOver || (!m_isSynthesizing && !IsRestartDue()); }
    /// Whoever waits goes on to see what is asked.
    bool IsInterrupted() const { return IsStopAsked() || IsRestartDue(); }

    // The output.

    void SetPlaying(bool isPlaying) { m_isPlaying = isPlaying; }
    void SetOutputStarted(bool hasStarted) { m_hasOutputStarted = hasStarted; }
    bool IsPlaying() const { return m_isPlaying; }
    bool HasOutputStarted() const { return m_hasOutputStarted; }

private:
    void PlaceInRegion(DWORD position);

    Shared<DWORD> m_position = 0;
    Shared<DWORD> m_regionStart = 0;
    Shared<DWORD> m_regionEnd = 0;
    Shared<int> m_isLooping = 0;
    Shared<DWORD> m_songEnd = 0xFFFFFFFF;
    Shared<int> m_isStopAsked = 1;
    Shared<int> m_hasFailed = 0;
    Shared<int> m_isSynthesizing = 0;
    Shared<int> m_isSynthesisOver = 1;
    Shared<DWORD> m_restartsAsked = 0;
    Shared<DWORD> m_restartsDone = 0;
    Shared<int> m_isPlaying = 0;
    Shared<int> m_hasOutputStarted = 0;
};

} // namespace torv
