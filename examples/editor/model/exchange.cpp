#include "exchange.h"

#include "editor_error.h"

#include <torv/songs/read_song.h>
#include <torv/songs/song_error.h>
#include <torv/songs/synthesis.h>

#include <algorithm>
#include <cmath>
#include <deque>

namespace editor {

namespace songs = torv::songs;

namespace {

constexpr int kFirstVerse = 1;

/// As it would be typed.
std::string LyricOf(const songs::Note& note) {
    std::string lyric;
    for (const songs::Word& word : note.words)
        if (word.verse == kFirstVerse)
            lyric += (lyric.empty() ? "" : " ") + word.text + (word.phonemes.empty() ? "" : "[" + word.phonemes + "]") +
                     (word.hyphenAfter ? "-" : "");
    return lyric;
}

/// A wave that is only needed until the mix is made: a file beside it that nobody commits.
struct SungWave {
    explicit SungWave(const std::string& output) : file(output.c_str()) {
        if (!file.IsOpen())
            throw EditorError(output + ": cannot be written (" + file.Error().message() + "); choose another folder");
        wave.OpenExisting(file.Path());
    }
    torv::ReplacedFile file;
    CWaveFile wave; // goes first, and closes
};

} // namespace

Document ImportSong(const std::string& path, const Library& library, std::vector<std::string>& remarks) {
    const songs::Song song = songs::ReadSongFile(path);
    remarks.insert(remarks.end(), song.remarks.begin(), song.remarks.end());
    Document document;
    document.title = song.title;
    for (const songs::Tempo& tempo : song.tempos)
        if (tempo.tick > 0)
            document.tempos.push_back({tempo.tick, tempo.microsecondsPerQuarter});
        else
            document.tempos.front().microseconds = tempo.microsecondsPerQuarter;
    for (const songs::Meter& meter : song.meters)
        if (meter.tick > 0)
            document.meters.push_back({meter.tick, meter.numerator, meter.denominatorExponent});
        else
            document.meters.front() = {0, meter.numerator, meter.denominatorExponent};
    document.tracks.clear();
    for (const songs::Part& part : song.parts) {
        if (part.IsPercussion())
            continue;
        if (document.tracks.size() == kMostTracks) {
            remarks.push_back("only the first " + std::to_string(kMostTracks) + " parts were taken");
            break;
        }
        Track& track = document.tracks.emplace_back();
        track.name = part.name;
        for (const songs::Note& note : part.notes)
            if (note.tick < kLastTick && note.length <= kLastTick - note.tick && track.notes.size() < kMostNotes)
                track.notes.push_back(
                    {note.tick, note.length, note.key, note.velocity, LyricOf(note), library.UsualIcons()});
        if (track.notes.size() < part.notes.size())
            remarks.push_back(track.name + ": " + std::to_string(part.notes.size() - track.notes.size()) +
                              " notes are more than a track can have, and left out");
    }
    if (document.tracks.empty())
        throw EditorError(path + ": has no notes to sing");
    return document;
}

void ExportMidi(const Document& document, Library& library, const std::string& path) {
    const Score score(document, library);
    CxQuillMidiFile file;
    if (!file.SaveAsFormat1(path.c_str(), &score.Sequence(), nullptr))
        throw EditorError(path + ": cannot be written (" + file.GetErrorMessage() +
                          "); choose another folder, or make room");
}

double ExportWave(const Document& document, Library& library, const std::string& path,
                  const std::function<void(double)>& progress) {
    const Score score(document, library);
    std::vector<std::unique_ptr<CQuillMidiBuffer>> streams;
    std::deque<SungWave> waves;
    std::vector<songs::SingJob> jobs;
    std::vector<tagMixDownTrack> tracks;
    const auto lead = static_cast<DWORD>(uint64_t{score.LeadMilliseconds()} * Score::kRate / 1000);
    for (size_t i = 0; i < score.Parts().size(); ++i) {
        const Track& track = document.tracks[score.Parts()[i].track];
        if (!IsHeard(document, track))
            continue;
        streams.push_back(score.MakeStream(i));
        jobs.push_back({streams.back().get(), &waves.emplace_back(path).wave});
        tracks.push_back({lead, torv::kWholeFile, static_cast<float>(track.volume), static_cast<float>(track.pan),
                          jobs.back().wave});
    }
    if (jobs.empty())
        throw EditorError(path + ": there is nothing to sing; write notes, or switch a track on");
    try {
        songs::SingStreams(jobs, Score::kRate, [&progress](double done, double total) { progress(done / total); });
    } catch (const CFileException&) {
        throw EditorError(path + ": the disk has no room for what is sung; make room");
    }
    // What passes full scale would wrap, so such a mix is made again, as much softer as it was too loud.
    CWaveOut mixer;
    for (double gain = 1;; gain /= 1.001 * mixer.GetPeakLevel()) {
        mixer.SetMasterVolume(gain);
        if (!mixer.AudioMixDown(path.c_str(), tracks.data(), static_cast<int>(tracks.size())))
            throw EditorError(path + ": cannot be written; choose another folder, or make room");
        if (mixer.GetWrappedFrames() == 0 || mixer.GetPeakLevel() <= 1)
            return -CWaveOut::Amplitude2Db(gain);
    }
}

} // namespace editor
