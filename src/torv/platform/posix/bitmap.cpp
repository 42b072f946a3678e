#include "torv/platform/posix/bitmap.h"

#include "torv/platform/immortal.h"
#include "torv/platform/library_module.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/posix/bitmap_file.h"
#include "torv/platform/posix/last_error.h"

#include <cstring>
#include <mutex>
#include <unordered_map>

namespace {

/// The bitmaps that live, by handle (never used twice), and the tables, latest first.
struct Bitmaps {
    std::mutex mutex;
    std::unordered_map<HGDIOBJ, torv::Pixels> loaded;
    ULONG_PTR lastHandle = 0;
    torv::BitmapTable* firstTable = nullptr;
};

Bitmaps& TheBitmaps() { return torv::Immortal<Bitmaps>(); }

DWORD ReadResource(HINSTANCE instance, LPCSTR name, torv::Pixels& pixels) {
    const auto id = reinterpret_cast<ULONG_PTR>(name); // a number in place of a name; no bitmap has a name
    const auto file = instance && instance == torv::LibraryModule() && id <= 0xFFFF
                          ? torv::BitmapTable::Find(static_cast<UINT>(id))
                          : std::span<const BYTE>();
    return file.empty() ? ERROR_RESOURCE_NAME_NOT_FOUND : torv::ReadBitmap(file, pixels);
}

DWORD Read(HINSTANCE instance, LPCSTR name, UINT type, int width, int height, UINT flags, torv::Pixels& pixels) {
    if (type != IMAGE_BITMAP || width != 0 || height != 0)
        return ERROR_INVALID_PARAMETER;
    if (!(flags & LR_LOADFROMFILE))
        return ReadResource(instance, name, pixels);
    return reinterpret_cast<ULONG_PTR>(name) > 0xFFFF ? torv::ReadBitmapFile(name, pixels) : ERROR_INVALID_PARAMETER;
}

} // namespace

HANDLE LoadImageA(HINSTANCE instance, LPCSTR name, UINT type, int width, int height, UINT flags) {
    return torv::OrFail(HANDLE(), [&] {
        torv::Pixels pixels;
        if (const DWORD error = Read(instance, name, type, width, height, flags, pixels)) {
            SetLastError(error);
            return HANDLE();
        }
        Bitmaps& bitmaps = TheBitmaps();
        const std::lock_guard lock(bitmaps.mutex);
        const auto handle = reinterpret_cast<HANDLE>(++bitmaps.lastHandle);
        bitmaps.loaded.emplace(handle, std::move(pixels));
        return handle;
    });
}

HBITMAP LoadBitmapA(HINSTANCE instance, LPCSTR name) {
    return static_cast<HBITMAP>(LoadImageA(instance, name, IMAGE_BITMAP, 0, 0, 0));
}

int GetObjectA(HGDIOBJ object, int size, LPVOID description) {
    constexpr int kBytes = sizeof(BITMAP);
    Bitmaps& bitmaps = TheBitmaps();
    const std::lock_guard lock(bitmaps.mutex);
    const auto found = bitmaps.loaded.find(object);
    if (found == bitmaps.loaded.end() || (description && size < kBytes)) {
        SetLastError(found == bitmaps.loaded.end() ? ERROR_INVALID_HANDLE : ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (description) {
        torv::Pixels& pixels = found->second;
        const BITMAP bitmap = {0, pixels.width,     pixels.height,     pixels.widthBytes,
                               1, pixels.bitsPixel, pixels.bits.data()};
        std::memcpy(description, &bitmap, sizeof(bitmap));
    }
    return kBytes;
}

BOOL DeleteObject(HGDIOBJ object) {
    Bitmaps& bitmaps = TheBitmaps();
    const std::lock_guard lock(bitmaps.mutex);
    if (bitmaps.loaded.erase(object))
        return TRUE;
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

namespace torv {

BitmapTable::BitmapTable(std::span<const BitmapEntry> entries) : m_entries(entries) {
    Bitmaps& bitmaps = TheBitmaps();
    const std::lock_guard lock(bitmaps.mutex);
    m_next = bitmaps.firstTable;
    bitmaps.firstTable = this;
}

BitmapTable::~BitmapTable() {
    Bitmaps& bitmaps = TheBitmaps();
    const std::lock_guard lock(bitmaps.mutex);
    BitmapTable** at = &bitmaps.firstTable;
    while (*at != this)
        at = &(*at)->m_next;
    *at = m_next;
}

std::span<const BYTE> BitmapTable::Find(UINT id) {
    Bitmaps& bitmaps = TheBitmaps();
    const std::lock_guard lock(bitmaps.mutex);
    for (const BitmapTable* table = bitmaps.firstTable; table; table = table->m_next)
        for (const BitmapEntry& entry : table->m_entries)
            if (entry.id == id)
                return entry.file;
    return {};
}

} // namespace torv
