#include "view/lyric_typing.h"

namespace editor {

void LyricTyping::Begin(Editor& editor) {
    m_isOn = true;
    Go(editor, editor.selection.empty() ? 0 : editor.selection.front());
}

void LyricTyping::End(Editor& editor) {
    if (m_isOn)
        Commit(editor);
    m_isOn = false;
}

/// To a note, whose lyric is there to be changed; behind the last one typing ends.
void LyricTyping::Go(Editor& editor, size_t note) {
    m_isOn = note < editor.CurrentTrack().notes.size();
    if (!m_isOn)
        return;
    m_note = note;
    m_text = editor.CurrentTrack().notes[note].lyric;
    editor.Select(note);
}

void LyricTyping::Commit(Editor& editor) {
    if (m_note >= editor.CurrentTrack().notes.size())
        return;
    editor.Step("Type lyrics").notes[m_note].lyric = m_text == "-" ? "" : m_text;
    editor.history.Settle();
}

void LyricTyping::TakeText(Editor& editor, const char* utf8) {
    const std::string text = utf8;
    const bool isInBrackets = m_text.rfind('[') != std::string::npos && m_text.rfind(']') == std::string::npos;
    if (text == " " && !isInBrackets) {
        Commit(editor);
        return Go(editor, m_note + 1);
    }
    m_text += text;
    if (text == "-" && !isInBrackets) {
        Commit(editor);
        Go(editor, m_note + 1);
    }
}

void LyricTyping::TakeKey(Editor& editor, const SDL_Keysym& key) {
    switch (key.sym) {
    case SDLK_RETURN:
    case SDLK_KP_ENTER:
        return End(editor);
    case SDLK_ESCAPE:
        m_isOn = false;
        return;
    case SDLK_TAB:
        Commit(editor);
        return Go(editor, key.mod & KMOD_SHIFT ? m_note - 1 : m_note + 1);
    case SDLK_BACKSPACE: // a whole character: bytes that go on begin with the bits 10
        while (!m_text.empty() && (m_text.back() & 0xC0) == 0x80)
            m_text.pop_back();
        if (!m_text.empty())
            m_text.pop_back();
        return;
    case SDLK_v: // a line of words goes to as many notes
        if (key.mod & KMOD_CTRL) {
            char* const line = SDL_GetClipboardText();
            const size_t next = TypeLyrics(editor.Step("Paste lyrics"), m_note, line);
            SDL_free(line);
            Go(editor, next);
        }
        return;
    default:
        return;
    }
}

} // namespace editor
