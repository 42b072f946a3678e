#pragma once

#include "document.h"

namespace editor {

/// The document with what it was before: every step keeps a whole copy, since a song is small beside a picture and a
/// copy cannot forget to undo something.
class History {
public:
    const Document& Current() const { return m_current; }
    /// Another number after every change, also one that is undone.
    unsigned Revision() const { return m_revision; }

    /// Begins a step and returns the document, to be changed at once. `what` is for the menu: "Move notes".
    Document& Step(std::string what);
    /// A gesture calls Step when it begins, then one of these at every move of the mouse, then Settle.
    Document& Again();   ///< as it was when the step began: for what is reckoned from the gesture's beginning
    Document& Further(); ///< as it is now: for what adds to it
    /// Takes back a step that has changed nothing, as a click does.
    void Settle();

    bool CanUndo() const { return !m_past.empty(); }
    bool CanRedo() const { return !m_future.empty(); }
    /// What undoing undoes; empty when there is nothing. Redoing likewise.
    std::string UndoName() const { return CanUndo() ? m_past.back().what : ""; }
    std::string RedoName() const { return CanRedo() ? m_future.back().what : ""; }
    void Undo();
    void Redo();

    /// Another song, without a past, which is as it is in its file.
    void Begin(Document document);
    /// It is in its file as it stands now.
    void MarkSaved() { m_saved = m_current; }
    bool IsModified() const { return m_current != m_saved; }

private:
    struct State {
        std::string what;
        Document document;
    };
    static constexpr size_t kMostSteps = 200;
    void Exchange(std::vector<State>& from, std::vector<State>& to);

    Document m_current;
    Document m_saved;
    std::vector<State> m_past;
    std::vector<State> m_future;
    std::vector<State> m_givenUp; ///< the future that the last step has taken the place of
    unsigned m_revision = 0;
};

} // namespace editor
