#pragma once

#include "library.h"

#include <torv/songs/score_builder.h>

#include <memory>

namespace editor {

/// The library's score of a document: what is played, saved as engine MIDI and sung into a wave. It is made anew after
/// edits, not changed by them: for a song of a thousand notes that takes milliseconds, and the two cannot drift apart.
///
/// What every host does is done by torv::songs: one voice's line out of overlapping notes, the tracks, the lyrics'
/// phonemes. What only this editor has, icons of single notes and drawn curves, is put in with the library's own
/// cursors and lists.
class Score {
public:
    /// A track with notes.
    struct Part {
        size_t track;                      ///< of the document
        std::string voice;                 ///< who sings
        std::vector<std::string> phonemes; ///< of each of the track's notes; empty for what is not sung
    };

    /// Throws torv::songs::SongError when the document is more than a score can hold.
    Score(const Document& document, Library& library);

    const std::vector<Part>& Parts() const { return m_parts; }
    /// What could not be done as it was asked for: names and phonemes that are not known.
    const std::vector<std::string>& Remarks() const { return m_remarks; }
    CSequence& Sequence() const { return *m_score.song; }
    /// What the voice engine hears of a part.
    std::unique_ptr<CQuillMidiBuffer> MakeStream(size_t part) const;

    /// Samples a second, played and written.
    static constexpr DWORD kRate = 44100;
    /// The engine must know of a note this long before it sounds, in milliseconds; so the score begins with as much
    /// rest, in whole measures, and its times are later than the document's by that.
    static constexpr DWORD kPresend = 2000;
    DWORD LeadMilliseconds() const { return m_score.leadMilliseconds; }
    /// Milliseconds of the score for ticks of the document, and back; what lies in the lead is tick 0.
    DWORD TimeOf(uint32_t tick) const;
    uint32_t TickOf(DWORD milliseconds) const;

private:
    void PutIcons(const Track& track, const Library& library, const torv::songs::ScorePart& sung, Part& part);
    void PutCurves(const Track& track, const torv::songs::ScorePart& sung) const;

    torv::songs::Score m_score;
    std::vector<Part> m_parts;
    std::vector<std::string> m_remarks;
    mutable CArray<tagSequenceTimeMap> m_times; ///< the library's searches take it as theirs
};

} // namespace editor
