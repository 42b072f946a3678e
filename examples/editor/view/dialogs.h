#pragma once

#include "view/commands.h"

#include <string>
#include <vector>

namespace editor {

/// Questions to the user, one at a time: which file, whether to leave a song that is not saved.
class Dialogs {
public:
    enum Purpose { kOpen, kSave, kWave, kMidi };
    bool isHelpOpen = false;

    void AskForFile(Purpose purpose, Desk& desk);
    /// Saves under the name that the song has, else asks for one.
    void Save(Desk& desk);
    /// Does what leaves the song behind, after asking when that is not saved.
    void AskToLeave(void (*then)(Desk& desk)) { m_leave = then; }

    /// A dialog is on the screen, or comes: keys are its own.
    bool IsOpen() const { return m_isAsking || m_leave || m_isLeaving; }
    /// Counts in the frame to come, when what was typed before it is in its field.
    void TakeKey(SDL_Keycode key) { m_key = key; }
    void Draw(Desk& desk);

private:
    void DrawFileDialog(Desk& desk);
    void DrawLeaveDialog(Desk& desk);
    void ListFolder();
    void AcceptFile(Desk& desk);
    void Leave(Desk& desk, bool isSaving);

    Purpose m_purpose = kOpen;
    bool m_isAsking = false;
    SDL_Keycode m_key = SDLK_UNKNOWN;
    std::string m_file;
    std::string m_folder; ///< whose files are listed
    std::vector<std::string> m_files;
    void (*m_leave)(Desk&) = nullptr;
    bool m_isLeaving = false; ///< the question is on the screen
};

} // namespace editor
