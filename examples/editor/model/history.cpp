#include "history.h"

#include <utility>

namespace editor {

Document& History::Step(std::string what) {
    m_future.swap(m_givenUp);
    m_future.clear();
    m_past.push_back({std::move(what), m_current});
    if (m_past.size() > kMostSteps)
        m_past.erase(m_past.begin());
    return Further();
}

Document& History::Again() {
    m_current = m_past.back().document;
    return Further();
}

Document& History::Further() {
    ++m_revision;
    return m_current;
}

void History::Settle() {
    if (!CanUndo() || m_past.back().document != m_current)
        return;
    m_past.pop_back();
    m_future.swap(m_givenUp);
    m_givenUp.clear();
}

void History::Exchange(std::vector<State>& from, std::vector<State>& to) {
    if (from.empty())
        return;
    m_givenUp.clear();
    std::swap(m_current, from.back().document);
    to.push_back(std::move(from.back()));
    from.pop_back();
    ++m_revision;
}

void History::Undo() { Exchange(m_past, m_future); }
void History::Redo() { Exchange(m_future, m_past); }

void History::Begin(Document document) {
    m_current = std::move(document);
    m_saved = m_current;
    m_past.clear();
    m_future.clear();
    ++m_revision;
}

} // namespace editor
