#include "score_object.h"

#include "casting.h"
#include "own_icons.h"

#include <torv/songs/casting.h>
#include <torv/songs/engine_stream.h>
#include <torv/songs/fermatas.h>
#include <torv/songs/word_joining.h>

#include <algorithm>
#include <new>

namespace torv::c {

ScoreObject::ScoreObject(const SongObject& asked, std::shared_ptr<OpenDatabases> databases,
                         const torv_score_options& options)
    : open(std::move(databases)), presend(options.presend) {
    const std::lock_guard lock(open->mutex);
    open->messages.Take(); // what comes from here on is about this score
    SongObject song = asked;
    if (!options.plain)
        songs::HoldFermatas(song.song);
    if (options.language != TORV_LANGUAGE_JAPANESE)
        songs::JoinWords(song.song, songs::KnowEnglishWord);
    Cast cast = CastSong(song, options, *open->databases);
    remarks = std::move(cast.remarks);

    songs::ScoreOptions building;
    building.transpose = options.transpose;
    building.presend = presend;
    score = songs::BuildScore(song.song, cast.plans, building, *open->databases);
    try {
        songs::AddPhonemes(score, open->messages);
    } catch (const std::runtime_error& error) {
        throw Failure{TORV_NO_COMPANION, error.what()};
    }
    for (size_t i = 0; i < cast.plans.size(); ++i) {
        const songs::PartPlan& plan = cast.plans[i];
        const size_t index = cast.parts[i];
        const PartPlanning& planning = song.planning[index];
        if (!options.plain)
            AddOwnIcons(score, score.parts[i], plan, song.song.parts[index], planning, *open->databases);
        AddCurves(score, score.parts[i], planning);

        SungPart& part = parts.emplace_back();
        part.songPart = static_cast<uint32_t>(index);
        part.voice = plan.voices.front().id;
        part.voiceName = open->databases->NameOf(part.voice);
        part.level = planning.level;
        part.pan = planning.pan == TORV_PAN_STAGE ? songs::StagePan(i, cast.plans.size()) : planning.pan;
        part.stream = songs::MakeEngineStream(score, score.parts[i], presend);
    }
    performance = songs::DescribePerformance(song.song, score, cast.plans, *open->databases, {options.transpose});
}

/// Its icons ask the databases, which others may be using.
ScoreObject::~ScoreObject() {
    const std::lock_guard lock(open->mutex);
    score = {};
}

SungPart& ScoreObject::Part(size_t part) {
    CheckIndex(part, parts.size(), "part that is sung");
    return parts[part];
}

const songs::PerformedNote& ScoreObject::Note(size_t part, size_t note) const {
    CheckIndex(part, performance.parts.size(), "part that is sung");
    CheckIndex(note, performance.parts[part].notes.size(), "note");
    return performance.parts[part].notes[note];
}

uint32_t ScoreObject::Milliseconds() const {
    uint32_t end = score.leadMilliseconds;
    for (const SungPart& part : parts)
        end = std::max<uint32_t>(end, part.stream->GetLastTime());
    return end - score.leadMilliseconds;
}

std::unique_ptr<CQuillMidiBuffer> CopyStream(CQuillMidiBuffer& stream) {
    const auto orBadAlloc = [](int done) {
        if (!done)
            throw std::bad_alloc();
    };
    auto copy = std::make_unique<CQuillMidiBuffer>();
    orBadAlloc(copy->Create(stream.GetMode(), stream.GetPresendTime(), static_cast<int>(stream.GetEventInterval())));
    std::vector<BYTE> bytes;
    stream.SeekToBegin();
    for (tagQuillMidiEntry entry{}; stream.ReadNextEntry(&entry);) {
        bytes.resize(entry.length);
        const DWORD length = stream.ReadEvent(entry.offset, bytes.data(), entry.length);
        orBadAlloc(copy->AddEvent(entry.position, bytes.data(), length, entry.time));
    }
    copy->SetLast(stream.GetLastTick(), stream.GetLastTime());
    return copy;
}

} // namespace torv::c
