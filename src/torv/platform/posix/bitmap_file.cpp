#include "torv/platform/posix/bitmap_file.h"

#include "torv/platform/afx/file.h"
#include "torv/platform/file_handle.h"
#include "torv/platform/or_fail.h"
#include "torv/platform/posix/last_error.h"

#include <algorithm>
#include <cstring>

namespace torv {
namespace {

constexpr LONG kMaxSide = 16384;
constexpr std::size_t kFileHeader = 14;
constexpr std::size_t kHeaders = kFileHeader + 40; // with the part of the second header that all versions share

/// What the headers promise.
struct Layout {
    ULONGLONG offset = 0;
    ULONGLONG bytes = 0;
    bool isTopDown = false;
};

DWORD Number(std::span<const BYTE> bytes, std::size_t at, std::size_t width) {
    DWORD number = 0;
    for (std::size_t n = 0; n < width; ++n)
        number |= static_cast<DWORD>(bytes[at + n]) << (8 * n);
    return number;
}

bool IsKnownDepth(DWORD bits) { return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32; }

DWORD ReadHeaders(std::span<const BYTE> head, Layout& layout, Pixels& pixels) {
    if (head.size() < kHeaders || head[0] != 'B' || head[1] != 'M')
        return ERROR_INVALID_DATA;
    const DWORD headerBytes = Number(head, 14, 4);
    const auto width = static_cast<LONG>(Number(head, 18, 4));
    const auto height = static_cast<LONG>(Number(head, 22, 4)); // negative: rows from the top down
    const DWORD planes = Number(head, 26, 2);
    const DWORD bitsPixel = Number(head, 28, 2);
    const DWORD compression = Number(head, 30, 4);
    layout.offset = Number(head, 10, 4);
    if (headerBytes < 40 || layout.offset < kFileHeader + ULONGLONG(headerBytes) || planes != 1 || compression != 0 ||
        !IsKnownDepth(bitsPixel) || width < 1 || width > kMaxSide || height == 0 || height < -kMaxSide ||
        height > kMaxSide)
        return ERROR_INVALID_DATA;
    layout.isTopDown = height < 0;
    pixels.width = width;
    pixels.height = layout.isTopDown ? -height : height;
    pixels.bitsPixel = static_cast<WORD>(bitsPixel);
    pixels.widthBytes = (width * static_cast<LONG>(bitsPixel) + 31) / 32 * 4;
    layout.bytes = static_cast<ULONGLONG>(pixels.widthBytes) * static_cast<ULONGLONG>(pixels.height);
    return NO_ERROR;
}

DWORD MakeRoom(const Layout& layout, ULONGLONG length, Pixels& pixels) {
    if (length < layout.offset || length - layout.offset < layout.bytes)
        return ERROR_INVALID_DATA;
    pixels.bits.resize(static_cast<std::size_t>(layout.bytes));
    return NO_ERROR;
}

void TurnOver(Pixels& pixels) {
    const auto row = static_cast<std::ptrdiff_t>(pixels.widthBytes);
    auto top = pixels.bits.begin();
    for (auto bottom = pixels.bits.end() - row; top < bottom; top += row, bottom -= row)
        std::swap_ranges(top, top + row, bottom);
}

/// The whole number of bytes, or ERROR_INVALID_DATA for a file that ends before.
DWORD ReadAll(FileHandle file, BYTE* bytes, ULONGLONG count) {
    UINT done = 0;
    const DWORD error = ReadFileHandle(file, bytes, static_cast<UINT>(count), done);
    return !error && done < count ? ERROR_INVALID_DATA : error;
}

DWORD ReadOpenFile(FileHandle file, Pixels& pixels) {
    BYTE head[kHeaders];
    Layout layout;
    ULONGLONG length = 0;
    DWORD error = ReadAll(file, head, kHeaders);
    if (!error)
        error = ReadHeaders(head, layout, pixels);
    if (!error)
        error = FileHandleLength(file, length);
    if (!error)
        error = MakeRoom(layout, length, pixels);
    if (!error)
        error = SeekFileHandle(file, static_cast<LONGLONG>(layout.offset), SeekFrom::Begin, length);
    if (!error)
        error = ReadAll(file, pixels.bits.data(), layout.bytes);
    if (!error && layout.isTopDown)
        TurnOver(pixels);
    return error;
}

} // namespace

DWORD ReadBitmap(std::span<const BYTE> file, Pixels& pixels) {
    Layout layout;
    DWORD error = ReadHeaders(file, layout, pixels);
    if (!error)
        error = MakeRoom(layout, file.size(), pixels);
    if (error)
        return error;
    std::memcpy(pixels.bits.data(), file.data() + layout.offset, pixels.bits.size());
    if (layout.isTopDown)
        TurnOver(pixels);
    return NO_ERROR;
}

DWORD ReadBitmapFile(const char* path, Pixels& pixels) {
    FileHandle file = kNoFile;
    std::string fullPath;
    DWORD error = OpenFileHandle(path, CFile::modeRead | CFile::shareDenyWrite, file, fullPath);
    if (error)
        return error;
    error = OrFail(ERROR_NOT_ENOUGH_MEMORY, [&] { return ReadOpenFile(file, pixels); });
    CloseFileHandle(file);
    return error;
}

} // namespace torv
