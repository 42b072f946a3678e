#include "casting.h"

#include <torv/songs/casting.h>
#include <torv/songs/curves.h>
#include <torv/songs/hand_phonemes.h>
#include <torv/songs/song_error.h>

#include <algorithm>

namespace torv::c {

namespace {

std::vector<size_t> ChooseParts(const SongObject& song, int verse) {
    std::vector<size_t> chosen;
    size_t first = song.planning.size();
    for (size_t i = 0; i < song.planning.size(); ++i) {
        const songs::Part& part = song.song.parts[i];
        const int32_t sing = song.planning[i].sing;
        if (part.notes.empty() || sing == TORV_SING_NEVER)
            continue;
        first = std::min(first, i);
        if (sing == TORV_SING_ALWAYS || songs::HasWords(part, verse))
            chosen.push_back(i);
    }
    if (chosen.empty() && first < song.planning.size()) {
        const int verses = songs::CountVerses(song.song);
        if (verses > 0 && verse > verses)
            throw Failure{TORV_OUT_OF_RANGE,
                          "there is no verse " + std::to_string(verse) + "; the last one is " + std::to_string(verses)};
        chosen.push_back(first);
    }
    if (chosen.empty())
        throw Failure{TORV_BAD_SONG, "there are no notes in it to sing"};
    return chosen;
}

class Caster {
public:
    Caster(const SongObject& song, const torv_score_options& options, songs::Databases& databases)
        : m_song(song), m_options(options), m_databases(databases) {}

    Cast Make() {
        m_cast.parts = ChooseParts(m_song, m_options.verse);
        for (const size_t index : m_cast.parts)
            m_cast.plans.push_back(Plan(m_song.song.parts[index], m_song.planning[index], index));
        return std::move(m_cast);
    }

private:
    songs::PartPlan Plan(const songs::Part& part, const PartPlanning& planning, size_t index) {
        songs::PartPlan plan;
        plan.name = part.name;
        plan.breathes = m_options.breaths != 0;
        m_name = songs::NameOfPart(m_song.song, index);
        plan.line = songs::MakeVoiceLine(part, m_options.verse, m_options.plain != 0);
        RemarkOn(plan.line);
        plan.voices = Voices(part, planning, plan.line);
        for (const std::string& remark :
             songs::DropUnknownPhonemes(plan.line, songs::LanguageOfSinger(plan.voices.front().id), m_song.song))
            Remark(remark);
        if (!m_options.plain) {
            plan.curves = songs::MakeCurves(part, plan.line, m_databases);
            if (planning.hasOwnDynamics) { // which are icons, in place of the file's marks as they are heard
                plan.curves.dynamics.clear();
                plan.dynamics = Dynamics(part);
            }
            plan.expressions = Expressions(planning.icons);
        }
        return plan;
    }

    void Remark(const std::string& text) { m_cast.remarks.push_back(m_name + ": " + text); }

    void RemarkOn(const songs::VoiceLine& line) {
        if (!line.hasWords)
            Remark("has no lyrics: it is sung on a vowel");
        if (line.cutNotes > 0)
            Remark(std::to_string(line.cutNotes) + " overlapping notes were cut: one voice sings one note at a time");
        if (line.unreadableCharacters)
            Remark("Chinese characters cannot be read aloud and are sung on a vowel: write the lyrics in kana");
        const std::string language = line.japanese ? std::string() : songs::GuessOtherLanguage(songs::WholeWords(line));
        if (!language.empty())
            Remark("the words look " + language + ", and are sung as if they were English");
    }

    std::vector<songs::ScoreMark> Voices(const songs::Part& part, const PartPlanning& planning,
                                         const songs::VoiceLine& line) {
        const bool isAsked = m_options.language != TORV_LANGUAGE_AUTO;
        const bool isJapanese = isAsked ? m_options.language == TORV_LANGUAGE_JAPANESE : line.japanese;
        const int language = isJapanese ? torv::kJapanese : torv::kEnglish;
        std::vector<songs::ScoreMark> marks;
        if (planning.voices.empty() || planning.voices.front().tick > 0)
            marks.push_back({0, songs::CastVoice(part, language, m_databases)});
        for (const VoiceMark& voice : planning.voices)
            marks.push_back({voice.tick, FindIcon(m_databases, songs::kVoices, voice.name)});
        for (const songs::ScoreMark& mark : marks) {
            const int sung = songs::LanguageOfSinger(mark.id);
            const std::string what = m_databases.NameOf(mark.id) + " sings " + songs::LanguageName(sung);
            if (isAsked && sung != language)
                throw Failure{TORV_BAD_SONG, m_name + ": " + what + ", and " + songs::LanguageName(language) +
                                                 " is asked for: choose another voice"};
            if (line.hasWords && sung != language)
                Remark("the lyrics look " + std::string(songs::LanguageName(language)) + ", and " + what);
        }
        return marks;
    }

    /// A file may have levels that no database knows.
    std::vector<songs::ScoreMark> Dynamics(const songs::Part& part) {
        const std::vector<songs::Databases::Entry> known = m_databases.List(songs::kDynamics);
        std::vector<songs::ScoreMark> marks;
        for (const songs::Dynamic& dynamic : part.dynamics) {
            if (dynamic.kind != songs::Dynamic::Kind::Level)
                continue;
            const auto found = std::find_if(known.begin(), known.end(),
                                            [&](const auto& entry) { return entry.name == dynamic.level; });
            if (found != known.end())
                marks.push_back({dynamic.tick, found->id});
            else
                Remark("the databases have no dynamics \"" + dynamic.level + "\"");
        }
        return marks;
    }

    songs::Expressions Expressions(const IconNames& names) const {
        try {
            return songs::FindExpressions(m_databases, {names[TORV_ICON_ATTACK], names[TORV_ICON_RELEASE],
                                                        names[TORV_ICON_TRANSITION], names[TORV_ICON_VIBRATO]});
        } catch (const songs::SongError& error) {
            throw Failure{TORV_NOT_FOUND, error.what()};
        }
    }

    const SongObject& m_song;
    const torv_score_options& m_options;
    songs::Databases& m_databases;
    Cast m_cast;
    std::string m_name; ///< of the part at hand
};

} // namespace

Cast CastSong(const SongObject& song, const torv_score_options& options, songs::Databases& databases) {
    return Caster(song, options, databases).Make();
}

DWORD FindIcon(const songs::Databases& databases, const songs::IconKind& kind, const std::string& name) {
    try {
        return databases.Find(kind, name);
    } catch (const songs::SongError& error) {
        throw Failure{TORV_NOT_FOUND, error.what()};
    }
}

} // namespace torv::c
