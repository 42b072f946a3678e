#include "sing.h"

#include "band.h"
#include "describe.h"
#include "errors.h"
#include "file_identity.h"
#include "input.h"
#include "list_parts.h"
#include "messages.h"
#include "output_file.h"
#include "place.h"
#include "progress.h"
#include "render.h"
#include "report.h"

#include <torv/songs/song_error.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>

using namespace torv::songs;

namespace {

namespace fs = std::filesystem;

constexpr double kPracticeBackground = -12; // dB of the other parts

double Gain(double decibels) { return std::pow(10.0, decibels / 20); }

/// What a part is called in a file's name: letters, digits and what else is harmless everywhere.
std::string FileNameOf(const std::string& name) {
    std::string safe;
    for (const char c : name)
        safe += std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos || static_cast<unsigned char>(c) < ' '
                    ? '-'
                    : c;
    return safe;
}

/// What names made from an input begin with.
std::string StemOf(const std::string& input) {
    return IsStandardInput(input) ? "song" : fs::path(input).stem().string();
}

void MakeFolder(const std::string& path) {
    std::error_code error;
    if (fs::exists(path, error) && !fs::is_directory(path, error))
        throw InputError{path + ": is a file, where a folder is needed; name another"};
    fs::create_directories(path, error);
    if (!fs::is_directory(path, error))
        throw InputError{path + ": cannot be made as a folder; check the name and whether you may write there"};
}

/// Before the work that would be lost.
void CheckFoldersOf(const std::vector<std::pair<const char*, std::string>>& outputs) {
    std::error_code error;
    for (const auto& [option, path] : outputs) {
        if (fs::is_directory(path, error))
            throw InputError{path + ": is a folder; name a file in it"};
        if (const fs::path folder = fs::path(path).parent_path(); !folder.empty() && !fs::is_directory(folder, error))
            throw InputError{path + ": cannot be written: there is no folder " + folder.string() + "; make it first"};
    }
}

RenderOptions MakeRenderOptions(const SingOptions& options, const SongScore& song) {
    RenderOptions render;
    render.rate = options.rate;
    render.presend = song.presend;
    const DWORD lead = song.score.leadMilliseconds;
    render.from = options.from.empty() ? 0 : BeginInStream("--from", options.from, song) - lead;
    render.to = options.to.empty() ? 0 : PlaceInStream("--to", options.to, song) - lead;
    render.leadIn = options.leadIn;
    render.stereo = options.pan.has_value() || song.parts.size() > 1 || options.band;
    if (!options.to.empty() && render.to <= render.from)
        throw InputError{"--to " + options.to + ": lies before the beginning; choose a later bar or time"};
    return render;
}

/// Every part at its place; when `front` is one of them, the others are softer.
MixLevels LevelsOf(const SingOptions& options, const SongScore& song, size_t front) {
    MixLevels levels;
    const bool isPractice = front < song.parts.size();
    for (size_t i = 0; i < song.parts.size(); ++i) {
        const SungPart& part = song.parts[i];
        const bool isBehind = isPractice && i != front;
        const double pan = song.parts.size() == 1 ? options.pan.value_or(part.pan) : part.pan;
        levels.parts.push_back({Gain(options.level + part.decibels + (isBehind ? kPracticeBackground : 0)),
                                front == i && song.parts.size() > 1 ? 0.0 : pan});
    }
    levels.band = Gain(options.band.value_or(0) + (isPractice ? kPracticeBackground : 0));
    return levels;
}

WrittenSound MixInto(Rendering& rendering, const std::string& path, const MixLevels& levels,
                     const SingOptions& options) {
    const WrittenSound written = rendering.Mix(path, levels, options.sound);
    if (written.cutFrames > 0)
        Remark(options.song.quiet, Counted(written.cutFrames, "sample") + (written.cutFrames == 1 ? " is" : " are") +
                                       " cut at full scale: lower --level, or ask for --normalize");
    if (written.decibels < 0 && !options.sound.normalize) {
        char text[64];
        std::snprintf(text, sizeof text, "is %.1f dB softer, so that nothing is cut", -written.decibels);
        Remark(options.song.quiet, NameOfOutput(path) + " " + text);
    }
    return written;
}

/// Where all parts are as loud as in the song.
std::string PracticeOfAll(const SingOptions& options) {
    return (fs::path(options.practice) / (StemOf(options.song.input) + "-all." + EndingFor({}, options.sound)))
        .string();
}

/// A file for every part with this one in front, and one of all.
WrittenSound WritePractice(const SingOptions& options, const SongScore& song, Rendering& rendering) {
    const fs::path folder = options.practice;
    const std::string stem = StemOf(options.song.input);
    const std::string ending = "." + EndingFor({}, options.sound);
    const auto nameOf = [&](size_t i) {
        return stem + "-" + std::to_string(i + 1) + "-" + FileNameOf(song.parts[i].name) + ending;
    };
    for (size_t i = 0; i < song.parts.size(); ++i)
        MixInto(rendering, (folder / nameOf(i)).string(), LevelsOf(options, song, i), options);
    return MixInto(rendering, PracticeOfAll(options), LevelsOf(options, song, song.parts.size()), options);
}

void WriteReports(const SingOptions& options, const SongScore& song, const RenderOptions& render,
                  const WrittenSound& result, const std::string& band, Rendering& rendering) {
    Performance performance = DescribePerformance(song.song, song.score, song.plans, *song.databases,
                                                  {.transpose = options.song.transpose,
                                                   .verse = options.song.verse,
                                                   .songStart = rendering.LeadIn() - render.from / 1000.0});
    performance.output = options.output.empty() ? options.practice : options.output;
    performance.rate = options.rate;
    performance.seconds = result.seconds;
    std::vector<KeptSound> sounds = rendering.Keep(LevelsOf(options, song, song.parts.size()), result.decibels);
    for (size_t i = 0; i < sounds.size(); ++i) {
        const bool isSung = i < song.parts.size();
        if (!isSung)
            performance.parts.emplace_back();
        performance.parts[i].name = isSung ? song.parts[i].name : band;
        AddSound(std::move(sounds[i]), performance.parts[i]);
    }
    for (const std::string& report : options.reports)
        WriteReport(report, performance);
}

void TellLeadIn(const SingOptions& options, double seconds) {
    char text[120];
    std::snprintf(text, sizeof text, "begins %.2f s before %s%s", seconds, options.from.empty() ? "the song" : "--from",
                  options.leadIn ? "" : ", with what is sung before the first beat (else --lead-in 0)");
    if (seconds > 0)
        Remark(options.song.quiet, NameOfInput(options.song.input) + ": the wave " + text);
}

/// Whoever does not sing plays; who that is, "Band: Piano, Drums". Empty when nobody does.
std::string AddBand(const SingOptions& options, const SongScore& song, const RenderOptions& render,
                    Rendering& rendering) {
    BandPlan plan;
    for (size_t i = 0; i < song.song.parts.size(); ++i)
        if (std::none_of(song.parts.begin(), song.parts.end(), [i](const SungPart& part) { return part.index == i; }))
            plan.parts.push_back(i);
    if (plan.parts.empty()) {
        Remark(options.song.quiet,
               NameOfInput(options.song.input) + ": every part is sung, so that none is left for the band");
        return {};
    }
    plan.soundFont = options.soundFont;
    plan.transpose = options.song.transpose;
    plan.rate = options.rate;
    plan.start = render.from / 1000.0 - rendering.LeadIn();
    plan.end = render.to / 1000.0;
    rendering.AddBand(*MakeBand(song.song, plan), LevelsOf(options, song, song.parts.size()));
    std::string names;
    for (const size_t i : plan.parts)
        names += (names.empty() ? "Band: " : ", ") + NameOfPart(song.song, i);
    return names;
}

/// "Alto: Susan, 32 notes, 30 syllables"
std::string SummaryOf(const SongScore& song, size_t i) {
    size_t syllables = 0;
    for (const SungNote& note : song.plans[i].line.notes)
        syllables += note.words.size();
    return song.parts[i].name + ": " + song.parts[i].voice + ", " + Counted(song.score.parts[i].notes.size(), "note") +
           ", " + (syllables > 0 ? Counted(syllables, "syllable") : "no words");
}

void SingOne(const SingOptions& options) {
    const auto begin = std::chrono::steady_clock::now();
    const bool isQuiet = options.song.quiet;
    std::vector<std::pair<const char*, std::string>> outputs;
    if (!options.output.empty())
        outputs.emplace_back("--output", options.output);
    for (const std::string& report : options.reports)
        outputs.emplace_back("--report", report);
    RefuseOverwriting(InputsOf(options.song), outputs);
    CheckFoldersOf(outputs);
    if (!options.output.empty())
        EndingFor(options.output, options.sound); // before the work
    SongScore song = MakeSongScore(options.song);
    if (options.list)
        return PrintParts(song);
    const RenderOptions render = MakeRenderOptions(options, song);
    if (!options.practice.empty())
        MakeFolder(options.practice);
    const std::string beside = options.output.empty() ? PracticeOfAll(options) : options.output;
    WrittenSound result;
    std::string band;
    {
        Progress progress("singing", isQuiet);
        Rendering rendering(song.score, beside, render,
                            [&progress](double done, double total) { progress.Show(done, total); });
        TellLeadIn(options, rendering.LeadIn());
        if (options.band)
            band = AddBand(options, song, render, rendering);
        if (!options.practice.empty())
            result = WritePractice(options, song, rendering);
        if (!options.output.empty())
            result = MixInto(rendering, options.output, LevelsOf(options, song, song.parts.size()), options);
        if (!options.reports.empty())
            WriteReports(options, song, render, result, band, rendering);
    }
    if (isQuiet)
        return;
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    std::FILE* const summary = SummaryStream(options.output);
    for (size_t i = 0; i < song.parts.size(); ++i)
        std::fprintf(summary, "%s\n", SummaryOf(song, i).c_str());
    if (!band.empty())
        std::fprintf(summary, "%s\n", band.c_str());
    std::string parts = song.parts.size() > 1 ? std::to_string(song.parts.size()) + " parts, " : std::string();
    if (CountVerses(song.song) > 1)
        parts += "verse " + std::to_string(options.song.verse) + ", ";
    const double speed = elapsed > 0 ? result.seconds / elapsed : 0;
    std::fprintf(summary, "%s%s, %s, %.*f x real time: %s\n", parts.c_str(), Counted(song.CountNotes(), "note").c_str(),
                 ClockText(result.seconds).c_str(), speed < 10 ? 1 : 0, speed,
                 options.output.empty() ? options.practice.c_str() : NameOfOutput(options.output).c_str());
}

/// Another input of the same name gets a number behind it.
std::string OutputOf(const std::string& input, const SingOptions& options, std::vector<std::string>& taken) {
    const fs::path folder = options.output;
    const std::string stem = StemOf(input);
    const std::string ending = "." + EndingFor({}, options.sound);
    std::string path = (folder / (stem + ending)).string();
    const auto numbered = [&](int i) { return (folder / (stem + "-" + std::to_string(i) + ending)).string(); };
    for (int i = 2; std::find(taken.begin(), taken.end(), path) != taken.end(); ++i)
        path = numbered(i);
    taken.push_back(path);
    return path;
}

} // namespace

size_t Sing(const SingOptions& options) {
    if (options.output.empty() && options.practice.empty() && !options.list)
        throw WrongUse{"--output is required: name the sound file to write, or ask for --practice FOLDER or --list"};
    if (options.inputs.size() == 1) {
        SingOptions one = options;
        one.song.input = options.inputs.front();
        SingOne(one);
        return 0;
    }
    if (!options.reports.empty())
        throw WrongUse{"--report tells of one song: sing them one by one"};
    if (!options.output.empty() && !options.list) {
        if (HasSoundEnding(options.output) && !fs::is_directory(options.output))
            throw WrongUse{"--output " + options.output + ": several songs are written into a folder; name one"};
        MakeFolder(options.output);
    }
    size_t failures = 0;
    std::vector<std::string> taken;
    for (const std::string& input : options.inputs) {
        SingOptions one = options;
        one.song.input = input;
        if (!options.output.empty())
            one.output = OutputOf(input, options, taken);
        if (options.list)
            std::printf("%s\n", input.c_str());
        std::string failure;
        try {
            SingOne(one);
        } catch (const InputError& error) {
            failure = error.message;
        } catch (const WrongUse& error) { // of a part or a verse, which another song may have
            failure = error.message;
        } catch (const NameError&) {
            throw;
        } catch (const SongError& error) {
            failure = error.what();
        }
        if (failure.empty())
            continue;
        ++failures;
        std::fprintf(stderr, "torv: %s\n", failure.c_str());
    }
    if (failures > 0)
        std::fprintf(stderr, "torv: %zu of %zu songs could not be sung\n", failures, options.inputs.size());
    return failures;
}
