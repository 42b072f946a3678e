#include "song_score.h"

#include "bars.h"
#include "databases.h"
#include "errors.h"
#include "input_file.h"
#include "messages.h"
#include "voice_line.h"

#include <algorithm>

namespace {

constexpr DWORD kConverterValue = 480; // the converters' own value, one beat

void ConvertLyrics(Score& score, const MessageCatcher& messages) {
    CxSampaTransformer transformer;
    if (!transformer.DoTransform(score.track, kConverterValue))
        throw InputError{"the lyrics cannot be turned into phonemes" +
                         (messages.Last().empty() ? "" : " (" + messages.Last() + ")") +
                         ": put the phoneme converters beside the program, or name their folder in TORV_LIBRARY_PATH"};
}

void RemarkOnVoice(const SongOptions& options, const VoiceLine& voice) {
    const auto count = [](size_t n, const char* what) { return std::to_string(n) + " " + what + (n == 1 ? "" : "s"); };
    if (!voice.hasLyrics)
        Remark(options.quiet, options.input + " has no lyrics: it is sung on a vowel");
    if (voice.cutNotes > 0)
        Remark(options.quiet,
               count(voice.cutNotes, "overlapping note") + " cut: one voice sings one note at a time, the highest");
    if (voice.lostSyllables > 0)
        Remark(options.quiet, count(voice.lostSyllables, "syllable") + " left out: no note sounds there");
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
std::vector<ScoreMark> FindVoices(const SongOptions& options, const MidiSong& song, const VoiceLine& line,
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
        marks.push_back({TickOfBar(options.input, song, mark.bar), databases.Find(kVoices, mark.name)});
    }
    std::stable_sort(marks.begin() + 1, marks.end(),
                     [](const ScoreMark& a, const ScoreMark& b) { return a.tick < b.tick; });
    for (const ScoreMark& mark : marks) {
        const std::string name = databases.NameOf(mark.id);
        const int sung = LanguageOfSinger(mark.id);
        if (asked && sung != *asked)
            throw InputError{name + " sings " + LanguageName(sung) + ", and --language asks for " +
                             LanguageName(*asked) + ": see torv voices for who sings it"};
        if (!asked && line.hasLyrics && sung != language)
            Remark(options.quiet, "the lyrics look " + std::string(LanguageName(language)) + ", and " + name +
                                      " sings " + LanguageName(sung) + ": see torv voices for others");
    }
    return marks;
}

std::vector<ScoreMark> FindDynamics(const SongOptions& options, const MidiSong& song, const Databases& databases) {
    std::vector<ScoreMark> marks;
    for (const std::string& text : options.dynamics) {
        const BarMark mark = ReadBarMark("--dynamics", text, false);
        marks.push_back({TickOfBar(options.input, song, mark.bar), databases.Find(kDynamics, mark.name)});
    }
    std::stable_sort(marks.begin(), marks.end(),
                     [](const ScoreMark& a, const ScoreMark& b) { return a.tick < b.tick; });
    return marks;
}

} // namespace

SongScore MakeSongScore(const SongOptions& options) {
    std::optional<TextEncoding> encoding;
    if (!options.encoding.empty() && !(encoding = TextEncodingNamed(options.encoding)))
        throw InputError{"there is no encoding \"" + options.encoding + "\": choose utf-8, shift-jis or latin-1"};

    std::vector<unsigned char> bytes = ReadInputFile(options.input);
    MidiSong song = ReadMidiSong(options.input, bytes);
    const std::optional<size_t> track = options.track ? std::optional<size_t>(*options.track - 1) : std::nullopt;
    const VoiceLine voice = MakeVoiceLine(options.input, song, track, encoding);
    RemarkOnVoice(options, voice);

    auto messages = std::make_unique<MessageCatcher>();
    auto databases = std::make_unique<Databases>(*messages);
    for (const std::string& message : messages->Take())
        Remark(options.quiet, message);
    ScoreOptions scoreOptions;
    scoreOptions.voices = FindVoices(options, song, voice, *databases);
    scoreOptions.dynamics = FindDynamics(options, song, *databases);
    if (!options.plain)
        scoreOptions.expressions = FindExpressions(*databases, options.expressions);
    scoreOptions.transpose = options.transpose;
    Score score = BuildScore(options.input, song, voice, scoreOptions, *databases);
    ConvertLyrics(score, *messages);
    std::string first = databases->NameOf(scoreOptions.voices.front().id);
    return {std::move(messages), std::move(databases), std::move(score),
            std::move(song),     std::move(first),     scoreOptions.presend};
}
