#pragma once

#include "view/editor.h"

#include <SDL.h>

namespace editor {

class Dialogs;
class LyricTyping;

/// What a command may reach.
struct Desk {
    Editor& editor;
    Dialogs& dialogs;
    LyricTyping& typing;
};

/// Everything that can be done stands in one table, from which menu, keys and the page of help are made: so nothing can
/// be reached by the mouse alone.
struct Command {
    const char* menu;
    const char* name;
    SDL_Keycode key;
    int modifiers; ///< of kCtrl, kShift, kAlt
    void (*run)(Desk& desk);
};
enum Modifier : int { kCtrl = 1, kShift = 2, kAlt = 4 };

/// Runs what the key says, if anything.
void RunKey(Desk& desk, const SDL_Keysym& key);
void DrawMenus(Desk& desk);
/// The page of keys.
void DrawHelp(bool& isOpen);

} // namespace editor
