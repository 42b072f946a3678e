#pragma once

#include "view/lyric_typing.h"

#include <imgui.h>

namespace editor {

constexpr float kKeysWidth = 72;             ///< of the column before all that shows time
constexpr const char* kIconPayload = "icon"; ///< what is dragged from the palette: a DraggedIcon

/// An icon on its way from the palette.
struct DraggedIcon {
    enum Kind { kOfNote, kOfTrack, kVoice } kind;
    IconSlot slot; ///< of a note's
    size_t index;  ///< into the library's list
};

/// The piano roll. On empty paper the mouse draws a note, with Ctrl a box to choose; on a note it moves it, at a note's
/// end it stretches it, with Alt it cuts it there, twice clicked it types on it. On the ruler a click sets the cursor
/// and a stroke the loop.
class RollView {
public:
    void Draw(Editor& editor, LyricTyping& typing, float height);
    bool IsDragging() const { return m_drag != Drag::None; }

private:
    enum class Drag { None, New, Move, Stretch, Box, Ruler };

    // Between the screen and the song.
    float XOf(uint32_t tick) const;
    uint32_t TickAt(float x) const;
    float YOf(int key) const { return m_paper.y + static_cast<float>(kHighestKey - key) * kRow - m_scrollY; }
    int KeyAt(float y) const;
    /// The place of the note under a point, the one on top; the number of notes when there is none.
    size_t NoteAt(ImVec2 point) const;
    ImVec2 CornerOf(const Note& note) const { return {XOf(note.tick), YOf(note.key)}; }
    ImVec2 EndOf(const Note& note) const { return {XOf(note.End()), YOf(note.key) + kRow}; }

    void Follow();
    void TakeMouse(LyricTyping& typing);
    void Press(LyricTyping& typing);
    void GoOn();
    void TakeIcon();
    void TakeRuler();
    void DrawPaper();
    void DrawRuler();
    void DrawKeys();
    void DrawTrack(size_t track, const LyricTyping& typing);
    void DrawNote(const Note& note, size_t place, const LyricTyping& typing);
    void DrawLine(uint32_t tick, ImU32 color);

    static constexpr float kRow = 15;
    static constexpr float kRuler = 24;
    static constexpr float kGrip = 6; ///< at a note's end

    Editor* m_editor = nullptr; // of the frame at hand, like the next four
    ImDrawList* m_draw = nullptr;
    ImVec2 m_paper;
    ImVec2 m_size;
    const std::vector<std::string>* m_phonemes = nullptr;
    float m_scrollY = (kHighestKey - 84) * kRow;
    Drag m_drag = Drag::None;
    uint32_t m_fromTick = 0; ///< where the drag began
    int m_fromKey = 0;
    ImVec2 m_from;
    Selection m_before; ///< what was chosen when it began
};

} // namespace editor
