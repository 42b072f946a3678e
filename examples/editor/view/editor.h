#pragma once

#include "model/edits.h"
#include "model/exchange.h"
#include "model/grid.h"
#include "model/history.h"
#include "model/player.h"

#include <atomic>
#include <future>
#include <string>

namespace editor {

/// What the window's panels share: the song with its history, what of it is chosen, and how it sounds. Panels change
/// the song through History only, so that everything can be undone.
class Editor {
public:
    Editor();

    Library library; // first: all else asks it
    History history;
    Grid grid;
    Player player{library};

    size_t track = 0;    ///< the one that is edited
    Selection selection; ///< of its notes
    uint32_t cursor = 0; ///< where one edits and plays from
    std::optional<Loop> loop;
    CurveKind curve = kDynamics; ///< the one that is drawn
    int scroll = 0;              ///< points, of all that shows time
    std::string path;            ///< the project's file; empty: it has none yet
    std::string status;          ///< the last thing to tell
    bool wantsQuit = false;
    bool isNaming = false; ///< a field of the mixer has the keyboard

    const Document& Song() const { return history.Current(); }
    const Track& CurrentTrack() const { return Song().tracks[track]; }
    /// As History has them, for the track that is edited.
    Track& Step(const char* what) { return history.Step(what).tracks[track]; }
    Track& Again() { return history.Again().tracks[track]; }
    Track& Further() { return history.Further().tracks[track]; }
    void Select(size_t note);
    void ChooseTrack(size_t place);
    /// Choices that edits and undoing have left without their object are given up.
    void Repair();

    /// Once in a frame: brings score, grid and player up to the song. While a gesture is under way the score waits.
    void Refresh(bool isGesture);
    /// The phonemes of a track's notes as they will be sung; empty while they are not known.
    const std::vector<std::string>* PhonemesOf(size_t track) const;
    std::string VoiceOf(size_t track) const;

    void New();
    /// A project, or what its ending says: .mid, .musicxml, .mxl, .xml, .ust.
    void Open(const std::string& file);
    void Save(const std::string& file);
    void ExportMidiTo(const std::string& file);
    void ExportWaveTo(const std::string& file);
    /// Singing a wave takes a while, on a thread that has the library to itself: nothing else is done meanwhile.
    bool IsExporting() const { return m_export.valid(); }
    double ExportShare() const { return m_exportShare; }

    void TogglePlay();
    void SetCursor(uint32_t tick);
    void SetLoop(std::optional<Loop> stretch);

private:
    template <class Work>
    void Try(Work work);
    void Show(Document document, std::string file);

    std::unique_ptr<Score> m_score;
    unsigned m_scored = ~0U; ///< the history's revision that it is of
    std::future<double> m_export;
    std::string m_exportPath;
    std::atomic<double> m_exportShare = 0;
};

} // namespace editor
