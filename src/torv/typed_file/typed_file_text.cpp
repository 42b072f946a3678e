#include "torv/typed_file/typed_file.h"

#include "torv/platform/text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

/// The first `count` hexadecimal digits, other characters passed over.
uint64_t HexDigits(const char* text, int count) {
    uint64_t value = 0;
    for (; text && *text && count > 0; ++text) {
        const int digit = HexDigit(*text);
        if (digit < 0)
            continue;
        value = value << 4 | static_cast<uint64_t>(digit);
        --count;
    }
    return value;
}

} // namespace

char* CxTypedFile::ExtractString(char* dst, int dstSize, const char* src, int separator) {
    if (!src)
        src = "";
    while (*src && torv::IsBlank(*src))
        ++src;
    const char* end = separator ? torv::FindChar932(src, static_cast<char>(separator)) : nullptr;
    const char* rest = end ? end + 1 : src + std::strlen(src);
    if (dst && dstSize > 0) {
        const ptrdiff_t field = (end ? end : rest) - src;
        ptrdiff_t length = std::min<ptrdiff_t>(field, dstSize - 1);
        std::memmove(dst, src, static_cast<size_t>(length));
        while (length && torv::IsBlank(dst[length - 1]))
            --length;
        dst[length] = '\0';
    }
    return const_cast<char*>(rest); // callers hold the text and walk it with the pointer they get
}

LONG CxTypedFile::ahextol(const char* text) { return static_cast<LONG>(static_cast<DWORD>(HexDigits(text, 8))); }

double CxTypedFile::ahextodouble(const char* text) { return std::bit_cast<double>(HexDigits(text, 16)); }

void CxTypedFile::ftofix(DWORD* whole, DWORD* fraction, double value) {
    if (whole)
        *whole = static_cast<DWORD>(torv::TruncateToInt64(value));
    if (fraction)
        *fraction = static_cast<DWORD>(torv::TruncateToInt64((value - std::trunc(value)) * 4294967296.0));
}

void CxTypedFile::BuffCopy(void* dst, const void* src, DWORD count) {
    auto* to = static_cast<char*>(dst);
    const auto* from = static_cast<const char*>(src);
    if (!to || !from)
        return;
    for (; count >= 4; count -= 4, to += 4, from += 4) {
        uint32_t word;
        std::memcpy(&word, from, sizeof word);
        std::memcpy(to, &word, sizeof word);
    }
    for (; count; --count)
        *to++ = *from++;
}

int CxTypedFile::Dir(const char* pattern, WIN32_FIND_DATAA* found, int archive, int directory, int hidden, int readOnly,
                     int system, int temporary) {
    const DWORD mask = (archive ? FILE_ATTRIBUTE_ARCHIVE : 0u) | (directory ? FILE_ATTRIBUTE_DIRECTORY : 0u) |
                       (hidden ? FILE_ATTRIBUTE_HIDDEN : 0u) | (readOnly ? FILE_ATTRIBUTE_READONLY : 0u) |
                       (system ? FILE_ATTRIBUTE_SYSTEM : 0u) | (temporary ? FILE_ATTRIBUTE_TEMPORARY : 0u);
    WIN32_FIND_DATAA local;
    WIN32_FIND_DATAA& entry = found ? *found : local;
    HANDLE search = pattern ? FindFirstFileA(pattern, &entry) : INVALID_HANDLE_VALUE;
    if (search == INVALID_HANDLE_VALUE)
        return 0;
    bool matched = false;
    do {
        const bool dots = std::strcmp(entry.cFileName, ".") == 0 || std::strcmp(entry.cFileName, "..") == 0;
        matched = !dots && (entry.dwFileAttributes & mask);
    } while (!matched && FindNextFileA(search, &entry));
    FindClose(search);
    return matched;
}
