#pragma once

#include "score.h"

namespace editor {

/// A stretch of the song that is played again and again, in ticks.
struct Loop {
    uint32_t start;
    uint32_t end;
};

/// Plays a document while it is edited. The library's driver plays streams, which belong to its threads meanwhile; so
/// what is edited is heard from the next pass on: the next turn of a loop, or the next play. Volumes, pans, mutes, the
/// loop and the position change at once.
///
/// The driver tells how far it is by messages to a window, which the host's own loop takes: call Listen in every frame.
class Player {
public:
    explicit Player(Library& library);
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    std::string device; ///< from the next play on

    /// Throws EditorError without an engine, torv::songs::SongError for what cannot be sung. Nothing happens for a song
    /// without notes.
    void Play(const Document& document, uint32_t from, std::optional<Loop> loop);
    void Stop();
    /// Takes what the driver has told, sets the mix, and begins the next pass with the document as it is now.
    void Listen(const Document& document);
    void Seek(uint32_t tick);
    void SetLoop(std::optional<Loop> loop);

    bool IsPlaying() const { return m_isPlaying; }
    /// What is heard now.
    uint32_t Tick() const;
    /// How loud a track was last, 1 for full scale: for a meter.
    double Peak(size_t track) const;

private:
    DWORD RegionEnd() const;
    void SetMix(const Document& document);

    Library& m_library;
    CWnd m_window;
    CRtSynthesis m_driver;
    Document m_document; ///< as it plays
    std::unique_ptr<Score> m_score;
    std::vector<std::unique_ptr<CQuillMidiBuffer>> m_streams; ///< borrowed by the driver until it has stopped
    std::optional<Loop> m_loop;
    DWORD m_position = 0; ///< milliseconds of the score, as last told
    DWORD m_toldAt = 0;   ///< by the clock
    bool m_isPlaying = false;
};

} // namespace editor
