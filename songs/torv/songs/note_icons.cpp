#include "torv/songs/note_icons.h"

namespace torv::songs {

namespace {

constexpr DWORD kShortestWithVibrato = 600; // milliseconds
constexpr DWORD kVibratoDelay = 350;        // milliseconds

} // namespace

NoteIcons::NoteIcons(const Databases& databases, const Expressions& expressions, CCsqBuilder& builder)
    : m_databases(databases), m_builder(builder), m_vibrato(expressions.vibrato), m_attack(Attach(expressions.attack)),
      m_release(Attach(expressions.release)), m_transition(Attach(expressions.transition)),
      m_slide(Attach(expressions.slide)) {}

DWORD NoteIcons::Attach(DWORD id) {
    CIconObject* const icon = id ? m_databases.Manager().CreateIconObject(id) : nullptr;
    return icon ? torv::HandleOf(m_builder.RegisterIconObject(icon)) : 0;
}

DWORD NoteIcons::Vibrato(DWORD ticks, DWORD milliseconds, DWORD& offset) {
    offset = 0;
    if (!m_vibrato || milliseconds < kShortestWithVibrato)
        return 0;
    offset = static_cast<DWORD>(static_cast<uint64_t>(ticks) * kVibratoDelay / milliseconds);
    CIconObject* const icon = m_databases.Manager().CreateIconObject(m_vibrato);
    if (!icon)
        return 0;
    icon->SetLength(ticks - offset);
    return torv::HandleOf(m_builder.RegisterIconObject(icon));
}

} // namespace torv::songs
