#include "platform/temp_folder.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace {

/// A bitmap file piece by piece, so that each case can lie in one place.
struct FileParts {
    std::string magic = "BM";
    std::uint32_t offset = 54;
    std::uint32_t headerBytes = 40;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint16_t planes = 1;
    std::uint16_t bitsPixel = 24;
    std::uint32_t compression = 0;
    std::string rest; // from byte 54 on

    std::string Bytes() const {
        std::string bytes = magic;
        const auto add = [&bytes](std::uint32_t number, int width_) {
            for (int n = 0; n < width_; ++n)
                bytes += static_cast<char>(number >> (8 * n));
        };
        add(static_cast<std::uint32_t>(54 + rest.size()), 4);
        add(0, 4);
        for (const std::uint32_t number :
             {offset, headerBytes, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)})
            add(number, 4);
        add(planes, 2);
        add(bitsPixel, 2);
        add(compression, 4);
        for (int n = 0; n < 5; ++n)
            add(0, 4);
        return bytes + rest;
    }
};

/// 2 x 3 pixels of 24 bits: rows of 6 bytes and 2 of padding.
FileParts Small() {
    FileParts parts;
    parts.width = 2;
    parts.height = 3;
    parts.rest = "bottom..middle..top---..";
    return parts;
}

HANDLE LoadFile(const std::string& path) {
    return LoadImageA(nullptr, path.c_str(), IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE | LR_CREATEDIBSECTION);
}

/// The bytes of a bitmap file's pixels, from the bottom row up; "(null)" when it is refused.
std::string PixelsOf(const FileParts& parts) {
    const TempFolder folder;
    const HANDLE image = LoadFile(folder.File("a.bmp", parts.Bytes()));
    if (!image)
        return "(null)";
    BITMAP bitmap{};
    REQUIRE(GetObjectA(image, sizeof(bitmap), &bitmap) == sizeof(bitmap));
    CHECK(bitmap.bmType == 0);
    CHECK(bitmap.bmPlanes == 1);
    CHECK(bitmap.bmWidth == parts.width);
    CHECK(bitmap.bmHeight == std::abs(parts.height));
    CHECK(bitmap.bmBitsPixel == parts.bitsPixel);
    CHECK(bitmap.bmWidthBytes % 4 == 0);
    std::string pixels;
    for (LONG row = 0; row < bitmap.bmHeight; ++row) // without the padding, which each system fills as it likes
        pixels.append(static_cast<const char*>(bitmap.bmBits) + row * bitmap.bmWidthBytes,
                      static_cast<std::size_t>((bitmap.bmWidth * bitmap.bmBitsPixel + 7) / 8));
    CHECK(DeleteObject(image));
    return pixels;
}

} // namespace

TEST_CASE("bitmap: a file's rows become a section's rows, padded to four bytes") {
    FileParts parts = Small();
    CHECK(PixelsOf(parts) == "bottommiddletop---");
    parts.rest = "gap bottom..middle..top---..and more";
    parts.offset = 58;
    CHECK(PixelsOf(parts) == "bottommiddletop---");
    parts = Small();
    parts.bitsPixel = 32;
    parts.rest = "bottom..middle..top---..";
    CHECK(PixelsOf(parts) == parts.rest);
}

TEST_CASE("bitmap: any case of letters leads to the file") {
    const TempFolder folder;
    folder.Folder("Images");
    folder.File("Images/Button.bmp", Small().Bytes());
    const HANDLE image = LoadFile(folder.Path("IMAGES\\BUTTON.BMP"));
    REQUIRE(image);
    CHECK(DeleteObject(image));
    CHECK_FALSE(LoadFile(folder.Path("Images/none.bmp")));
    CHECK_FALSE(LoadFile(folder.Path("Images")));
    CHECK_FALSE(LoadFile(folder.Path("none/none.bmp")));
}

TEST_CASE("bitmap: a deleted one is refused, and descriptions fit their place") {
    const TempFolder folder;
    const std::string path = folder.File("a.bmp", Small().Bytes());
    const HANDLE image = LoadFile(path);
    const HANDLE other = LoadFile(path);
    REQUIRE(image);
    CHECK(image != other);
    BITMAP bitmap{};
    CHECK(GetObjectA(image, 0, nullptr) == sizeof(bitmap));
    CHECK(GetObjectA(image, sizeof(bitmap) - 1, &bitmap) == 0);
    CHECK(bitmap.bmBits == nullptr);
    CHECK(DeleteObject(image));
    CHECK(GetObjectA(image, sizeof(bitmap), &bitmap) == 0);
    CHECK_FALSE(DeleteObject(image));
    CHECK_FALSE(DeleteObject(nullptr));
    REQUIRE(GetObjectA(other, sizeof(bitmap), &bitmap) == sizeof(bitmap)); // the other one lives on
    CHECK(std::memcmp(bitmap.bmBits, "bottom", 6) == 0);
    CHECK(DeleteObject(other));
}

TEST_CASE("bitmap: a number that no one has is null") {
    CHECK_FALSE(LoadBitmapA(torv::LibraryModule(), MAKEINTRESOURCEA(60001)));
    CHECK_FALSE(LoadBitmapA(torv::LibraryModule(), "no such name"));
    CHECK_FALSE(LoadBitmapA(nullptr, MAKEINTRESOURCEA(1)));
}

#if !defined(_WIN32)
namespace {

/// Not one of them may be taken for a bitmap.
void CheckRefused(const FileParts& parts) {
    SetLastError(0);
    CHECK(PixelsOf(parts) == "(null)");
    CHECK(GetLastError() == ERROR_INVALID_DATA);
}

std::vector<BYTE> BytesOf(const std::string& text) { return {text.begin(), text.end()}; }

} // namespace

TEST_CASE("bitmap: rows from the top down are turned over; every depth keeps its own") {
    FileParts parts = Small();
    parts.height = -3;
    CHECK(PixelsOf(parts) == "top---middlebottom");
    parts.height = -2;
    CHECK(PixelsOf(parts) == "middlebottom");
    parts = Small();
    parts.height = 2;
    struct Depth {
        std::uint16_t bits;
        int width;
        std::size_t used;   // bytes of a row
        std::size_t padded; // in the file
    };
    for (const Depth& depth :
         {Depth{1, 32, 4, 4}, {1, 33, 5, 8}, {4, 8, 4, 4}, {4, 9, 5, 8}, {8, 4, 4, 4}, {8, 5, 5, 8}, {16, 3, 6, 8}}) {
        CAPTURE(depth.bits);
        CAPTURE(depth.width);
        parts.bitsPixel = depth.bits;
        parts.width = depth.width;
        parts.rest = std::string(depth.padded, 'a') + std::string(depth.padded, 'b');
        CHECK(PixelsOf(parts) == std::string(depth.used, 'a') + std::string(depth.used, 'b'));
        parts.rest.pop_back();
        CheckRefused(parts);
    }
}

TEST_CASE("bitmap: a file that lies is refused") {
    const FileParts good = Small();
    const auto refuses = [&good](auto lie) {
        FileParts parts = good;
        lie(parts);
        CheckRefused(parts);
    };
    refuses([](FileParts& parts) { parts.magic = "BA"; });
    refuses([](FileParts& parts) { parts.offset = 55; });
    refuses([](FileParts& parts) { parts.offset = 53; }); // inside the headers
    refuses([](FileParts& parts) { parts.offset = 0xFFFFFFFF; });
    refuses([](FileParts& parts) { parts.headerBytes = 12; });
    refuses([](FileParts& parts) { parts.headerBytes = 0xFFFFFFFF; });
    refuses([](FileParts& parts) { parts.planes = 0; });
    refuses([](FileParts& parts) { parts.compression = 1; });
    refuses([](FileParts& parts) { parts.rest.pop_back(); });
    refuses([](FileParts& parts) { parts.rest.clear(); });
    for (const std::uint16_t bits : {0, 2, 12, 48, 0xFFFF})
        refuses([bits](FileParts& parts) { parts.bitsPixel = bits; });
    for (const std::int32_t side : {0, 16384, 16385, 0x7FFFFFFF, -0x7FFFFFFF - 1, -16385})
        refuses([side](FileParts& parts) { parts.height = side; });
    for (const std::int32_t side : {0, -2, 16384, 16385, 0x2AAAAAAB, 0x7FFFFFFF, -0x7FFFFFFF - 1})
        refuses([side](FileParts& parts) { parts.width = side; });

    // Enough bytes, but a side too long.
    FileParts wide;
    wide.width = 16385;
    wide.height = 1;
    wide.bitsPixel = 1;
    wide.rest.assign(2052, 'x');
    CheckRefused(wide);
    wide.width = 16384;
    CHECK(PixelsOf(wide) == std::string(2048, 'x'));

    // Cut anywhere, and with any bytes in its headers.
    const TempFolder folder;
    const std::string bytes = good.Bytes();
    for (std::size_t length = 0; length < bytes.size(); ++length)
        CHECK_FALSE(LoadFile(folder.File("cut.bmp", bytes.substr(0, length))));
    std::mt19937 random(1000);
    for (int n = 0; n < 2000; ++n) {
        std::string changed = bytes;
        for (int count = 0; count < 3; ++count)
            changed[random() % 54] = static_cast<char>(random());
        const std::vector<BYTE> file = BytesOf(changed);
        const torv::BitmapEntry entries[] = {{60001, file}};
        const torv::BitmapTable table(entries);
        BITMAP bitmap{};
        const HBITMAP image = LoadBitmapA(torv::LibraryModule(), MAKEINTRESOURCEA(60001));
        if (image && GetObjectA(image, sizeof(bitmap), &bitmap))
            CHECK(bitmap.bmWidthBytes * bitmap.bmHeight <= 24);
        if (image)
            DeleteObject(image);
    }
}

TEST_CASE("bitmap: resources live as long as their tables, the latest is asked first") {
    const HMODULE module = torv::LibraryModule();
    const auto heightOf = [module](UINT id) {
        BITMAP bitmap{};
        const HBITMAP image = LoadBitmapA(module, MAKEINTRESOURCEA(id));
        GetObjectA(image, sizeof(bitmap), &bitmap);
        DeleteObject(image);
        return bitmap.bmHeight;
    };
    FileParts parts = Small();
    const std::vector<BYTE> three = BytesOf(parts.Bytes());
    parts.height = -2;
    const std::vector<BYTE> two = BytesOf(parts.Bytes());
    const torv::BitmapEntry entries[] = {{60002, three}, {60003, two}};
    const torv::BitmapEntry later[] = {{60002, two}};
    HBITMAP kept = nullptr;
    {
        const torv::BitmapTable table(entries);
        CHECK(heightOf(60002) == 3);
        CHECK(heightOf(60003) == 2);
        {
            const torv::BitmapTable laterTable(later);
            CHECK(heightOf(60002) == 2);
            CHECK(heightOf(60003) == 2);
        }
        CHECK(heightOf(60002) == 3);
        kept = LoadBitmapA(module, MAKEINTRESOURCEA(60003));
        CHECK_FALSE(LoadBitmapA(nullptr, MAKEINTRESOURCEA(60003))); // the module that has it must be named
        CHECK_FALSE(LoadImageA(module, MAKEINTRESOURCEA(60003), IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE));
    }
    CHECK(heightOf(60002) == 0);
    CHECK_FALSE(LoadBitmapA(module, MAKEINTRESOURCEA(60002)));
    CHECK(GetLastError() == ERROR_RESOURCE_NAME_NOT_FOUND);
    BITMAP bitmap{};
    REQUIRE(GetObjectA(kept, sizeof(bitmap), &bitmap)); // what is loaded has its own pixels
    CHECK(std::memcmp(bitmap.bmBits, "middle..bottom", 14) == 0);
    CHECK(DeleteObject(kept));
}
#endif
