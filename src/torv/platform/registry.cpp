#include "torv/platform/registry.h"

#include "torv/platform/system.h"

namespace torv {
namespace {

std::optional<std::string> StringValue(HKEY key, const char* name) {
    std::string text;
    for (;;) {
        DWORD type = 0;
        auto size = static_cast<DWORD>(text.size());
        const auto result = RegQueryValueExA(key, name, nullptr, &type,
                                             text.empty() ? nullptr : reinterpret_cast<BYTE*>(text.data()), &size);
        const bool isTooSmall = result == static_cast<LSTATUS>(ERROR_MORE_DATA) || (!result && size > text.size());
        if ((result && !isTooSmall) || type != REG_SZ)
            return std::nullopt;
        text.resize(size);
        if (!isTooSmall)
            break; // else once more, and again should the value grow meanwhile
    }
    // Whoever wrote the value may have stored it with its NUL or without.
    text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
    return text;
}

} // namespace

std::optional<std::string> ReadMachineString(const char* key, const char* value) {
    HKEY handle = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, key, 0, KEY_READ, &handle))
        return std::nullopt;
    auto text = StringValue(handle, value);
    RegCloseKey(handle);
    return text;
}

} // namespace torv
