#pragma once

#include "torv/platform/platform.h"

#include <utility>

namespace torv {

/// The picture of an icon's button; goes with the object.
class ButtonBitmap {
public:
    /// The picture in the file, or the library's own when `path` is empty or holds none.
    static ButtonBitmap Load(const char* path);

    ButtonBitmap() = default;
    ButtonBitmap(ButtonBitmap&& other) noexcept : m_bitmap(std::exchange(other.m_bitmap, nullptr)) {}
    ButtonBitmap& operator=(ButtonBitmap&& other) noexcept {
        std::swap(m_bitmap, other.m_bitmap);
        return *this;
    }
    ~ButtonBitmap();

    HBITMAP Get() const { return m_bitmap; }

private:
    explicit ButtonBitmap(HBITMAP bitmap) : m_bitmap(bitmap) {}

    HBITMAP m_bitmap = nullptr;
};

} // namespace torv
