#include "view/palette.h"

#include <cstring>

namespace editor {

Palette::~Palette() {
    for (const auto& [id, picture] : m_pictures)
        SDL_DestroyTexture(picture);
}

void Palette::Draw(Editor& editor) {
    ImGui::BeginChild("palette", {180, 0}, true);
    DrawGroup(editor, "Attacks", editor.library.Icons(kAttack), {DraggedIcon::kOfNote, kAttack, 0});
    DrawGroup(editor, "Releases", editor.library.Icons(kRelease), {DraggedIcon::kOfNote, kRelease, 0});
    DrawGroup(editor, "Transitions", editor.library.Icons(kTransition), {DraggedIcon::kOfNote, kTransition, 0});
    DrawGroup(editor, "Vibratos", editor.library.Icons(kVibrato), {DraggedIcon::kOfNote, kVibrato, 0});
    DrawGroup(editor, "Dynamics", editor.library.Dynamics(), {DraggedIcon::kOfTrack, kAttack, 0});
    DrawGroup(editor, "Voices", editor.library.Voices(), {DraggedIcon::kVoice, kAttack, 0});
    ImGui::EndChild();
}

void Palette::DrawGroup(Editor& editor, const char* title, const std::vector<std::string>& names, DraggedIcon icon) {
    if (!ImGui::CollapsingHeader(title, ImGuiTreeNodeFlags_DefaultOpen))
        return;
    ImGui::PushID(title);
    for (icon.index = 0; icon.index < names.size(); ++icon.index) {
        const std::string& name = names[icon.index];
        if (SDL_Texture* const picture = PictureOf(editor, icon, name)) {
            ImGui::Image(picture, {16, 15});
            ImGui::SameLine();
        }
        if (ImGui::Selectable(name.c_str()))
            Give(editor, icon);
        if (ImGui::BeginDragDropSource()) {
            ImGui::SetDragDropPayload(kIconPayload, &icon, sizeof icon);
            ImGui::TextUnformatted(name.c_str());
            ImGui::EndDragDropSource();
        }
    }
    ImGui::PopID();
}

void Palette::Give(Editor& editor, const DraggedIcon& icon) {
    if (icon.kind == DraggedIcon::kVoice)
        editor.Step("Choose voice").voice = editor.library.Voices()[icon.index];
    else if (icon.kind == DraggedIcon::kOfTrack)
        SetMark(editor.Step("Set dynamics"), editor.grid.SnapDown(editor.cursor),
                editor.library.Dynamics()[icon.index]);
    else if (!editor.selection.empty())
        SetIcon(editor.Step("Set icon"), editor.selection, icon.slot, editor.library.Icons(icon.slot)[icon.index]);
}

/// The databases' bitmaps are theirs, with rows from the bottom up; a texture is made of each once.
SDL_Texture* Palette::PictureOf(const Editor& editor, const DraggedIcon& icon, const std::string& name) {
    const std::optional<DWORD> id = icon.kind == DraggedIcon::kOfNote    ? editor.library.FindIcon(icon.slot, name)
                                    : icon.kind == DraggedIcon::kOfTrack ? editor.library.FindDynamics(name)
                                                                         : std::nullopt; // voices have no pictures
    if (!id)
        return nullptr;
    const auto [found, isNew] = m_pictures.try_emplace(*id, nullptr);
    if (!isNew)
        return found->second;
    BITMAP bitmap{};
    HBITMAP const handle = editor.library.Databases().Manager().GetButtonBitmap(*id);
    if (!handle || !GetObjectA(handle, sizeof bitmap, &bitmap) || bitmap.bmBitsPixel != 24 || !bitmap.bmBits)
        return nullptr;
    SDL_Surface* const surface =
        SDL_CreateRGBSurfaceWithFormat(0, bitmap.bmWidth, bitmap.bmHeight, 24, SDL_PIXELFORMAT_BGR24);
    for (int row = 0; surface && row < bitmap.bmHeight; ++row)
        std::memcpy(static_cast<char*>(surface->pixels) + row * surface->pitch,
                    static_cast<const char*>(bitmap.bmBits) + (bitmap.bmHeight - 1 - row) * bitmap.bmWidthBytes,
                    static_cast<size_t>(bitmap.bmWidth) * 3);
    found->second = surface ? SDL_CreateTextureFromSurface(m_renderer, surface) : nullptr;
    SDL_FreeSurface(surface);
    return found->second;
}

} // namespace editor
