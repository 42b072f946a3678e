#include "song_score.h"

#include "errors.h"
#include "input.h"
#include "messages.h"
#include "part_choice.h"
#include "place.h"

#include <torv/songs/casting.h>
#include <torv/songs/fermatas.h>
#include <torv/songs/given_words.h>
#include <torv/songs/hand_phonemes.h>
#include <torv/songs/nearest_names.h>
#include <torv/songs/read_song.h>
#include <torv/songs/word_joining.h>

#include <algorithm>
#include <istream>

using namespace torv::songs;

namespace {

Song ReadInput(const SongOptions& options) {
    if (!IsStandardInput(options.input))
        return ReadSongFile(options.input, {options.encoding});
    return ReadSong(*OpenSequentialInput(options.input), NameOfInput(options.input), {options.encoding});
}

/// The parts that are sung: those named, else the track, else every part with words, else the first.
std::vector<PartChoice> ChooseParts(const SongOptions& options, const Song& song) {
    if (song.parts.empty())
        throw InputError{options.input + ": there are no notes in it to sing"};
    std::vector<PartChoice> choices;
    for (const std::string& text : options.parts)
        choices.push_back(ReadPartChoice(text, song));
    const auto isWanted = [&](const Part& part) {
        return options.track ? part.track == static_cast<int>(*options.track) : HasWords(part, options.verse);
    };
    for (size_t i = 0; options.parts.empty() && i < song.parts.size(); ++i)
        if (isWanted(song.parts[i]))
            choices.push_back({i, {}, 0, {}});
    if (choices.empty() && options.track)
        throw WrongUse{options.input + ": there is no track " + std::to_string(*options.track) +
                       " with notes; it has the parts " + ListParts(song)};
    if (const int verses = CountVerses(song); choices.empty() && verses > 0)
        throw WrongUse{options.input + ": there is no verse " + std::to_string(options.verse) + "; the last one is " +
                       std::to_string(verses)};
    if (choices.empty())
        choices.push_back({0, {}, 0, {}});
    return choices;
}

void RemarkOnPart(const SongOptions& options, const std::string& name, const VoiceLine& line,
                  const std::string& declaredLanguage) {
    if (!line.hasWords)
        Remark(options.quiet, name + " has no lyrics: it is sung on a vowel");
    if (line.refrainWords > 0)
        Remark(options.quiet, name + ": " + Counted(line.refrainWords, "syllable") +
                                  " of a refrain are sung from the words of another verse");
    if (line.cutNotes > 0)
        Remark(options.quiet, name + ": " + Counted(line.cutNotes, "overlapping note") +
                                  " cut: one voice sings one note at a time, the highest");
    if (line.unreadableCharacters)
        Remark(options.quiet,
               name + ": Chinese characters cannot be read aloud and are sung on a vowel: write the lyrics in kana");
    const std::string language = line.japanese ? std::string() : GuessOtherLanguage(WholeWords(line));
    if (!language.empty())
        Remark(options.quiet, name + ": the words look " + language + ", and are sung as if they were English");
    else if (line.hasWords && !line.japanese && !declaredLanguage.empty() && !declaredLanguage.starts_with("en"))
        Remark(options.quiet, name + ": the words are said to be in \"" + declaredLanguage +
                                  "\", and are sung as if they were English");
}

/// What the user asked for, or what the lyrics look like.
std::optional<int> LanguageAskedFor(const SongOptions& options) {
    if (options.language == "ja")
        return torv::kJapanese;
    return options.language == "en" ? std::optional(torv::kEnglish) : std::nullopt;
}

/// What --at names becomes a voice or a dynamic level from there on.
void SortPlacedNames(SongOptions& options, const Song& song, const Databases& databases) {
    const auto namesOf = [&](const IconKind& kind) {
        std::vector<std::string> names;
        for (const Databases::Entry& entry : databases.List(kind))
            names.push_back(entry.name);
        return names;
    };
    std::vector<std::string> voices = namesOf(kVoices);
    const std::vector<std::string> dynamics = namesOf(kDynamics);
    for (const std::string& text : options.at) {
        const PlacedName mark = ReadPlacedName("--at", text, true);
        TickOfPlace("--at", mark.place, song);
        if (FindName(voices, mark.name))
            options.voicesAt.push_back(text);
        else if (FindName(dynamics, mark.name))
            options.dynamics.push_back(text);
        else {
            voices.insert(voices.end(), dynamics.begin(), dynamics.end());
            throw WrongUse{"there is no voice or dynamic level \"" + mark.name +
                           "\": " + SuggestNames(voices, mark.name)};
        }
    }
}

/// Who sings from where: the voice named for the part, for all, or the one that suits it, then those for later bars.
std::vector<ScoreMark> FindVoices(const SongOptions& options, const Song& song, const PartChoice& choice,
                                  const VoiceLine& line, Databases& databases) {
    const std::optional<int> asked = LanguageAskedFor(options);
    const int language = asked.value_or(line.japanese ? torv::kJapanese : torv::kEnglish);
    const std::string& name = choice.voice.empty() ? options.voice : choice.voice;
    std::vector<ScoreMark> marks;
    if (name.empty())
        marks.push_back({0, CastVoice(song.parts[choice.index], language, databases)});
    else
        marks.push_back({0, databases.Find(kVoices, name)});
    for (const std::string& text : options.voicesAt) {
        const PlacedName mark = ReadPlacedName("--voice-at", text, true);
        marks.push_back({TickOfPlace("--voice-at", mark.place, song), databases.Find(kVoices, mark.name)});
    }
    std::stable_sort(marks.begin() + 1, marks.end(),
                     [](const ScoreMark& a, const ScoreMark& b) { return a.tick < b.tick; });
    for (const ScoreMark& mark : marks) {
        const std::string singer = databases.NameOf(mark.id);
        const int sung = LanguageOfSinger(mark.id);
        if (asked && sung != *asked)
            throw InputError{singer + " sings " + LanguageName(sung) + ", and --language asks for " +
                             LanguageName(*asked) + ": see torv voices for who sings it"};
        if (!asked && line.hasWords && sung != language)
            Remark(options.quiet, "the lyrics look " + std::string(LanguageName(language)) + ", and " + singer +
                                      " sings " + LanguageName(sung) + ": see torv voices for others");
    }
    return marks;
}

/// Those that the user names.
std::vector<ScoreMark> FindDynamics(const SongOptions& options, const Song& song, const Databases& databases) {
    std::vector<ScoreMark> marks;
    for (const std::string& text : options.dynamics) {
        const PlacedName mark = ReadPlacedName("--dynamics", text, false);
        const uint32_t tick = mark.place.empty() ? 0 : TickOfPlace("--dynamics", mark.place, song);
        marks.push_back({tick, databases.Find(kDynamics, mark.name)});
    }
    std::stable_sort(marks.begin(), marks.end(),
                     [](const ScoreMark& a, const ScoreMark& b) { return a.tick < b.tick; });
    return marks;
}

} // namespace

std::vector<std::string> InputsOf(const SongOptions& options) {
    std::vector<std::string> inputs{options.input};
    if (!options.words.empty())
        inputs.push_back(options.words);
    return inputs;
}

Song ReadSongAskedFor(const SongOptions& options) {
    Song song = ReadInput(options);
    if (!options.words.empty()) {
        std::vector<size_t> chosen;
        for (const std::string& text : options.parts)
            chosen.push_back(ReadPartChoice(text, song).index);
        SetWords(song, ReadWordsFile(options.words, {options.encoding}), options.words, chosen);
    }
    return song;
}

SongScore MakeSongScore(const SongOptions& options) { return MakeSongScore(options, ReadSongAskedFor(options)); }

SongScore MakeSongScore(const SongOptions& asked, Song song) {
    SongOptions options = asked;
    options.input = NameOfInput(asked.input);
    for (const std::string& remark : song.remarks)
        Remark(options.quiet, options.input + ": " + remark);
    if (!options.plain)
        HoldFermatas(song);
    const std::vector<PartChoice> choices = ChooseParts(options, song);
    const bool isAlone = choices.size() == 1;

    auto messages = std::make_unique<MessageCatcher>();
    auto databases = std::make_unique<Databases>(*messages);
    for (const std::string& message : messages->Take())
        Remark(options.quiet, message);
    if (const size_t words = options.language == "ja" ? 0 : JoinWords(song, KnowEnglishWord)) {
        song.remarks.push_back("does not say where words end: " + std::to_string(words) +
                               (words == 1 ? " word is" : " words are") + " put together as English has them");
        Remark(options.quiet, options.input + ": " + song.remarks.back());
    }
    SortPlacedNames(options, song, *databases);
    std::vector<PartPlan> plans;
    std::vector<SungPart> parts;
    for (const PartChoice& choice : choices) {
        const Part& part = song.parts[choice.index];
        PartPlan& plan = plans.emplace_back();
        plan.name = part.name;
        plan.line = MakeVoiceLine(part, options.verse, options.plain);
        RemarkOnPart(options, isAlone || part.name.empty() ? options.input : part.name, plan.line, song.language);
        plan.voices = FindVoices(options, song, choice, plan.line, *databases);
        for (const std::string& remark :
             DropUnknownPhonemes(plan.line, LanguageOfSinger(plan.voices.front().id), song)) {
            if (std::find(song.remarks.begin(), song.remarks.end(), remark) != song.remarks.end())
                continue; // parts share their words
            Remark(options.quiet, options.input + ": " + remark);
            song.remarks.push_back(remark);
        }
        plan.breathes = options.breaths;
        plan.dynamics = FindDynamics(options, song, *databases);
        if (!options.plain) {
            plan.expressions = FindExpressions(*databases, options.expressions);
            plan.curves = MakeCurves(part, plan.line, *databases);
            if (!options.dynamics.empty())
                plan.curves.dynamics.clear();
        }
        parts.push_back({choice.index, NameOfPart(song, choice.index), databases->NameOf(plan.voices.front().id),
                         choice.decibels, choice.pan.value_or(StagePan(parts.size(), choices.size()))});
    }
    ScoreOptions scoreOptions;
    scoreOptions.transpose = options.transpose;
    Score score = BuildScore(song, plans, scoreOptions, *databases);
    AddPhonemes(score, *messages);
    return {std::move(messages), std::move(databases), std::move(score),    std::move(song),
            std::move(parts),    std::move(plans),     scoreOptions.presend};
}

size_t SongScore::CountNotes() const {
    size_t notes = 0;
    for (const ScorePart& part : score.parts)
        notes += part.notes.size();
    return notes;
}
