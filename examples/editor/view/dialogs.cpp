#include "view/dialogs.h"

#include <algorithm>
#include <filesystem>
#include <imgui.h>
#include <imgui_stdlib.h>

namespace editor {

namespace fs = std::filesystem;

namespace {

constexpr const char* kTitles[] = {"Open or import###file", "Save as###file", "Sing into a wave###file",
                                   "Write engine MIDI###file"};
constexpr const char* kEndings[] = {"", ".torv", ".wav", ".mid"};
constexpr const char* kLeaveTitle = "The song is not saved";
constexpr ImGuiWindowFlags kFlags = ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoSavedSettings;

bool BeginDialog(const char* title, bool isWanted, ImGuiWindowFlags flags) {
    if (isWanted && !ImGui::IsPopupOpen(title))
        ImGui::OpenPopup(title);
    return ImGui::BeginPopupModal(title, nullptr, flags);
}

/// Ends it, for good unless it is wanted still.
void EndDialog(bool isWanted) {
    if (!isWanted)
        ImGui::CloseCurrentPopup();
    ImGui::EndPopup();
}

} // namespace

void Dialogs::AskForFile(Purpose purpose, Desk& desk) {
    m_purpose = purpose;
    m_isAsking = true;
    const std::string& path = desk.editor.path;
    const fs::path folder = path.empty() ? fs::current_path() : fs::path(path).parent_path();
    const std::string stem = path.empty() ? "song" : fs::path(path).stem().string();
    m_file = purpose == kOpen ? (folder / "").string() : (folder / (stem + kEndings[purpose])).string();
}

void Dialogs::Save(Desk& desk) {
    if (desk.editor.path.empty())
        AskForFile(kSave, desk);
    else
        desk.editor.Save(desk.editor.path);
}

void Dialogs::Draw(Desk& desk) {
    if (m_leave && !m_isLeaving) {
        if (desk.editor.history.IsModified())
            m_isLeaving = true;
        else
            Leave(desk, false);
    }
    DrawLeaveDialog(desk);
    DrawFileDialog(desk);
    DrawHelp(isHelpOpen);
    m_key = SDLK_UNKNOWN;
}

void Dialogs::Leave(Desk& desk, bool isSaving) {
    void (*const then)(Desk&) = m_leave;
    m_leave = nullptr;
    m_isLeaving = false;
    if (isSaving) {
        Save(desk);
        if (desk.editor.history.IsModified())
            return; // a name is asked for, or the disk refused: nothing is left behind
    }
    then(desk);
}

void Dialogs::AcceptFile(Desk& desk) {
    std::error_code ignored;
    if (m_file.empty() || fs::is_directory(m_file, ignored))
        return;
    m_isAsking = false;
    Editor& editor = desk.editor;
    switch (m_purpose) {
    case kOpen:
        return editor.Open(m_file);
    case kSave:
        return editor.Save(m_file);
    case kWave:
        return editor.ExportWaveTo(m_file);
    case kMidi:
        return editor.ExportMidiTo(m_file);
    }
}

/// Folders first; hidden ones are left out.
void Dialogs::ListFolder() {
    m_files.clear();
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_folder, error)) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with('.'))
            m_files.push_back(entry.is_directory(error) ? name + "/" : name);
    }
    std::sort(m_files.begin(), m_files.end(), [](const std::string& a, const std::string& b) {
        return std::pair(!a.ends_with('/'), a) < std::pair(!b.ends_with('/'), b);
    });
}

void Dialogs::DrawFileDialog(Desk& desk) {
    ImGui::SetNextWindowSize({620, 380});
    if (!BeginDialog(kTitles[m_purpose], m_isAsking && !m_isLeaving, kFlags))
        return;
    if (ImGui::IsWindowAppearing())
        ImGui::SetKeyboardFocusHere();
    ImGui::SetNextItemWidth(-1);
    ImGui::InputText("##file", &m_file);
    const std::string folder = fs::path(m_file).parent_path().string();
    if (folder != m_folder || ImGui::IsWindowAppearing()) {
        m_folder = folder;
        ListFolder();
    }
    ImGui::BeginChild("files", {0, -34}, true);
    for (const std::string& name : m_files)
        if (ImGui::Selectable(name.c_str(), false, ImGuiSelectableFlags_DontClosePopups))
            m_file = (fs::path(m_folder) / name).string();
    ImGui::EndChild();
    if (ImGui::Button("OK (Return)") || m_key == SDLK_RETURN)
        AcceptFile(desk);
    ImGui::SameLine();
    if (ImGui::Button("Cancel (Esc)") || m_key == SDLK_ESCAPE)
        m_isAsking = false;
    EndDialog(m_isAsking);
}

void Dialogs::DrawLeaveDialog(Desk& desk) {
    if (!BeginDialog(kLeaveTitle, m_isLeaving, kFlags | ImGuiWindowFlags_AlwaysAutoResize))
        return;
    ImGui::TextUnformatted("What was changed would be lost.");
    if (ImGui::Button("Save (Return)") || m_key == SDLK_RETURN)
        Leave(desk, true);
    ImGui::SameLine();
    if (ImGui::Button("Discard (D)") || m_key == SDLK_d)
        Leave(desk, false);
    ImGui::SameLine();
    if (ImGui::Button("Cancel (Esc)") || m_key == SDLK_ESCAPE) {
        m_leave = nullptr;
        m_isLeaving = false;
    }
    EndDialog(m_isLeaving);
}

} // namespace editor
