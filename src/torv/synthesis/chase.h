#pragma once

#include "torv/abi/rve.h"
#include "torv/encoding/quill_midi_buffer.h"

#include <vector>

/// A play that begins inside a song must first tell the engine what it would have been told before: the latest value of
/// every parameter.
namespace torv {

/// A parameter group is what stands in a block from one opening (controller 99 with the block's number, controller 98
/// with 0) to the next.

/// Bytes of the group at `bytes`, three a message, up to the next opening or the end.
DWORD GroupLength(const BYTE* bytes, DWORD length);

/// The kept groups, each with another key: the block's number, and for voice controls the control that is set.
class ChaseTable {
public:
    /// Forgets all groups; memory is kept.
    void Clear();
    /// Whether a group with this one's key was kept.
    bool Has(const BYTE* group, DWORD length) const;
    /// Keeps a group unless its key was kept already; one that carries a delay gets this one (milliseconds).
    void Keep(const BYTE* group, DWORD length, DWORD delay);
    /// The messages of all groups in the order in which they were kept, with delta 0.
    const std::vector<RVEEvent>& Events() const { return m_events; }

private:
    std::vector<WORD> m_keys;
    std::vector<BYTE> m_group;
    std::vector<RVEEvent> m_events;
};

/// Places the stream so that the next entry read is the first with a time at or after `time`; all are before time 0.
/// 0 when there is none.
int MoveToTime(CQuillMidiBuffer& stream, DWORD time);

/// Whether a block that is sent before `time` takes effect at it or later (milliseconds). Leaves the stream anywhere.
bool IsTellingAhead(CQuillMidiBuffer& stream, DWORD time);

/// How far ahead an engine must be told of what it sings (milliseconds), and whether it is also told of what was set
/// before that.
struct Preroll {
    DWORD milliseconds = 0;
    bool isChased = false;
};

/// Fills the table with the latest groups that stand before the preroll of a play from `position` (milliseconds), to
/// take effect the preroll (14 bits at the most) after they are told; with none when it is not chased, and when the
/// preroll begins before the song. Leaves the stream anywhere.
void ChaseEvents(CQuillMidiBuffer& stream, DWORD position, const Preroll& preroll, ChaseTable& table);

} // namespace torv
