#include "sing.h"

#include "bars.h"
#include "databases.h"
#include "messages.h"
#include "progress.h"
#include "render.h"
#include "report.h"
#include "score_builder.h"
#include "voice_line.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

constexpr int kJapanese = 0;
constexpr int kEnglish = 1;
constexpr DWORD kConverterValue = 480; // the converters' own value, one beat

std::vector<unsigned char> ReadFile(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        throw InputError{path + ": is a folder; name a MIDI file"};
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw InputError{path + ": cannot be opened; check the name and whether you may read it"};
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void ConvertLyrics(Score& score, const MessageCatcher& messages) {
    CxSampaTransformer transformer;
    if (!transformer.DoTransform(score.track, kConverterValue))
        throw InputError{"the lyrics cannot be turned into phonemes" +
                         (messages.Last().empty() ? "" : " (" + messages.Last() + ")") +
                         ": put the phoneme converters beside the program, or name their folder in TORV_LIBRARY_PATH"};
}

void Remark(const SingOptions& options, const std::string& text) {
    if (!options.quiet)
        std::fprintf(stderr, "torv: %s\n", text.c_str());
}

void RemarkOnVoice(const SingOptions& options, const VoiceLine& voice) {
    const auto count = [](size_t n, const char* what) { return std::to_string(n) + " " + what + (n == 1 ? "" : "s"); };
    if (!voice.hasLyrics)
        Remark(options, options.input + " has no lyrics: it is sung on a vowel");
    if (voice.cutNotes > 0)
        Remark(options,
               count(voice.cutNotes, "overlapping note") + " cut: one voice sings one note at a time, the highest");
    if (voice.lostSyllables > 0)
        Remark(options, count(voice.lostSyllables, "syllable") + " left out: no note sounds there");
    if (voice.unreadableCharacters)
        Remark(options, "Chinese characters cannot be read aloud and are sung on a vowel: write the lyrics in kana");
}

/// What the user asked for, or what the lyrics look like.
std::optional<int> LanguageAskedFor(const SingOptions& options) {
    if (options.language == "ja")
        return kJapanese;
    return options.language == "en" ? std::optional(kEnglish) : std::nullopt;
}

/// Who sings from where: the voice named first, else the first one of the language, then those named for later bars.
std::vector<ScoreMark> FindVoices(const SingOptions& options, const MidiSong& song, const VoiceLine& line,
                                  const Databases& databases) {
    const std::optional<int> asked = LanguageAskedFor(options);
    const int language = asked.value_or(line.japanese ? kJapanese : kEnglish);
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
            Remark(options, "the lyrics look " + std::string(LanguageName(language)) + ", and " + name + " sings " +
                                LanguageName(sung) + ": see torv voices for others");
    }
    return marks;
}

std::vector<ScoreMark> FindDynamics(const SingOptions& options, const MidiSong& song, const Databases& databases) {
    std::vector<ScoreMark> marks;
    for (const std::string& text : options.dynamics) {
        const BarMark mark = ReadBarMark("--dynamics", text, false);
        marks.push_back({TickOfBar(options.input, song, mark.bar), databases.Find(kDynamics, mark.name)});
    }
    std::stable_sort(marks.begin(), marks.end(),
                     [](const ScoreMark& a, const ScoreMark& b) { return a.tick < b.tick; });
    return marks;
}

std::string Clock(double seconds) {
    char text[32];
    const int minutes = static_cast<int>(seconds / 60);
    std::snprintf(text, sizeof text, "%d:%04.1f", minutes, seconds - 60.0 * minutes);
    return text;
}

} // namespace

void Sing(const SingOptions& options) {
    const auto begin = std::chrono::steady_clock::now();
    std::optional<TextEncoding> encoding;
    if (!options.encoding.empty() && !(encoding = TextEncodingNamed(options.encoding)))
        throw InputError{"there is no encoding \"" + options.encoding + "\": choose utf-8, shift-jis or latin-1"};

    std::vector<unsigned char> bytes = ReadFile(options.input);
    const MidiSong song = ReadMidiSong(options.input, bytes);
    const std::optional<size_t> track = options.track ? std::optional<size_t>(*options.track - 1) : std::nullopt;
    const VoiceLine voice = MakeVoiceLine(options.input, song, track, encoding);
    RemarkOnVoice(options, voice);

    const MessageCatcher messages;
    const Databases databases(messages);
    for (const std::string& message : messages.Take())
        Remark(options, message);
    ScoreOptions scoreOptions;
    scoreOptions.voices = FindVoices(options, song, voice, databases);
    scoreOptions.dynamics = FindDynamics(options, song, databases);
    if (!options.plain)
        scoreOptions.expressions = FindExpressions(databases, options.expressions);
    scoreOptions.transpose = options.transpose;
    Score score = BuildScore(options.input, song, voice, scoreOptions, databases);
    ConvertLyrics(score, messages);

    RenderOptions renderOptions;
    renderOptions.rate = options.rate;
    renderOptions.presend = scoreOptions.presend;
    renderOptions.volume = options.volume;
    renderOptions.stereo = options.pan.has_value();
    renderOptions.pan = options.pan.value_or(0.0);
    RenderResult result;
    {
        Progress progress("singing", options.quiet);
        result = Render(score, options.output, renderOptions,
                        [&progress](double done, double total) { progress.Show(done, total); });
    }
    if (!options.report.empty())
        WriteReport(options.report, score,
                    {options.input, options.output, databases.NameOf(scoreOptions.voices.front().id), options.rate,
                     result.seconds, options.transpose});
    if (result.clippedFrames > 0)
        Remark(options, std::to_string(result.clippedFrames) + " samples are cut at full scale: lower --volume");
    if (!options.quiet) {
        const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        std::printf("%zu notes, %s, %.0f x real time: %s\n", score.notes.size(), Clock(result.seconds).c_str(),
                    elapsed > 0 ? result.seconds / elapsed : 0.0, options.output.c_str());
    }
}
