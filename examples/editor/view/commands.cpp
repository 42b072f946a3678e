#include "view/commands.h"

#include "view/dialogs.h"
#include "view/lyric_typing.h"

#include <algorithm>
#include <cstring>
#include <imgui.h>

namespace editor {

namespace {

// Notes.

void AddAtCursor(Desk& desk) {
    Editor& e = desk.editor;
    Note note{.tick = e.grid.SnapDown(e.cursor), .length = e.grid.Step(), .icons = e.library.UsualIcons()};
    if (!e.selection.empty())
        note.key = e.CurrentTrack().notes[e.selection.back()].key;
    const uint32_t end = note.End();
    e.Select(AddNote(e.Step("Add note"), std::move(note)));
    e.cursor = end;
}

void MoveBy(Desk& desk, int64_t ticks, int keys) {
    if (!desk.editor.selection.empty())
        MoveNotes(desk.editor.Step("Move notes"), desk.editor.selection, ticks, keys);
}

void StretchBy(Desk& desk, int direction) {
    Editor& e = desk.editor;
    if (!e.selection.empty())
        StretchNotes(e.Step("Stretch notes"), e.selection, int64_t{direction} * e.grid.Step(), e.grid.Step());
}

void SelectNext(Desk& desk, int direction, bool isMore) {
    Editor& e = desk.editor;
    const size_t count = e.CurrentTrack().notes.size();
    if (count == 0)
        return;
    size_t place = direction > 0 ? 0 : count - 1;
    if (!e.selection.empty()) {
        place = direction > 0 ? e.selection.back() : e.selection.front();
        if ((direction > 0 && place + 1 == count) || (direction < 0 && place == 0))
            return;
        place += static_cast<size_t>(direction);
    }
    if (!isMore)
        e.selection.clear();
    e.selection.push_back(place);
    std::sort(e.selection.begin(), e.selection.end());
    e.cursor = e.CurrentTrack().notes[place].tick; // what plays goes on where it is
}

void Cut(Desk& desk) {
    Editor& e = desk.editor;
    if (e.selection.empty())
        return;
    const size_t place = e.selection.front();
    const Note& note = e.CurrentTrack().notes[place];
    const bool isInside = e.cursor > note.tick && e.cursor < note.End();
    CutNote(e.Step("Cut note in two"), place, isInside ? e.cursor : note.tick + note.length / 2);
    e.history.Settle();
}

std::vector<Note>& Clipboard() {
    static std::vector<Note> notes;
    return notes;
}

void Copy(Desk& desk) {
    if (!desk.editor.selection.empty())
        Clipboard() = CopyNotes(desk.editor.CurrentTrack(), desk.editor.selection);
}

void Erase(Desk& desk) {
    if (!desk.editor.selection.empty())
        EraseNotes(desk.editor.Step("Delete notes"), desk.editor.selection);
}

void Paste(Desk& desk) {
    Editor& e = desk.editor;
    if (!Clipboard().empty())
        PasteNotes(e.Step("Paste"), e.selection, Clipboard(), e.grid.SnapDown(e.cursor));
}

void SelectAll(Desk& desk) {
    desk.editor.selection.clear();
    for (size_t i = 0; i < desk.editor.CurrentTrack().notes.size(); ++i)
        desk.editor.selection.push_back(i);
}

/// The one behind `name` in a list, behind the last of which there is none.
std::string NextOf(const std::vector<std::string>& names, const std::string& name) {
    const auto found = std::find(names.begin(), names.end(), name);
    const auto next = found == names.end() ? names.begin() : found + 1;
    return next == names.end() ? "" : *next;
}

template <IconSlot slot>
void NextIcon(Desk& desk) {
    Editor& e = desk.editor;
    if (e.selection.empty())
        return;
    const std::string name = NextOf(e.library.Icons(slot), e.CurrentTrack().notes[e.selection.front()].icons[slot]);
    SetIcon(e.Step("Set icon"), e.selection, slot, name);
    e.status = name.empty() ? "no such icon" : name;
}

void NextDynamics(Desk& desk) {
    Editor& e = desk.editor;
    const uint32_t tick = e.grid.SnapDown(e.cursor);
    std::string now;
    for (const Mark& mark : e.CurrentTrack().marks)
        if (mark.tick == tick)
            now = mark.icon;
    SetMark(e.Step("Set dynamics"), tick, NextOf(e.library.Dynamics(), now));
}

// Curves.

/// Raises or lowers the curve where the chosen notes are.
void BendCurve(Desk& desk, int direction) {
    Editor& e = desk.editor;
    if (e.selection.empty())
        return;
    Track& track = e.Step("Draw curve");
    const CurveRange& range = kCurveRanges[e.curve];
    for (const size_t place : e.selection) {
        const Note& note = track.notes[place];
        const int value =
            ValueAt(track.curves[e.curve], e.curve, note.tick) + direction * (range.highest - range.lowest) / 16;
        DrawCurve(track.curves[e.curve], e.curve, {note.tick, value}, {note.End() - 1, value});
    }
}

void ClearCurve(Desk& desk) {
    Editor& e = desk.editor;
    Track& track = e.Step("Erase curve");
    if (e.selection.empty())
        track.curves[e.curve].clear();
    for (const size_t place : e.selection)
        EraseCurve(track.curves[e.curve], e.curve, track.notes[place].tick, track.notes[place].End() - 1);
    e.history.Settle();
}

// Tracks and mix.

void AddTrack(Desk& desk) {
    Editor& e = desk.editor;
    if (e.Song().tracks.size() == kMostTracks) {
        e.status = "a song has 16 tracks at most";
        return;
    }
    Document& song = e.history.Step("Add track");
    song.tracks.push_back(Track{.name = "Voice " + std::to_string(song.tracks.size() + 1)});
    e.ChooseTrack(song.tracks.size() - 1);
}

void RemoveTrack(Desk& desk) {
    Editor& e = desk.editor;
    if (e.Song().tracks.size() == 1)
        return;
    std::vector<Track>& tracks = e.history.Step("Remove track").tracks;
    tracks.erase(tracks.begin() + static_cast<ptrdiff_t>(e.track));
    e.Repair();
}

template <class Change>
void ChangeMix(Desk& desk, Change change) {
    change(desk.editor.Step("Mix"));
    desk.editor.history.Settle();
}

/// The tempo in force at the cursor.
void ChangeTempo(Desk& desk, double factor) {
    for (Document& song = desk.editor.history.Step("Tempo"); TempoChange & tempo : song.tempos)
        if (&tempo == &song.tempos.back() || (&tempo)[1].tick > desk.editor.cursor) {
            tempo.microseconds = static_cast<uint32_t>(std::clamp(tempo.microseconds * factor, 150e3, 3e6));
            return;
        }
}

void LoopSelection(Desk& desk) {
    Editor& e = desk.editor;
    if (e.loop || e.selection.empty())
        return e.SetLoop({});
    Loop loop{kLastTick, 0};
    for (const size_t place : e.selection) {
        loop.start = std::min(loop.start, e.CurrentTrack().notes[place].tick);
        loop.end = std::max(loop.end, e.CurrentTrack().notes[place].End());
    }
    e.SetLoop(loop);
}

constexpr SDL_Keycode kNoKey = SDLK_UNKNOWN;

constexpr Command kCommands[] = {
    {"File", "New", SDLK_n, kCtrl, [](Desk& d) { d.dialogs.AskToLeave([](Desk& desk) { desk.editor.New(); }); }},
    {"File", "Open or import...", SDLK_o, kCtrl,
     [](Desk& d) { d.dialogs.AskToLeave([](Desk& desk) { desk.dialogs.AskForFile(Dialogs::kOpen, desk); }); }},
    {"File", "Save", SDLK_s, kCtrl, [](Desk& d) { d.dialogs.Save(d); }},
    {"File", "Save as...", SDLK_s, kCtrl | kShift, [](Desk& d) { d.dialogs.AskForFile(Dialogs::kSave, d); }},
    {"File", "Sing into a wave...", SDLK_e, kCtrl, [](Desk& d) { d.dialogs.AskForFile(Dialogs::kWave, d); }},
    {"File", "Write engine MIDI...", SDLK_m, kCtrl, [](Desk& d) { d.dialogs.AskForFile(Dialogs::kMidi, d); }},
    {"File", "Quit", SDLK_q, kCtrl,
     [](Desk& d) { d.dialogs.AskToLeave([](Desk& desk) { desk.editor.wantsQuit = true; }); }},
    {"Edit", "Undo", SDLK_z, kCtrl, [](Desk& d) { d.editor.history.Undo(); }},
    {"Edit", "Redo", SDLK_z, kCtrl | kShift, [](Desk& d) { d.editor.history.Redo(); }},
    {"Edit", "Cut", SDLK_x, kCtrl, [](Desk& d) { Copy(d), Erase(d); }},
    {"Edit", "Copy", SDLK_c, kCtrl, Copy},
    {"Edit", "Paste at cursor", SDLK_v, kCtrl, Paste},
    {"Edit", "Delete", SDLK_DELETE, 0, Erase},
    {"Edit", "Select all", SDLK_a, kCtrl, SelectAll},
    {"Notes", "New note at cursor", SDLK_n, 0, AddAtCursor},
    {"Notes", "Type lyrics", SDLK_RETURN, 0, [](Desk& d) { d.typing.Begin(d.editor); }},
    {"Notes", "Cut in two", SDLK_k, 0, Cut},
    {"Notes", "Semitone up", SDLK_UP, 0, [](Desk& d) { MoveBy(d, 0, 1); }},
    {"Notes", "Semitone down", SDLK_DOWN, 0, [](Desk& d) { MoveBy(d, 0, -1); }},
    {"Notes", "Octave up", SDLK_UP, kCtrl, [](Desk& d) { MoveBy(d, 0, 12); }},
    {"Notes", "Octave down", SDLK_DOWN, kCtrl, [](Desk& d) { MoveBy(d, 0, -12); }},
    {"Notes", "Later", SDLK_RIGHT, kCtrl, [](Desk& d) { MoveBy(d, d.editor.grid.Step(), 0); }},
    {"Notes", "Earlier", SDLK_LEFT, kCtrl, [](Desk& d) { MoveBy(d, -int64_t{d.editor.grid.Step()}, 0); }},
    {"Notes", "Longer", SDLK_RIGHT, kAlt, [](Desk& d) { StretchBy(d, 1); }},
    {"Notes", "Shorter", SDLK_LEFT, kAlt, [](Desk& d) { StretchBy(d, -1); }},
    {"Notes", "Next note", SDLK_RIGHT, 0, [](Desk& d) { SelectNext(d, 1, false); }},
    {"Notes", "Note before", SDLK_LEFT, 0, [](Desk& d) { SelectNext(d, -1, false); }},
    {"Notes", "Next note too", SDLK_RIGHT, kShift, [](Desk& d) { SelectNext(d, 1, true); }},
    {"Notes", "Note before too", SDLK_LEFT, kShift, [](Desk& d) { SelectNext(d, -1, true); }},
    {"Expression", "Next attack", SDLK_a, 0, NextIcon<kAttack>},
    {"Expression", "Next release", SDLK_r, 0, NextIcon<kRelease>},
    {"Expression", "Next transition", SDLK_t, 0, NextIcon<kTransition>},
    {"Expression", "Next vibrato", SDLK_v, 0, NextIcon<kVibrato>},
    {"Expression", "Next dynamics at cursor", SDLK_d, 0, NextDynamics},
    {"Expression", "Draw dynamics or pitch", SDLK_F2, 0,
     [](Desk& d) { d.editor.curve = d.editor.curve == kDynamics ? kPitch : kDynamics; }},
    {"Expression", "Curve down at notes", SDLK_F3, 0, [](Desk& d) { BendCurve(d, -1); }},
    {"Expression", "Curve up at notes", SDLK_F4, 0, [](Desk& d) { BendCurve(d, 1); }},
    {"Expression", "Erase curve at notes, or all", SDLK_F5, 0, ClearCurve},
    {"Tracks", "New track", SDLK_t, kCtrl, AddTrack},
    {"Tracks", "Remove track", SDLK_t, kCtrl | kShift, RemoveTrack},
    {"Tracks", "Next track", SDLK_PAGEDOWN, 0, [](Desk& d) { d.editor.ChooseTrack(d.editor.track + 1); }},
    {"Tracks", "Track before", SDLK_PAGEUP, 0, [](Desk& d) { d.editor.ChooseTrack(d.editor.track - 1); }},
    {"Tracks", "Next voice", SDLK_w, 0,
     [](Desk& d) {
         Track& track = d.editor.Step("Choose voice");
         track.voice = NextOf(d.editor.library.Voices(), track.voice);
     }},
    {"Tracks", "Mute", SDLK_m, 0, [](Desk& d) { ChangeMix(d, [](Track& t) { t.isMuted = !t.isMuted; }); }},
    {"Tracks", "Solo", SDLK_s, 0, [](Desk& d) { ChangeMix(d, [](Track& t) { t.isSolo = !t.isSolo; }); }},
    {"Tracks", "Softer", SDLK_F7, 0,
     [](Desk& d) { ChangeMix(d, [](Track& t) { t.volume = std::max(t.volume - 1, -60.0); }); }},
    {"Tracks", "Louder", SDLK_F8, 0,
     [](Desk& d) { ChangeMix(d, [](Track& t) { t.volume = std::min(t.volume + 1, 12.0); }); }},
    {"Tracks", "To the left", SDLK_F9, 0,
     [](Desk& d) { ChangeMix(d, [](Track& t) { t.pan = std::max(t.pan - 0.125, -1.0); }); }},
    {"Tracks", "To the right", SDLK_F10, 0,
     [](Desk& d) { ChangeMix(d, [](Track& t) { t.pan = std::min(t.pan + 0.125, 1.0); }); }},
    {"Play", "Play or stop", SDLK_SPACE, 0, [](Desk& d) { d.editor.TogglePlay(); }},
    {"Play", "Loop notes, or no loop", SDLK_l, 0, LoopSelection},
    {"Play", "Cursor to the beginning", SDLK_HOME, 0, [](Desk& d) { d.editor.SetCursor(0); }},
    {"Play", "Cursor to the end", SDLK_END, 0, [](Desk& d) { d.editor.SetCursor(EndOf(d.editor.Song())); }},
    {"Play", "Cursor on", SDLK_PERIOD, 0, [](Desk& d) { d.editor.SetCursor(d.editor.cursor + d.editor.grid.Step()); }},
    {"Play", "Cursor back", SDLK_COMMA, 0,
     [](Desk& d) { d.editor.SetCursor(d.editor.cursor - std::min(d.editor.cursor, d.editor.grid.Step())); }},
    {"Play", "Slower", SDLK_F11, 0, [](Desk& d) { ChangeTempo(d, 1.02); }},
    {"Play", "Faster", SDLK_F12, 0, [](Desk& d) { ChangeTempo(d, 1 / 1.02); }},
    {"View", "Nearer", SDLK_EQUALS, 0, [](Desk& d) { d.editor.grid.SetZoom(d.editor.grid.Zoom() * 3 / 2); }},
    {"View", "Farther", SDLK_MINUS, 0, [](Desk& d) { d.editor.grid.SetZoom(d.editor.grid.Zoom() * 2 / 3); }},
    {"View", "Finer grid", SDLK_RIGHTBRACKET, 0, [](Desk& d) { d.editor.grid.SetStep(d.editor.grid.Step() / 2); }},
    {"View", "Coarser grid", SDLK_LEFTBRACKET, 0, [](Desk& d) { d.editor.grid.SetStep(d.editor.grid.Step() * 2); }},
    {"View", "Keys", SDLK_F1, 0, [](Desk& d) { d.dialogs.isHelpOpen = !d.dialogs.isHelpOpen; }},
};

std::string KeyText(const Command& command) {
    std::string text;
    for (const auto& [bit, name] : {std::pair{kCtrl, "Ctrl+"}, {kShift, "Shift+"}, {kAlt, "Alt+"}})
        text += command.modifiers & bit ? name : "";
    return text + SDL_GetKeyName(command.key);
}

} // namespace

void RunKey(Desk& desk, const SDL_Keysym& key) {
    const int modifiers =
        (key.mod & KMOD_CTRL ? kCtrl : 0) | (key.mod & KMOD_SHIFT ? kShift : 0) | (key.mod & KMOD_ALT ? kAlt : 0);
    for (const Command& command : kCommands)
        if (command.key == key.sym && command.modifiers == modifiers) {
            command.run(desk);
            return;
        }
}

void DrawMenus(Desk& desk) {
    if (!ImGui::BeginMenuBar())
        return;
    for (size_t i = 0; i < std::size(kCommands);) {
        const char* const menu = kCommands[i].menu;
        const bool isOpen = ImGui::BeginMenu(menu);
        for (; i < std::size(kCommands) && std::strcmp(kCommands[i].menu, menu) == 0; ++i)
            if (isOpen && ImGui::MenuItem(kCommands[i].name, KeyText(kCommands[i]).c_str()))
                kCommands[i].run(desk);
        if (isOpen)
            ImGui::EndMenu();
    }
    ImGui::EndMenuBar();
}

void DrawHelp(bool& isOpen) {
    if (!isOpen)
        return;
    ImGui::SetNextWindowSize({720, 520}, ImGuiCond_Appearing);
    if (ImGui::Begin("Keys", &isOpen, ImGuiWindowFlags_NoSavedSettings)) {
        ImGui::Columns(2, nullptr, false);
        for (const Command& command : kCommands) {
            ImGui::TextDisabled("%-16s", KeyText(command).c_str());
            ImGui::SameLine(120);
            ImGui::TextUnformatted(command.name);
            ImGui::NextColumn();
        }
        ImGui::Columns();
    }
    ImGui::End();
}

} // namespace editor
