#include "view/editor.h"

#include "model/editor_error.h"
#include "model/project_file.h"

#include <torv/songs/song_error.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <filesystem>

namespace editor {

namespace {

bool IsSongFile(const std::string& file) {
    std::string ending = std::filesystem::path(file).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
    constexpr const char* kSongEndings[] = {".mid", ".midi", ".kar", ".rmi", ".xml", ".musicxml", ".mxl", ".ust"};
    return std::find(std::begin(kSongEndings), std::end(kSongEndings), ending) != std::end(kSongEndings);
}

} // namespace

Editor::Editor() { grid.Update(Song()); }

/// What cannot be done is one line in the status bar; the song is as it was.
template <class Work>
void Editor::Try(Work work) {
    try {
        work();
    } catch (const EditorError& error) {
        status = error.what();
    } catch (const torv::songs::SongError& error) {
        status = error.what();
    }
}

void Editor::Select(size_t note) {
    selection.clear();
    if (note < CurrentTrack().notes.size())
        selection.push_back(note);
}

void Editor::ChooseTrack(size_t place) {
    if (place >= Song().tracks.size() || place == track)
        return;
    track = place;
    selection.clear();
}

void Editor::Repair() {
    track = std::min(track, Song().tracks.size() - 1);
    std::erase_if(selection, [this](size_t note) { return note >= CurrentTrack().notes.size(); });
}

void Editor::Refresh(bool isGesture) {
    if (m_export.valid()) {
        if (m_export.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
            return;
        Try([this] {
            const double softer = m_export.get();
            char text[64] = "";
            if (softer > 0)
                std::snprintf(text, sizeof text, ", %.1f dB softer so that nothing is cut", softer);
            status = "sung into " + m_exportPath + text;
        });
    }
    Repair();
    if (m_scored != history.Revision() && !isGesture) {
        m_scored = history.Revision();
        grid.Update(Song());
        m_score.reset();
        Try([this] {
            m_score = std::make_unique<Score>(Song(), library);
            for (const std::string& remark : m_score->Remarks())
                status = remark;
        });
    }
    Try([this] { player.Listen(Song()); });
    for (const std::string& message : library.TakeMessages())
        status = message;
}

const std::vector<std::string>* Editor::PhonemesOf(size_t place) const {
    if (m_score && m_scored == history.Revision())
        for (const Score::Part& part : m_score->Parts())
            if (part.track == place)
                return &part.phonemes;
    return nullptr;
}

std::string Editor::VoiceOf(size_t place) const {
    if (m_score)
        for (const Score::Part& part : m_score->Parts())
            if (part.track == place)
                return part.voice;
    return {};
}

void Editor::Show(Document document, std::string file) {
    player.Stop();
    history.Begin(std::move(document));
    path = std::move(file);
    track = 0;
    selection.clear();
    loop.reset();
    cursor = 0;
    scroll = 0;
}

void Editor::New() {
    Show({}, {});
    status = "a new song";
}

void Editor::Open(const std::string& file) {
    Try([&] {
        if (!IsSongFile(file)) {
            Show(LoadProject(file), file);
            status = "opened " + file;
            return;
        }
        std::vector<std::string> remarks;
        Show(ImportSong(file, library, remarks), {});
        status = "taken from " + file;
        for (const std::string& remark : remarks)
            status = remark;
    });
}

void Editor::Save(const std::string& file) {
    Try([&] {
        SaveProject(Song(), file);
        path = file;
        history.MarkSaved();
        status = "saved " + file;
    });
}

void Editor::ExportMidiTo(const std::string& file) {
    Try([&] {
        ExportMidi(Song(), library, file);
        status = "written " + file;
    });
}

void Editor::ExportWaveTo(const std::string& file) {
    player.Stop();
    m_exportPath = file;
    m_exportShare = 0;
    m_export = std::async(std::launch::async, [this, file, song = Song()] {
        return ExportWave(song, library, file, [this](double share) { m_exportShare = share; });
    });
}

void Editor::TogglePlay() {
    if (player.IsPlaying()) {
        player.Stop();
        return;
    }
    // A loop is heard from its beginning unless the cursor stands in it.
    const bool isInLoop = loop && cursor >= loop->start && cursor < loop->end;
    Try([&] { player.Play(Song(), loop && !isInLoop ? loop->start : cursor, loop); });
}

void Editor::SetCursor(uint32_t tick) {
    cursor = std::min(tick, kLastTick);
    player.Seek(cursor);
}

void Editor::SetLoop(std::optional<Loop> stretch) {
    loop = stretch;
    player.SetLoop(loop);
}

} // namespace editor
