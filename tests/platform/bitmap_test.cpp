#include "platform/temp_folder.h"

#include <doctest/doctest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

/// Places in a bitmap file's headers, and their bytes.
struct Field {
    std::size_t at;
    int bytes;
};
constexpr Field kOffset{10, 4}, kHeaderBytes{14, 4}, kWidth{18, 4}, kHeight{22, 4}, kPlanes{26, 2}, kBits{28, 2},
    kCompression{30, 4};

void Put(std::string& file, Field field, LONG value) {
    for (int n = 0; n < field.bytes; ++n)
        file[field.at + static_cast<std::size_t>(n)] = static_cast<char>(value >> (8 * n));
}

std::string File(LONG width, LONG height, WORD bits, const std::string& rest) {
    std::string file = "BM" + std::string(52, '\0') + rest;
    Put(file, {2, 4}, static_cast<LONG>(file.size()));
    Put(file, kOffset, 54);
    Put(file, kHeaderBytes, 40);
    Put(file, kWidth, width);
    Put(file, kHeight, height);
    Put(file, kPlanes, 1);
    Put(file, kBits, bits);
    return file;
}

/// 2 x 3 pixels of 24 bits: rows of 6 bytes and 2 of padding.
std::string Small() { return File(2, 3, 24, "bottom..middle..top---.."); }

HANDLE LoadFile(const std::string& path) {
    return LoadImageA(nullptr, path.c_str(), IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE | LR_CREATEDIBSECTION);
}

/// The bytes of a bitmap's pixels, from the bottom row up, without the padding, which each system fills as it likes;
/// "(null)" when it is refused.
std::string PixelsOf(HANDLE image) {
    BITMAP bitmap{};
    if (!GetObjectA(image, sizeof(bitmap), &bitmap))
        return "(null)";
    CHECK(bitmap.bmType == 0);
    CHECK(bitmap.bmPlanes == 1);
    CHECK(bitmap.bmWidthBytes % 4 == 0);
    std::string pixels;
    for (LONG row = 0; row < bitmap.bmHeight; ++row)
        pixels.append(static_cast<const char*>(bitmap.bmBits) + row * bitmap.bmWidthBytes,
                      static_cast<std::size_t>((bitmap.bmWidth * bitmap.bmBitsPixel + 7) / 8));
    return pixels;
}

std::string PixelsIn(const std::string& file) {
    const TempFolder folder;
    const HANDLE image = LoadFile(folder.File("a.bmp", file));
    const std::string pixels = PixelsOf(image);
    CHECK(DeleteObject(image) == (pixels != "(null)"));
    return pixels;
}

} // namespace

TEST_CASE("bitmap: a file's rows become a section's rows, padded to four bytes") {
    CHECK(PixelsIn(Small()) == "bottommiddletop---");
    CHECK(PixelsIn(File(2, 3, 32, "bottom..middle..top---..")) == "bottom..middle..top---..");
    std::string gap = File(2, 3, 24, "gap bottom..middle..top---..and more");
    Put(gap, kOffset, 58);
    CHECK(PixelsIn(gap) == "bottommiddletop---");
}

TEST_CASE("bitmap: each that was loaded lives until it is deleted, and descriptions fit their place") {
    const TempFolder folder;
    folder.Folder("Images");
    folder.File("Images/Button.bmp", Small());
    const HANDLE image = LoadFile(folder.Path("Images/Button.bmp"));
    const HANDLE other = LoadFile(folder.Path("IMAGES\\BUTTON.BMP")); // any case of letters leads to it
    REQUIRE(image);
    CHECK(image != other);
    for (const char* none : {"Images/none.bmp", "Images", "none/none.bmp"})
        CHECK_FALSE(LoadFile(folder.Path(none)));
    BITMAP bitmap{};
    CHECK(GetObjectA(image, 0, nullptr) == sizeof(bitmap));
    CHECK(GetObjectA(image, sizeof(bitmap) - 1, &bitmap) == 0);
    CHECK(bitmap.bmBits == nullptr);
    CHECK(DeleteObject(image));
    CHECK(PixelsOf(image) == "(null)");
    CHECK_FALSE(DeleteObject(image));
    CHECK(PixelsOf(other) == "bottommiddletop---");
    CHECK(DeleteObject(other));
    CHECK_FALSE(DeleteObject(nullptr));
    for (const char* name : {static_cast<const char*>(MAKEINTRESOURCEA(60001)), "no such name"})
        CHECK_FALSE(LoadBitmapA(torv::LibraryModule(), name));
    CHECK_FALSE(LoadBitmapA(nullptr, MAKEINTRESOURCEA(1)));
}

#if !defined(_WIN32)
namespace {

void CheckRefused(const std::string& file) {
    const TempFolder folder;
    CHECK_FALSE(LoadFile(folder.File("a.bmp", file)));
    CHECK(GetLastError() == ERROR_INVALID_DATA);
}

} // namespace

TEST_CASE("bitmap: rows from the top down are turned over; every depth keeps its own") {
    CHECK(PixelsIn(File(2, -3, 24, "bottom..middle..top---..")) == "top---middlebottom");
    CHECK(PixelsIn(File(2, -2, 24, "bottom..middle..")) == "middlebottom");
    for (const WORD bits : {1, 4, 8, 16, 24, 32}) {
        for (LONG width = 1; width < 70; width += 3) {
            CAPTURE(bits);
            CAPTURE(width);
            const auto used = static_cast<std::size_t>(width * bits + 7) / 8;
            const std::size_t padded = (used + 3) / 4 * 4;
            const std::string rows = std::string(padded, 'a') + std::string(padded, 'b');
            CHECK(PixelsIn(File(width, 2, bits, rows)) == std::string(used, 'a') + std::string(used, 'b'));
            CheckRefused(File(width, 2, bits, rows.substr(1)));
        }
    }
    CHECK(PixelsIn(File(16384, 1, 1, std::string(2048, 'x'))).size() == 2048);
    CheckRefused(File(16385, 1, 1, std::string(2052, 'x'))); // a side too long, though all is there
}

TEST_CASE("bitmap: a file that lies is refused") {
    const struct {
        Field field;
        std::vector<LONG> lies;
    } rows[] = {{{0, 2}, {0x4142}},
                {kOffset, {55, 53, -1}}, // 53: inside the headers
                {kHeaderBytes, {12, -1}},
                {kPlanes, {0}},
                {kCompression, {1}},
                {kBits, {0, 2, 12, 48, 0xFFFF}},
                {kHeight, {0, 16384, 16385, 0x7FFFFFFF, -0x7FFFFFFF - 1, -16385}},
                {kWidth, {0, -2, 16384, 16385, 0x2AAAAAAB, 0x7FFFFFFF, -0x7FFFFFFF - 1}}};
    for (const auto& row : rows) {
        for (const LONG lie : row.lies) {
            CAPTURE(row.field.at);
            CAPTURE(lie);
            std::string file = Small();
            Put(file, row.field, lie);
            CheckRefused(file);
        }
    }
    for (std::size_t length = 0; length < Small().size(); ++length)
        CheckRefused(Small().substr(0, length));
}

TEST_CASE("bitmap: resources live as long as their tables, the latest is asked first") {
    const HMODULE module = torv::LibraryModule();
    const auto pixelsOf = [module](UINT id) {
        const HBITMAP image = LoadBitmapA(module, MAKEINTRESOURCEA(id));
        const std::string pixels = PixelsOf(image);
        DeleteObject(image);
        return pixels;
    };
    const auto bytesOf = [](const std::string& text) { return std::vector<BYTE>(text.begin(), text.end()); };
    const std::vector<BYTE> one = bytesOf(File(1, 1, 32, "one."));
    const std::vector<BYTE> two = bytesOf(File(1, 1, 32, "two."));
    const torv::BitmapEntry entries[] = {{60002, one}, {60003, two}};
    const torv::BitmapEntry later[] = {{60002, two}};
    HBITMAP kept = nullptr;
    {
        const torv::BitmapTable table(entries);
        {
            const torv::BitmapTable laterTable(later);
            CHECK(pixelsOf(60002) + pixelsOf(60003) == "two.two.");
        }
        CHECK(pixelsOf(60002) == "one.");
        kept = LoadBitmapA(module, MAKEINTRESOURCEA(60002));
        CHECK_FALSE(LoadBitmapA(nullptr, MAKEINTRESOURCEA(60003))); // the module that has it must be named
        CHECK_FALSE(LoadImageA(module, MAKEINTRESOURCEA(60003), IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE));
    }
    CHECK(pixelsOf(60002) == "(null)");
    CHECK(PixelsOf(kept) == "one."); // what is loaded has its own pixels
    CHECK(DeleteObject(kept));
}
#endif
