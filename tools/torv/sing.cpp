#include "sing.h"

#include "messages.h"
#include "progress.h"
#include "render.h"
#include "report.h"
#include "score_builder.h"
#include "voice_line.h"
#include "voices.h"

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

/// The phoneme converters, for as long as the song needs them.
class Converters {
public:
    explicit Converters(const MessageCatcher& messages) {
        if (!CTORVApp::GetApp()->LoadG2PALibrary()) {
            CTORVApp::GetApp()->FreeG2PALibrary();
            throw InputError{"the phoneme converters cannot be loaded (" + messages.Last() +
                             "): put them beside the program, or name their folder in TORV_LIBRARY_PATH"};
        }
    }
    ~Converters() { CTORVApp::GetApp()->FreeG2PALibrary(); }
    Converters(const Converters&) = delete;
    Converters& operator=(const Converters&) = delete;
};

void ConvertLyrics(Score& score, int language, const MessageCatcher& messages) {
    const Converters converters(messages);
    CxSampaTransformer transformer;
    if (!transformer.DoTransform(score.track, kConverterValue, language))
        throw InputError{"the lyrics cannot be turned into phonemes" +
                         (messages.Last().empty() ? "" : " (" + messages.Last() + ")") +
                         ": the phoneme converter beside the program may be damaged"};
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

std::string Clock(double seconds) {
    char text[32];
    const int minutes = static_cast<int>(seconds / 60);
    std::snprintf(text, sizeof text, "%d:%04.1f", minutes, seconds - 60.0 * minutes);
    return text;
}

} // namespace

void Sing(const SingOptions& options) {
    const auto begin = std::chrono::steady_clock::now();
    const std::optional<int> program = VoiceProgram(options.voice);
    if (!program)
        throw InputError{"there is no voice \"" + options.voice + "\": choose " + VoiceNames()};
    std::optional<TextEncoding> encoding;
    if (!options.encoding.empty() && !(encoding = TextEncodingNamed(options.encoding)))
        throw InputError{"there is no encoding \"" + options.encoding + "\": choose utf-8, shift-jis or latin-1"};

    std::vector<unsigned char> bytes = ReadFile(options.input);
    const MidiSong song = ReadMidiSong(options.input, bytes);
    const std::optional<size_t> track = options.track ? std::optional<size_t>(*options.track - 1) : std::nullopt;
    const VoiceLine voice = MakeVoiceLine(options.input, song, track, encoding);
    RemarkOnVoice(options, voice);

    ScoreOptions scoreOptions;
    scoreOptions.language =
        options.language == "ja" || (options.language == "auto" && voice.japanese) ? kJapanese : kEnglish;
    scoreOptions.program = *program;
    scoreOptions.transpose = options.transpose;
    scoreOptions.plain = options.plain;
    const MessageCatcher messages;
    Score score = BuildScore(options.input, song, voice, scoreOptions);
    ConvertLyrics(score, scoreOptions.language, messages);

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
                    {options.input, options.output, options.voice, options.rate, result.seconds, options.transpose});
    if (result.clippedFrames > 0)
        Remark(options, std::to_string(result.clippedFrames) + " samples are cut at full scale: lower --volume");
    if (!options.quiet) {
        const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        std::printf("%zu notes, %s, %.0f x real time: %s\n", score.notes.size(), Clock(result.seconds).c_str(),
                    elapsed > 0 ? result.seconds / elapsed : 0.0, options.output.c_str());
    }
}
