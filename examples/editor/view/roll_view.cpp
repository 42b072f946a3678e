#include "view/roll_view.h"

#include "view/colors.h"

#include <algorithm>
#include <cmath>

namespace editor {

namespace {

constexpr bool IsBlackKey(int key) { return (1 << key % 12) & 0b010101001010; }

void DrawTextAt(ImDrawList& draw, ImVec2 at, ImU32 color, const std::string& text, float size = 0) {
    draw.AddText(nullptr, size > 0 ? size : ImGui::GetFontSize(), at, color, text.c_str(), text.c_str() + text.size());
}

} // namespace

float RollView::XOf(uint32_t tick) const {
    return m_paper.x + static_cast<float>(m_editor->grid.PointOf(tick) - m_editor->scroll);
}

uint32_t RollView::TickAt(float x) const {
    return m_editor->grid.TickAt(static_cast<int>(x - m_paper.x) + m_editor->scroll);
}

int RollView::KeyAt(float y) const {
    return std::clamp(kHighestKey - static_cast<int>(std::floor((y - m_paper.y + m_scrollY) / kRow)), 0, kHighestKey);
}

size_t RollView::NoteAt(ImVec2 point) const {
    const std::vector<Note>& notes = m_editor->CurrentTrack().notes;
    for (size_t i = notes.size(); i-- > 0;) {
        const ImVec2 corner = CornerOf(notes[i]);
        const ImVec2 end = EndOf(notes[i]);
        if (point.x >= corner.x && point.x < end.x && point.y >= corner.y && point.y < end.y)
            return i;
    }
    return notes.size();
}

void RollView::Draw(Editor& editor, LyricTyping& typing, float height) {
    m_editor = &editor;
    ImGui::BeginChild("roll", {0, height}, false, ImGuiWindowFlags_NoScrollbar | ImGuiWindowFlags_NoScrollWithMouse);
    m_draw = ImGui::GetWindowDrawList();
    const ImVec2 corner = ImGui::GetCursorScreenPos();
    m_paper = {corner.x + kKeysWidth, corner.y + kRuler};
    m_size = {ImGui::GetContentRegionAvail().x - kKeysWidth, height - kRuler};
    m_phonemes = editor.PhonemesOf(editor.track);

    Follow();
    ImGui::SetCursorScreenPos({m_paper.x, corner.y});
    ImGui::InvisibleButton("ruler", {m_size.x, kRuler});
    TakeRuler();
    ImGui::SetCursorScreenPos(m_paper);
    ImGui::InvisibleButton("paper", m_size);
    TakeMouse(typing);
    TakeIcon();

    m_draw->PushClipRect(m_paper, {m_paper.x + m_size.x, m_paper.y + m_size.y}, true);
    DrawPaper();
    for (size_t i = 0; i < editor.Song().tracks.size(); ++i)
        if (i != editor.track)
            DrawTrack(i, typing);
    DrawTrack(editor.track, typing);
    if (m_drag == Drag::Box)
        m_draw->AddRect(m_from, ImGui::GetMousePos(), kInk);
    m_draw->PopClipRect();
    DrawRuler();
    DrawKeys();
    ImGui::EndChild();
}

/// While it plays the paper turns its page; the wheel scrolls, with Shift sideways, with Ctrl it zooms.
void RollView::Follow() {
    const ImGuiIO& io = ImGui::GetIO();
    if (ImGui::IsWindowHovered() && io.MouseWheel != 0) {
        if (io.KeyCtrl)
            m_editor->grid.SetZoom(static_cast<int>(m_editor->grid.Zoom() * (io.MouseWheel > 0 ? 1.25F : 0.8F)));
        else if (io.KeyShift)
            m_editor->scroll -= static_cast<int>(io.MouseWheel * 80);
        else
            m_scrollY -= io.MouseWheel * kRow * 3;
    }
    const uint32_t tick = m_editor->player.IsPlaying() ? m_editor->player.Tick() : m_editor->cursor;
    const int point = m_editor->grid.PointOf(tick);
    static uint32_t followed = 0; // a cursor that stands still does not hold the paper
    if (tick != followed && !IsDragging() &&
        (point < m_editor->scroll || point > m_editor->scroll + static_cast<int>(m_size.x) - 20))
        m_editor->scroll = point - static_cast<int>(m_size.x) / 8;
    followed = tick;
    m_editor->scroll = std::max(m_editor->scroll, 0);
    m_scrollY = std::clamp(m_scrollY, 0.0F, std::max((kHighestKey + 1) * kRow - m_size.y, 0.0F));
}

void RollView::TakeRuler() {
    const float x = ImGui::GetMousePos().x;
    if (ImGui::IsItemActivated()) {
        m_drag = Drag::Ruler;
        m_fromTick = m_editor->grid.Snap(TickAt(x));
        m_from = ImGui::GetMousePos();
    }
    if (m_drag != Drag::Ruler)
        return;
    const uint32_t to = m_editor->grid.Snap(TickAt(x));
    const bool isStroke = std::fabs(x - m_from.x) > kGrip && to != m_fromTick;
    if (ImGui::IsItemActive() && isStroke)
        m_editor->loop = Loop{std::min(to, m_fromTick), std::max(to, m_fromTick)};
    if (ImGui::IsItemDeactivated()) {
        if (isStroke)
            m_editor->SetLoop(m_editor->loop);
        else
            m_editor->SetCursor(m_fromTick);
        m_drag = Drag::None;
    }
}

void RollView::TakeMouse(LyricTyping& typing) {
    const ImVec2 mouse = ImGui::GetMousePos();
    if (ImGui::IsItemHovered()) {
        const size_t place = NoteAt(mouse);
        if (place < m_editor->CurrentTrack().notes.size())
            ImGui::SetMouseCursor(EndOf(m_editor->CurrentTrack().notes[place]).x - mouse.x < kGrip
                                      ? ImGuiMouseCursor_ResizeEW
                                      : ImGuiMouseCursor_Hand);
    }
    if (ImGui::IsItemActivated())
        Press(typing);
    else if (ImGui::IsItemActive() && m_drag != Drag::None)
        GoOn();
    if (ImGui::IsItemDeactivated()) {
        if (m_drag != Drag::Box)
            m_editor->history.Settle();
        m_drag = Drag::None;
    }
}

void RollView::Press(LyricTyping& typing) {
    typing.End(*m_editor);
    const ImGuiIO& io = ImGui::GetIO();
    const ImVec2 mouse = io.MouseClickedPos[0];
    m_from = mouse;
    m_fromTick = TickAt(mouse.x);
    m_fromKey = KeyAt(mouse.y);
    const size_t place = NoteAt(mouse);
    Selection& selection = m_editor->selection;
    const std::vector<Note>& notes = m_editor->CurrentTrack().notes;
    if (place == notes.size() && io.KeyCtrl) {
        m_drag = Drag::Box;
        m_before = io.KeyShift ? selection : Selection{};
        return;
    }
    if (place == notes.size()) {
        m_fromTick = m_editor->grid.SnapDown(m_fromTick);
        Note note{.tick = m_fromTick, .length = m_editor->grid.Step(), .key = m_fromKey};
        note.icons = m_editor->library.UsualIcons();
        m_drag = Drag::New;
        m_editor->Select(AddNote(m_editor->Step("Draw note"), std::move(note)));
        return;
    }
    const bool isChosen = std::find(selection.begin(), selection.end(), place) != selection.end();
    if (io.KeyShift && !isChosen)
        selection.insert(std::upper_bound(selection.begin(), selection.end(), place), place);
    else if (!isChosen)
        m_editor->Select(place);
    if (io.MouseDoubleClicked[0])
        return typing.Begin(*m_editor);
    if (io.KeyAlt) {
        CutNote(m_editor->Step("Cut note in two"), place, m_editor->grid.Snap(m_fromTick));
        return m_editor->history.Settle();
    }
    const bool isAtEnd = EndOf(notes[place]).x - mouse.x < kGrip;
    m_drag = isAtEnd ? Drag::Stretch : Drag::Move;
    m_editor->history.Step(isAtEnd ? "Stretch notes" : "Move notes");
    m_before = selection;
}

/// Every move of the mouse reckons from where the drag began: Again gives the song back as it was then.
void RollView::GoOn() {
    const ImVec2 mouse = ImGui::GetMousePos();
    const uint32_t step = m_editor->grid.Step();
    const uint32_t to = TickAt(mouse.x);
    const int64_t way = std::lround((double(to) - double(m_fromTick)) / step) * int64_t{step};
    switch (m_drag) {
    case Drag::New: {
        Note& note = m_editor->Further().notes[m_editor->selection.front()];
        note.length = std::max(m_editor->grid.SnapDown(std::max(to, m_fromTick)) + step - m_fromTick, step);
        break;
    }
    case Drag::Move:
        m_editor->selection = m_before;
        MoveNotes(m_editor->Again(), m_editor->selection, way, KeyAt(mouse.y) - m_fromKey);
        break;
    case Drag::Stretch:
        StretchNotes(m_editor->Again(), m_before, way, step);
        break;
    case Drag::Box: {
        m_editor->selection = m_before;
        const std::vector<Note>& notes = m_editor->CurrentTrack().notes;
        for (size_t i = 0; i < notes.size(); ++i)
            if (CornerOf(notes[i]).x < std::max(mouse.x, m_from.x) && EndOf(notes[i]).x > std::min(mouse.x, m_from.x) &&
                CornerOf(notes[i]).y < std::max(mouse.y, m_from.y) && EndOf(notes[i]).y > std::min(mouse.y, m_from.y) &&
                std::find(m_before.begin(), m_before.end(), i) == m_before.end())
                m_editor->selection.push_back(i);
        std::sort(m_editor->selection.begin(), m_editor->selection.end());
        break;
    }
    default:
        break;
    }
}

/// An icon of notes goes to the note under it, and to all that are chosen with that; dynamics to their place in time, a
/// voice to the track.
void RollView::TakeIcon() {
    if (!ImGui::BeginDragDropTarget())
        return;
    if (const ImGuiPayload* const payload = ImGui::AcceptDragDropPayload(kIconPayload)) {
        const auto& icon = *static_cast<const DraggedIcon*>(payload->Data);
        const Library& library = m_editor->library;
        const size_t place = NoteAt(ImGui::GetMousePos());
        if (icon.kind == DraggedIcon::kVoice) {
            m_editor->Step("Choose voice").voice = library.Voices()[icon.index];
        } else if (icon.kind == DraggedIcon::kOfTrack) {
            SetMark(m_editor->Step("Set dynamics"), m_editor->grid.SnapDown(TickAt(ImGui::GetMousePos().x)),
                    library.Dynamics()[icon.index]);
        } else if (place < m_editor->CurrentTrack().notes.size()) {
            if (std::find(m_editor->selection.begin(), m_editor->selection.end(), place) == m_editor->selection.end())
                m_editor->Select(place);
            SetIcon(m_editor->Step("Set icon"), m_editor->selection, icon.slot, library.Icons(icon.slot)[icon.index]);
        }
    }
    ImGui::EndDragDropTarget();
}

void RollView::DrawLine(uint32_t tick, ImU32 color) {
    VerticalLine(*m_draw, XOf(tick), m_paper.y, m_paper.y + m_size.y, color);
}

void RollView::DrawPaper() {
    const float right = m_paper.x + m_size.x;
    for (int key = KeyAt(m_paper.y + m_size.y); key <= KeyAt(m_paper.y); ++key) {
        m_draw->AddRectFilled({m_paper.x, YOf(key)}, {right, YOf(key) + kRow}, IsBlackKey(key) ? kDarkRow : kPaper);
        if (key % 12 == 0 || key % 12 == 5)
            m_draw->AddRectFilled({m_paper.x, YOf(key) + kRow - 1}, {right, YOf(key) + kRow}, kGridLine);
    }
    const uint32_t from = TickAt(m_paper.x);
    const uint32_t to = TickAt(right) + 1;
    const uint32_t step = m_editor->grid.Step();
    if (XOf(from + step) - XOf(from) > 5)
        for (uint32_t tick = m_editor->grid.SnapDown(from); tick < to; tick += step)
            DrawLine(tick, kGridLine);
    for (const Grid::Bar& bar : m_editor->grid.Bars(from, to)) {
        for (uint32_t tick = bar.tick + bar.beat; tick < bar.end; tick += bar.beat)
            DrawLine(tick, kBeatLine);
        DrawLine(bar.tick, kBarLine);
    }
    if (m_editor->loop)
        m_draw->AddRectFilled({XOf(m_editor->loop->start), m_paper.y}, {XOf(m_editor->loop->end), m_paper.y + m_size.y},
                              IM_COL32(90, 150, 250, 14));
    DrawLine(m_editor->cursor, kCursorLine);
    if (m_editor->player.IsPlaying())
        DrawLine(m_editor->player.Tick(), kPlayLine);
}

void RollView::DrawRuler() {
    const ImVec2 corner{m_paper.x, m_paper.y - kRuler};
    const ImVec2 end{m_paper.x + m_size.x, m_paper.y};
    m_draw->PushClipRect(corner, end, true);
    m_draw->AddRectFilled(corner, end, kBlack);
    if (m_editor->loop)
        m_draw->AddRectFilled({XOf(m_editor->loop->start), corner.y}, {XOf(m_editor->loop->end), end.y}, kLoopArea);
    float free = 0; // where there is room for a number again
    for (const Grid::Bar& bar : m_editor->grid.Bars(TickAt(corner.x), TickAt(end.x) + 1)) {
        VerticalLine(*m_draw, XOf(bar.tick), corner.y, end.y, kBarLine);
        if (XOf(bar.tick) >= free)
            DrawTextAt(*m_draw, {XOf(bar.tick) + 4, corner.y + 3}, kFaint, std::to_string(bar.number));
        free = std::max(free, XOf(bar.tick) + 30);
    }
    const float x = XOf(m_editor->cursor);
    m_draw->AddTriangleFilled({x - 5, end.y - 9}, {x + 5, end.y - 9}, {x, end.y}, kCursorLine);
    m_draw->PopClipRect();
}

void RollView::DrawKeys() {
    const ImVec2 corner{m_paper.x - kKeysWidth, m_paper.y};
    m_draw->PushClipRect(corner, {m_paper.x, m_paper.y + m_size.y}, true);
    for (int key = KeyAt(m_paper.y + m_size.y); key <= KeyAt(m_paper.y); ++key) {
        m_draw->AddRectFilled({corner.x, YOf(key)}, {m_paper.x - 1, YOf(key) + kRow - 1},
                              IsBlackKey(key) ? kBlack : kWhite);
        if (key % 12 == 0)
            DrawTextAt(*m_draw, {m_paper.x - 26, YOf(key)}, kBlack, "C" + std::to_string(key / 12 - 1), 13);
    }
    m_draw->PopClipRect();
}

void RollView::DrawTrack(size_t track, const LyricTyping& typing) {
    const bool isCurrent = track == m_editor->track;
    const std::vector<Note>& notes = m_editor->Song().tracks[track].notes;
    for (size_t i = 0; i < notes.size(); ++i) {
        const ImVec2 corner = CornerOf(notes[i]);
        const ImVec2 end = EndOf(notes[i]);
        if (end.x < m_paper.x || corner.x > m_paper.x + m_size.x)
            continue;
        if (isCurrent)
            DrawNote(notes[i], i, typing);
        else
            m_draw->AddRectFilled({corner.x + 1, corner.y + 1}, {end.x - 1, end.y - 1},
                                  TrackColor(track, 0) & IM_COL32(255, 255, 255, 90), 3);
    }
}

/// The note, its syllable on it, its phonemes below it, and above it a letter for each icon.
void RollView::DrawNote(const Note& note, size_t place, const LyricTyping& typing) {
    const Selection& selection = m_editor->selection;
    const bool isChosen = std::binary_search(selection.begin(), selection.end(), place);
    const ImVec2 corner = CornerOf(note);
    const ImVec2 end{EndOf(note).x - 1, EndOf(note).y};
    if (isChosen)
        m_draw->AddRectFilled({corner.x - 1, corner.y - 1}, {end.x + 1, end.y + 1}, kWhite, 3);
    m_draw->AddRectFilled(corner, end, TrackColor(m_editor->track, isChosen ? 1.0F : 0.6F), 3);
    const bool isTyped = typing.IsOn() && typing.Note() == place;
    const std::string text = isTyped ? typing.Text() + "|" : note.lyric.empty() ? "-" : note.lyric;
    m_draw->PushClipRect(corner, {isTyped ? corner.x + 300 : end.x, end.y}, true);
    if (isTyped)
        m_draw->AddRectFilled(corner, {corner.x + ImGui::CalcTextSize(text.c_str()).x + 8, end.y}, kWhite, 3);
    DrawTextAt(*m_draw, {corner.x + 4, corner.y}, kBlack, text, 13);
    m_draw->PopClipRect();
    m_draw->PushClipRect({corner.x, corner.y - 14}, {end.x + 8, end.y + 16}, true);
    if (m_phonemes && place < m_phonemes->size())
        DrawTextAt(*m_draw, {corner.x + 4, end.y + 1}, kFaint, (*m_phonemes)[place], 13);
    std::string letters;
    for (size_t slot = 0; slot < kIconSlots; ++slot)
        if (!note.icons[slot].empty())
            letters += "ARTV"[slot];
    DrawTextAt(*m_draw, {corner.x + 4, corner.y - 12}, TrackColor(m_editor->track, 0.6F), letters, 11);
    m_draw->PopClipRect();
    if (isChosen && selection.size() == 1 && ImGui::IsMouseHoveringRect(corner, end) && !ImGui::IsMouseDown(0)) {
        std::string icons;
        for (const std::string& icon : note.icons)
            icons += icon.empty() ? "" : (icons.empty() ? "" : "\n") + icon;
        if (!icons.empty())
            ImGui::SetTooltip("%s", icons.c_str());
    }
}

} // namespace editor
