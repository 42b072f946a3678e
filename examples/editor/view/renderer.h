#pragma once

#include <SDL.h>
#include <imgui.h>

namespace editor {

/// Draws what Dear ImGui has put together with SDL's own renderer, which is there on every machine, with or without a
/// graphics card. To be made after the fonts were chosen.
class Renderer {
public:
    explicit Renderer(SDL_Renderer* renderer);
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    void Draw(const ImDrawData& data);

private:
    SDL_Renderer* m_renderer;
    SDL_Texture* m_font;
};

} // namespace editor
