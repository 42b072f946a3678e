#pragma once

#include "view/roll_view.h"

#include <SDL.h>
#include <map>

namespace editor {

/// The icons of the databases with their pictures, to be dragged on notes; a click gives one to the chosen notes.
class Palette {
public:
    explicit Palette(SDL_Renderer* renderer) : m_renderer(renderer) {}
    ~Palette();
    Palette(const Palette&) = delete;
    Palette& operator=(const Palette&) = delete;

    void Draw(Editor& editor);

private:
    void DrawGroup(Editor& editor, const char* title, const std::vector<std::string>& names, DraggedIcon icon);
    void Give(Editor& editor, const DraggedIcon& icon);
    SDL_Texture* PictureOf(const Editor& editor, const DraggedIcon& icon, const std::string& name);

    SDL_Renderer* m_renderer;
    std::map<DWORD, SDL_Texture*> m_pictures; ///< by icon; null for one without
};

} // namespace editor
