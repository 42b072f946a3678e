// Scores: made, and what is known of one.
#include "score_object.h"

using namespace torv::c;

namespace {

constexpr int kMostTranspose = 60;
constexpr uint32_t kUsualPresend = 2000; // milliseconds
constexpr int kFirstVerse = 1;

torv_score_options Checked(const torv_score_options* options) {
    torv_score_options taken{};
    if (options)
        taken = Taken(options, "torv_score_options");
    if (taken.transpose < -kMostTranspose || taken.transpose > kMostTranspose)
        throw Failure{TORV_OUT_OF_RANGE, "transpose is -60 to 60 semitones"};
    if (taken.verse < 0)
        throw Failure{TORV_OUT_OF_RANGE, "verses count from 1"};
    if (taken.language < TORV_LANGUAGE_AUTO || taken.language > TORV_LANGUAGE_ENGLISH)
        throw Failure{TORV_OUT_OF_RANGE, "language is a torv_language"};
    taken.verse = taken.verse ? taken.verse : kFirstVerse;
    taken.presend = taken.presend ? taken.presend : kUsualPresend;
    if (!CxQuillMidiEncoder::IsValidPresendTime(taken.presend))
        throw Failure{TORV_OUT_OF_RANGE, "presend is 500 to 5000 milliseconds"};
    return taken;
}

/// The syllables' texts, or their phonemes.
template <class TextOfSyllable>
std::string Join(const torv::songs::PerformedNote& note, TextOfSyllable textOf) {
    std::string text;
    for (const torv::songs::PerformedSyllable& syllable : note.lyric) {
        const std::string own = textOf(syllable);
        text += (text.empty() || own.empty() ? "" : " ") + own;
    }
    return text;
}

std::string Symbols(const torv::songs::PerformedSyllable& syllable) {
    std::string symbols;
    for (const torv::songs::PerformedPhoneme& phoneme : syllable.phonemes)
        symbols += (symbols.empty() ? "" : " ") + phoneme.symbol;
    return symbols;
}

} // namespace

torv_status torv_score_make(torv_song* song, torv_databases* databases, const torv_score_options* options,
                            torv_score** score) {
    return Guard([&] {
        Need(score, "score") = nullptr;
        const Held<SongObject> of(song);
        const Held<DatabasesObject> with(databases);
        GiveOut(score, std::make_unique<ScoreObject>(*of, with->open, Checked(options)));
    });
}

torv_status torv_score_free(torv_score* score) {
    return Guard([&] { TakeObject(score, Kind::Score); });
}

torv_status torv_score_get_info(torv_score* score, torv_score_info* info) {
    return Guard([&] {
        const Held<ScoreObject> held(score);
        NeedRecord(info, "torv_score_info");
        Give(torv_score_info{0, static_cast<uint32_t>(held->parts.size()), static_cast<uint32_t>(held->remarks.size()),
                             held->score.leadMilliseconds, held->Milliseconds()},
             info);
    });
}

torv_status torv_score_get_remark(torv_score* score, size_t index, char* buffer, size_t capacity, size_t* needed) {
    return Guard([&] {
        const Held<ScoreObject> held(score);
        CheckIndex(index, held->remarks.size(), "remark");
        Give(held->remarks[index], {buffer, capacity, needed});
    });
}

torv_status torv_score_get_part(torv_score* score, size_t part, torv_score_part* record, char* buffer, size_t capacity,
                                size_t* needed) {
    return Guard([&] {
        const Held<ScoreObject> held(score);
        NeedRecord(record, "torv_score_part");
        const SungPart& of = held->Part(part);
        Give(of.voiceName, {buffer, capacity, needed});
        Give(torv_score_part{0, of.songPart, static_cast<uint32_t>(held->performance.parts[part].notes.size()),
                             of.voice, of.level, of.pan},
             record);
    });
}

torv_status torv_score_get_note(torv_score* score, size_t part, size_t note, torv_score_note* record) {
    return Guard([&] {
        const Held<ScoreObject> held(score);
        NeedRecord(record, "torv_score_note");
        const torv::songs::PerformedNote& of = held->Note(part, note);
        Give(torv_score_note{0, of.tick, of.length, of.key, of.velocity, of.joined, of.start, of.end}, record);
    });
}

torv_status torv_score_get_syllables(torv_score* score, size_t part, size_t note, char* buffer, size_t capacity,
                                     size_t* needed) {
    return Guard([&] {
        const Held<ScoreObject> held(score);
        Give(Join(held->Note(part, note), [](const auto& syllable) { return syllable.text; }),
             {buffer, capacity, needed});
    });
}

torv_status torv_score_get_phonemes(torv_score* score, size_t part, size_t note, char* buffer, size_t capacity,
                                    size_t* needed) {
    return Guard([&] {
        const Held<ScoreObject> held(score);
        Give(Join(held->Note(part, note), Symbols), {buffer, capacity, needed});
    });
}
