#include "torv/platform/system_default.h"

#include "torv/platform/library_module.h"

namespace torv {

int SystemMessageBox(HWND owner, const char* text, const char* caption, UINT type) {
    return MessageBoxA(owner, text, caption, type);
}

// In parentheses the name is the system's function, not the macro that leads to the handler.
void SystemBeep(UINT type) { (::MessageBeep)(type); }

HWND ActiveWindow() { return GetActiveWindow(); }

std::optional<std::string> ModuleString(UINT id) {
    // With size 0 the call answers where the text stands in the resource itself, in UTF-16 and without a NUL.
    const wchar_t* text = nullptr;
    const int length = LoadStringW(LibraryModule(), id, reinterpret_cast<LPWSTR>(&text), 0);
    if (length <= 0)
        return std::nullopt;
    const int bytes = WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, length, result.data(), bytes, nullptr, nullptr);
    return result;
}

HMODULE LibraryModule() {
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&LibraryModule), &module);
    return module;
}

} // namespace torv
