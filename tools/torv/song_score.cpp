#include "song_score.h"

#include "bars.h"
#include "errors.h"
#include "messages.h"

#include <torv/songs/read_song.h>

#include <algorithm>

using namespace torv::songs;

namespace {

std::string Describe(const Song& song) {
    std::string text;
    for (const Part& part : song.parts)
        text += (text.empty() ? "" : ", ") + std::to_string(part.track) +
                (part.name.empty() ? "" : " \"" + part.name + "\"") + " (" + std::to_string(part.notes.size()) +
                " notes)";
    return text;
}

/// The track that was asked for, else the first part with words, else the first.
const Part& ChoosePart(const SongOptions& options, const Song& song) {
    if (song.parts.empty())
        throw InputError{options.input + ": there are no notes in it to sing"};
    auto chosen = song.parts.begin();
    if (options.track) {
        chosen = std::find_if(chosen, song.parts.end(),
                              [&](const Part& part) { return part.track == static_cast<int>(*options.track); });
        if (chosen == song.parts.end())
            throw InputError{options.input + ": there is no track " + std::to_string(*options.track) +
                             " with notes; it has " + Describe(song)};
        return *chosen;
    }
    chosen = std::find_if(chosen, song.parts.end(), [](const Part& part) { return HasWords(part, 1); });
    return chosen != song.parts.end() ? *chosen : song.parts.front();
}

void RemarkOnVoice(const SongOptions& options, const VoiceLine& voice) {
    const auto count = [](size_t n, const char* what) { return std::to_string(n) + " " + what + (n == 1 ? "" : "s"); };
    if (!voice.hasWords)
        Remark(options.quiet, options.input + " has no lyrics: it is sung on a vowel");
    if (voice.cutNotes > 0)
        Remark(options.quiet,
               count(voice.cutNotes, "overlapping note") + " cut: one voice sings one note at a time, the highest");
    if (voice.unreadableCharacters)
        Remark(options.quiet,
               "Chinese characters cannot be read aloud and are sung on a vowel: write the lyrics in kana");
}

/// What the user asked for, or what the lyrics look like.
std::optional<int> LanguageAskedFor(const SongOptions& options) {
    if (options.language == "ja")
        return torv::kJapanese;
    return options.language == "en" ? std::optional(torv::kEnglish) : std::nullopt;
}

/// Who sings from where: the voice named first, else the first one of the language, then those named for later bars.
std::vector<ScoreMark> FindVoices(const SongOptions& options, const Song& song, const VoiceLine& line,
                                  const Databases& databases) {
    const std::optional<int> asked = LanguageAskedFor(options);
    const int language = asked.value_or(line.japanese ? torv::kJapanese : torv::kEnglish);
    std::vector<ScoreMark> marks;
    if (options.voice.empty())
        marks.push_back({0, torv::MakeIconID(torv::kStatusSinger, torv::kSingerArticulation,
                                             databases.Manager().GetDefaultSingerVariation(language))});
    else
        marks.push_back({0, databases.Find(kVoices, options.voice)});
    for (const std::string& text : options.voicesAt) {
        const BarMark mark = ReadBarMark("--voice-at", text, true);
        marks.push_back({TickOfMeasure(song, mark.bar), databases.Find(kVoices, mark.name)});
    }
    std::stable_sort(marks.begin() + 1, marks.end(),
                     [](const ScoreMark& a, const ScoreMark& b) { return a.tick < b.tick; });
    for (const ScoreMark& mark : marks) {
        const std::string name = databases.NameOf(mark.id);
        const int sung = LanguageOfSinger(mark.id);
        if (asked && sung != *asked)
            throw InputError{name + " sings " + LanguageName(sung) + ", and --language asks for " +
                             LanguageName(*asked) + ": see torv voices for who sings it"};
        if (!asked && line.hasWords && sung != language)
            Remark(options.quiet, "the lyrics look " + std::string(LanguageName(language)) + ", and " + name +
                                      " sings " + LanguageName(sung) + ": see torv voices for others");
    }
    return marks;
}

std::vector<ScoreMark> FindDynamics(const SongOptions& options, const Song& song, const Databases& databases) {
    std::vector<ScoreMark> marks;
    for (const std::string& text : options.dynamics) {
        const BarMark mark = ReadBarMark("--dynamics", text, false);
        marks.push_back({TickOfMeasure(song, mark.bar), databases.Find(kDynamics, mark.name)});
    }
    std::stable_sort(marks.begin(), marks.end(),
                     [](const ScoreMark& a, const ScoreMark& b) { return a.tick < b.tick; });
    return marks;
}

} // namespace

SongScore MakeSongScore(const SongOptions& options) {
    Song song = ReadSongFile(options.input, {options.encoding});
    for (const std::string& remark : song.remarks)
        Remark(options.quiet, options.input + ": " + remark);
    const Part& part = ChoosePart(options, song);
    PartPlan plan;
    plan.name = part.name;
    plan.line = MakeVoiceLine(part);
    RemarkOnVoice(options, plan.line);

    auto messages = std::make_unique<MessageCatcher>();
    auto databases = std::make_unique<Databases>(*messages);
    for (const std::string& message : messages->Take())
        Remark(options.quiet, message);
    plan.voices = FindVoices(options, song, plan.line, *databases);
    plan.dynamics = FindDynamics(options, song, *databases);
    if (!options.plain)
        plan.expressions = FindExpressions(*databases, options.expressions);
    ScoreOptions scoreOptions;
    scoreOptions.transpose = options.transpose;
    Score score = BuildScore(song, {plan}, scoreOptions, *databases);
    AddPhonemes(score, *messages);
    std::string first = databases->NameOf(plan.voices.front().id);
    return {std::move(messages), std::move(databases), std::move(score),
            std::move(song),     std::move(first),     scoreOptions.presend};
}
