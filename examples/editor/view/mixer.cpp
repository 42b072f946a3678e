#include "view/mixer.h"

#include "view/colors.h"

#include <algorithm>
#include <cmath>
#include <imgui.h>
#include <imgui_stdlib.h>

namespace editor {

namespace {

/// What the widget just drawn has changed goes into the song: one step from its taking hold to its letting go.
template <class Change>
void Apply(Editor& editor, bool hasChanged, const char* what, Change change) {
    static bool goesOn = false; // only one widget is held at a time
    if (ImGui::IsItemActivated())
        goesOn = false;
    if (hasChanged) {
        change(goesOn ? editor.history.Further() : editor.history.Step(what));
        goesOn = true;
    }
    if (ImGui::IsItemDeactivated() && editor.history.UndoName() == what)
        editor.history.Settle();
}

} // namespace

void Mixer::Draw(Editor& editor) {
    ImGui::BeginChild("mixer", {250, 0}, true);
    editor.isNaming = false;
    for (size_t i = 0; i < editor.Song().tracks.size(); ++i) {
        ImGui::PushID(static_cast<int>(i));
        DrawStrip(editor, i);
        ImGui::PopID();
    }
    ImGui::EndChild();
}

void Mixer::DrawStrip(Editor& editor, size_t place) {
    const Track track = editor.Song().tracks[place]; // a copy: what is drawn changes the song
    const auto into = [place](Document& song) -> Track& { return song.tracks[place]; };
    const ImVec2 corner = ImGui::GetCursorScreenPos();
    if (ImGui::Selectable("##choose", editor.track == place, 0, {14, 18}))
        editor.ChooseTrack(place);
    ImGui::GetWindowDrawList()->AddRectFilled(corner, {corner.x + 12, corner.y + 18}, TrackColor(place, 0.8F), 3);
    ImGui::SameLine();
    ImGui::SetNextItemWidth(112);
    std::string name = track.name;
    bool hasChanged = ImGui::InputText("##name", &name);
    editor.isNaming = editor.isNaming || ImGui::IsItemActive();
    Apply(editor, hasChanged, "Rename track", [&](Document& song) { into(song).name = name; });
    ImGui::SameLine();
    bool isMuted = track.isMuted;
    hasChanged = ImGui::Checkbox("M", &isMuted);
    Apply(editor, hasChanged, "Mute", [&](Document& song) { into(song).isMuted = isMuted; });
    ImGui::SameLine();
    bool isSolo = track.isSolo;
    hasChanged = ImGui::Checkbox("S", &isSolo);
    Apply(editor, hasChanged, "Solo", [&](Document& song) { into(song).isSolo = isSolo; });

    const std::string suiting = editor.VoiceOf(place);
    const std::string shown = !track.voice.empty() ? track.voice : "(" + (suiting.empty() ? "any" : suiting) + ")";
    ImGui::SetNextItemWidth(-1);
    if (ImGui::BeginCombo("##voice", shown.c_str())) {
        if (ImGui::Selectable("(the one that suits)", track.voice.empty()))
            into(editor.history.Step("Choose voice")).voice.clear();
        for (const std::string& voice : editor.library.Voices())
            if (ImGui::Selectable(voice.c_str(), voice == track.voice))
                into(editor.history.Step("Choose voice")).voice = voice;
        ImGui::EndCombo();
    }
    auto volume = static_cast<float>(track.volume);
    ImGui::SetNextItemWidth(-1);
    hasChanged = ImGui::SliderFloat("##volume", &volume, -60, 12, "%.1f dB", ImGuiSliderFlags_NoInput);
    Apply(editor, hasChanged, "Volume", [&](Document& song) { into(song).volume = std::clamp(volume, -60.0F, 12.0F); });
    auto pan = static_cast<float>(track.pan);
    ImGui::SetNextItemWidth(-1);
    hasChanged = ImGui::SliderFloat("##pan", &pan, -1, 1, "left - right: %.2f", ImGuiSliderFlags_NoInput);
    Apply(editor, hasChanged, "Pan", [&](Document& song) { into(song).pan = std::clamp(pan, -1.0F, 1.0F); });
    DrawMeter(editor, place);
    ImGui::Spacing();
    ImGui::Separator();
    ImGui::Spacing();
}

/// 60 dB from left to right; red from -3 dB on.
void Mixer::DrawMeter(Editor& editor, size_t place) {
    const auto peak = static_cast<float>(editor.player.Peak(place));
    m_levels[place] = std::max(peak, m_levels[place] * std::pow(0.05F, ImGui::GetIO().DeltaTime));
    const float share = std::clamp(1 + 20 * std::log10(std::max(m_levels[place], 1e-6F)) / 60, 0.0F, 1.0F);
    const ImVec2 at = ImGui::GetCursorScreenPos();
    const float width = ImGui::GetContentRegionAvail().x;
    ImDrawList& draw = *ImGui::GetWindowDrawList();
    draw.AddRectFilled(at, {at.x + width, at.y + 8}, kBlack, 2);
    draw.AddRectFilled(at, {at.x + width * share, at.y + 8}, share > 0.95F ? kPlayLine : IM_COL32(110, 200, 120, 255),
                       2);
    ImGui::Dummy({width, 8});
}

} // namespace editor
