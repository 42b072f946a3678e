#pragma once

#include <cstddef>
#include <cstdint>

/// Windows' type names with Windows' widths. `long` is 64 bits wide here, so LONG and DWORD are fixed-width.
using BOOL = int;
using BYTE = std::uint8_t;
using CHAR = char;
using UCHAR = unsigned char;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using WORD = std::uint16_t;
using INT = int;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using FLOAT = float;

using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using MMRESULT = UINT;

using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPBYTE = BYTE*;
using LPWORD = WORD*;
using LPDWORD = DWORD*;
using LPLONG = LONG*;
using PUINT = UINT*;

/// Handles are names, never dereferenced: each one is looked up by the call that it is given to.
using HANDLE = void*;
using HGLOBAL = HANDLE;
using HWND = struct HWND__*;
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;
using HMENU = struct HMENU__*;
using HBITMAP = struct HBITMAP__*;
using HGDIOBJ = HANDLE;
using FARPROC = INT_PTR (*)();

#define WINAPI
#define CALLBACK
#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

constexpr DWORD MAX_PATH = 260;
constexpr DWORD INFINITE = 0xFFFFFFFF;

constexpr WORD LOWORD(DWORD_PTR value) { return static_cast<WORD>(value & 0xFFFF); }
constexpr WORD HIWORD(DWORD_PTR value) { return static_cast<WORD>((value >> 16) & 0xFFFF); }
constexpr BYTE LOBYTE(DWORD_PTR value) { return static_cast<BYTE>(value & 0xFF); }
constexpr BYTE HIBYTE(DWORD_PTR value) { return static_cast<BYTE>((value >> 8) & 0xFF); }
constexpr WORD MAKEWORD(DWORD_PTR low, DWORD_PTR high) {
    return static_cast<WORD>((low & 0xFF) | ((high & 0xFF) << 8));
}
constexpr LONG MAKELONG(DWORD_PTR low, DWORD_PTR high) {
    return static_cast<LONG>(static_cast<DWORD>((low & 0xFFFF) | ((high & 0xFFFF) << 16)));
}
constexpr WPARAM MAKEWPARAM(DWORD_PTR low, DWORD_PTR high) { return static_cast<DWORD>(MAKELONG(low, high)); }
constexpr LPARAM MAKELPARAM(DWORD_PTR low, DWORD_PTR high) {
    return static_cast<LPARAM>(static_cast<DWORD>(MAKELONG(low, high)));
}

struct POINT {
    LONG x;
    LONG y;
};
struct SIZE {
    LONG cx;
    LONG cy;
};
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

/// Message boxes: what they show, and what the user answered.
constexpr UINT MB_OK = 0x00;
constexpr UINT MB_OKCANCEL = 0x01;
constexpr UINT MB_ABORTRETRYIGNORE = 0x02;
constexpr UINT MB_YESNOCANCEL = 0x03;
constexpr UINT MB_YESNO = 0x04;
constexpr UINT MB_RETRYCANCEL = 0x05;
constexpr UINT MB_TYPEMASK = 0x0F;
constexpr UINT MB_ICONHAND = 0x10;
constexpr UINT MB_ICONSTOP = MB_ICONHAND;
constexpr UINT MB_ICONERROR = MB_ICONHAND;
constexpr UINT MB_ICONQUESTION = 0x20;
constexpr UINT MB_ICONEXCLAMATION = 0x30;
constexpr UINT MB_ICONWARNING = MB_ICONEXCLAMATION;
constexpr UINT MB_ICONASTERISK = 0x40;
constexpr UINT MB_ICONINFORMATION = MB_ICONASTERISK;
constexpr UINT MB_ICONMASK = 0xF0;
constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int IDABORT = 3;
constexpr int IDRETRY = 4;
constexpr int IDIGNORE = 5;
constexpr int IDYES = 6;
constexpr int IDNO = 7;
