#pragma once

#include "torv/platform/export.h"
#include "torv/platform/posix/types.h"

#include <span>

/// Bitmaps as rows of pixels in memory, whatever display there is or is not: every one is what Windows calls a DIB
/// section. A handle is looked up in one table; `bmBits` is good until the handle is deleted.

struct BITMAP {
    LONG bmType;
    LONG bmWidth;
    LONG bmHeight; // always positive: rows go from the bottom up
    LONG bmWidthBytes;
    WORD bmPlanes;
    WORD bmBitsPixel;
    LPVOID bmBits;
};

constexpr UINT IMAGE_BITMAP = 0;
constexpr UINT LR_LOADFROMFILE = 0x10;
constexpr UINT LR_CREATEDIBSECTION = 0x2000;
#define MAKEINTRESOURCEA(id) (reinterpret_cast<LPSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(id))))

/// With LR_LOADFROMFILE the uncompressed bitmap file of that name, in any case of letters; else the bitmap of that
/// number in a BitmapTable, for this library's module alone. The pixels keep the file's depth (palettes are not kept).
/// Only IMAGE_BITMAP, and only the bitmap's own size, which is 0 x 0 here.
TORV_API HANDLE LoadImageA(HINSTANCE instance, LPCSTR name, UINT type, int width, int height, UINT flags);
TORV_API HBITMAP LoadBitmapA(HINSTANCE instance, LPCSTR name);
/// Describes a bitmap and returns the bytes of the description, with a null place for it as well; else 0.
TORV_API int GetObjectA(HGDIOBJ object, int size, LPVOID description);
TORV_API BOOL DeleteObject(HGDIOBJ object);

namespace torv {

struct BitmapEntry {
    UINT id;
    std::span<const BYTE> file;
};

/// Bitmap resources compiled in, each the bytes of a whole file: found as long as the object lives, the latest table
/// first. Meant as an object with static storage beside its entries, which must outlive it.
class TORV_API BitmapTable {
public:
    explicit BitmapTable(std::span<const BitmapEntry> entries);
    ~BitmapTable();
    BitmapTable(const BitmapTable&) = delete;
    BitmapTable& operator=(const BitmapTable&) = delete;

    /// Empty when no table has it.
    static std::span<const BYTE> Find(UINT id);

private:
    std::span<const BitmapEntry> m_entries;
    BitmapTable* m_next = nullptr;
};

} // namespace torv
