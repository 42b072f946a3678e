#pragma once

#include "view/editor.h"

#include <SDL.h>

namespace editor {

/// Syllables typed on notes: a blank or a hyphen ends one and goes on to the next note, Return ends all, Escape gives
/// up what is typed on the note at hand. What is typed is a step of its own for each note.
class LyricTyping {
public:
    bool IsOn() const { return m_isOn; }
    /// On the first chosen note, else on the track's first.
    void Begin(Editor& editor);
    void End(Editor& editor);

    void TakeText(Editor& editor, const char* utf8);
    /// Everything but text.
    void TakeKey(Editor& editor, const SDL_Keysym& key);

    /// Where one types, and what stands there so far.
    size_t Note() const { return m_note; }
    const std::string& Text() const { return m_text; }

private:
    void Commit(Editor& editor);
    void Go(Editor& editor, size_t note);

    bool m_isOn = false;
    size_t m_note = 0;
    std::string m_text;
};

} // namespace editor
