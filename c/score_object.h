#pragma once

#include "databases_object.h"
#include "records.h"
#include "song_object.h"

#include <torv/songs/performance.h>
#include <torv/songs/score_builder.h>

namespace torv::c {

/// A part of a score with what the engine is told of it.
struct SungPart {
    uint32_t songPart = 0; ///< its index
    uint32_t voice = 0;    ///< the id of who begins
    std::string voiceName;
    double level = 0; ///< dB
    double pan = 0;
    std::unique_ptr<CQuillMidiBuffer> stream;
};

class ScoreObject final : public Object {
public:
    static constexpr Kind kKind = Kind::Score;

    /// Makes the score of a song; throws Failure and SongError.
    ScoreObject(const SongObject& song, std::shared_ptr<OpenDatabases> open, const torv_score_options& options);
    ~ScoreObject() override;

    /// Throws Failure for what is not there.
    SungPart& Part(size_t part);
    const songs::PerformedNote& Note(size_t part, size_t note) const;
    uint32_t Milliseconds() const; ///< from the song's start

    const std::shared_ptr<OpenDatabases> open;
    uint32_t presend = 0;
    songs::Score score;
    std::vector<SungPart> parts; ///< as the score has them
    songs::Performance performance;
    std::vector<std::string> remarks;
};

/// A stream of its own with the same entries: who reads one moves it.
std::unique_ptr<CQuillMidiBuffer> CopyStream(CQuillMidiBuffer& stream);

} // namespace torv::c
