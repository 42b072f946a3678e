#pragma once

#include "torv/songs/databases.h"
#include "torv/songs/expressions.h"

namespace torv::songs {

/// The expressions as a track's icons. Notes share those that are the same for all.
class NoteIcons {
public:
    /// Makes the icons and puts them into the builder's track, which owns them. The databases must be open as long as
    /// this lives.
    NoteIcons(const Databases& databases, const Expressions& expressions, CCsqBuilder& builder);

    /// Handles in the track; 0 for none.
    /// @{
    DWORD Attack() const { return m_attack; }
    DWORD Release() const { return m_release; }
    DWORD Transition() const { return m_transition; }
    DWORD Slide() const { return m_slide; }
    /// @}
    /// A vibrato that sets in late in a note of these ticks and milliseconds, with the ticks from the note's start to
    /// its own in `offset`; 0 for a note that is too short for it.
    DWORD Vibrato(DWORD ticks, DWORD milliseconds, DWORD& offset);

private:
    DWORD Attach(DWORD id);

    const Databases& m_databases;
    CCsqBuilder& m_builder;
    DWORD m_vibrato;
    DWORD m_attack;
    DWORD m_release;
    DWORD m_transition;
    DWORD m_slide;
};

} // namespace torv::songs
