#include "torv/database/button_bitmap.h"

namespace torv {
namespace {

constexpr WORD kDefaultButton = 1000;

} // namespace

ButtonBitmap ButtonBitmap::Load(const char* path) {
    HBITMAP bitmap = nullptr;
    if (path && *path)
        bitmap = reinterpret_cast<HBITMAP>(
            LoadImageA(nullptr, path, IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE | LR_CREATEDIBSECTION));
    if (!bitmap)
        bitmap = LoadBitmapA(LibraryModule(), MAKEINTRESOURCEA(kDefaultButton));
    return ButtonBitmap(bitmap);
}

ButtonBitmap::~ButtonBitmap() {
    if (m_bitmap)
        DeleteObject(m_bitmap);
}

} // namespace torv
