#include "view/renderer.h"

#include <cstddef>

namespace editor {

Renderer::Renderer(SDL_Renderer* renderer) : m_renderer(renderer) {
    unsigned char* pixels = nullptr;
    int width = 0;
    int height = 0;
    ImGui::GetIO().Fonts->GetTexDataAsRGBA32(&pixels, &width, &height);
    m_font = SDL_CreateTexture(renderer, SDL_PIXELFORMAT_ABGR8888, SDL_TEXTUREACCESS_STATIC, width, height);
    SDL_UpdateTexture(m_font, nullptr, pixels, 4 * width);
    SDL_SetTextureBlendMode(m_font, SDL_BLENDMODE_BLEND);
    SDL_SetTextureScaleMode(m_font, SDL_ScaleModeLinear);
    ImGui::GetIO().Fonts->SetTexID(m_font);
    ImGui::GetIO().BackendFlags |= ImGuiBackendFlags_RendererHasVtxOffset;
}

Renderer::~Renderer() { SDL_DestroyTexture(m_font); }

void Renderer::Draw(const ImDrawData& data) {
    for (int i = 0; i < data.CmdListsCount; ++i) {
        const ImDrawList& list = *data.CmdLists[i];
        for (const ImDrawCmd& command : list.CmdBuffer) {
            const SDL_Rect clip{static_cast<int>(command.ClipRect.x), static_cast<int>(command.ClipRect.y),
                                static_cast<int>(command.ClipRect.z - command.ClipRect.x),
                                static_cast<int>(command.ClipRect.w - command.ClipRect.y)};
            if (clip.w <= 0 || clip.h <= 0 || command.UserCallback)
                continue;
            SDL_RenderSetClipRect(m_renderer, &clip);
            const ImDrawVert* const vertices = list.VtxBuffer.Data + command.VtxOffset;
            const auto count = list.VtxBuffer.Size - static_cast<int>(command.VtxOffset);
            SDL_RenderGeometryRaw(m_renderer, static_cast<SDL_Texture*>(command.GetTexID()), &vertices->pos.x,
                                  sizeof(ImDrawVert), reinterpret_cast<const SDL_Color*>(&vertices->col),
                                  sizeof(ImDrawVert), &vertices->uv.x, sizeof(ImDrawVert), count,
                                  list.IdxBuffer.Data + command.IdxOffset, static_cast<int>(command.ElemCount),
                                  sizeof(ImDrawIdx));
        }
    }
    SDL_RenderSetClipRect(m_renderer, nullptr);
}

} // namespace editor
