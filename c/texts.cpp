#include "texts.h"

#include <cstring>

#if defined(_WIN32)
#include <windows.h>

#include <vector>
#endif

namespace torv::c {

namespace {

/// Bytes of the character that begins here; 0 for none.
size_t CharacterAt(const unsigned char* at, size_t left) {
    const unsigned char lead = at[0];
    const size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || length > left)
        return 0;
    for (size_t i = 1; i < length; ++i)
        if ((at[i] & 0xC0) != 0x80)
            return 0;
    const bool isOverlong = (lead == 0xE0 && at[1] < 0xA0) || (lead == 0xF0 && at[1] < 0x90);
    const bool isSurrogate = lead == 0xED && at[1] >= 0xA0;
    const bool isBeyond = lead == 0xF4 && at[1] >= 0x90;
    return isOverlong || isSurrogate || isBeyond ? 0 : length;
}

void CheckUtf8(const std::string& text, const char* name) {
    const auto* at = reinterpret_cast<const unsigned char*>(text.data());
    for (size_t left = text.size(); left > 0;) {
        const size_t length = CharacterAt(at, left);
        if (length == 0)
            throw Failure{TORV_BAD_ARGUMENT, std::string(name) + " is no UTF-8"};
        at += length;
        left -= length;
    }
}

} // namespace

void Give(const std::string& text, const OutText& out) {
    const size_t needed = text.size() + 1;
    if (out.needed)
        *out.needed = needed;
    if (out.capacity == 0)
        return;
    Need(out.buffer, "buffer");
    if (out.capacity < needed)
        throw Failure{TORV_TOO_SMALL, "the buffer has " + std::to_string(out.capacity) + " bytes, and the text takes " +
                                          std::to_string(needed)};
    std::memcpy(out.buffer, text.c_str(), needed);
}

std::string Taken(const char* text, const char* name) {
    std::string taken = &Need(text, name);
    CheckUtf8(taken, name);
    return taken;
}

std::string TakenOrEmpty(const char* text, const char* name) { return text ? Taken(text, name) : std::string(); }

std::string TakenPath(const char* path) {
    std::string taken = Taken(path, "path");
    if (taken.empty())
        throw Failure{TORV_BAD_ARGUMENT, "path is empty"};
#if defined(_WIN32)
    const int length = MultiByteToWideChar(CP_UTF8, 0, taken.c_str(), -1, nullptr, 0);
    std::vector<wchar_t> wide(static_cast<size_t>(length));
    MultiByteToWideChar(CP_UTF8, 0, taken.c_str(), -1, wide.data(), length);
    std::string narrow(4 * wide.size(), '\0');
    BOOL isLossy = FALSE;
    const bool isUtf8 = GetACP() == CP_UTF8; // which takes no such questions
    const int written = WideCharToMultiByte(CP_ACP, isUtf8 ? 0 : WC_NO_BEST_FIT_CHARS, wide.data(), -1, narrow.data(),
                                            static_cast<int>(narrow.size()), nullptr, isUtf8 ? nullptr : &isLossy);
    if (written == 0 || isLossy)
        throw Failure{TORV_FILE_ERROR, taken +
                                           ": has letters that this system's code page lacks; give the file another "
                                           "name"};
    narrow.resize(static_cast<size_t>(written) - 1);
    return narrow;
#else
    return taken;
#endif
}

void CheckIndex(size_t index, size_t count, const char* what) {
    if (index >= count)
        throw Failure{TORV_OUT_OF_RANGE, "there is no " + std::string(what) + " " + std::to_string(index) +
                                             ": there are " + std::to_string(count)};
}

} // namespace torv::c
