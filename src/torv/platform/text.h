#pragma once

#include "torv/platform/afx/string.h"
#include "torv/platform/export.h"

#include <cstddef>

/// Numbers as text and code page 932, both free of the process's locale: a host's setlocale must not turn 0.5 into
/// "0,5", nor the machine's code page decide where a lyric's characters begin.
namespace torv {

/// White space as every text here has it: the bytes up to 32.
constexpr bool IsBlank(char c) { return static_cast<unsigned char>(c) <= 32; }

/// Leading white space, a sign, decimal digits; reading stops at the first other byte. 0 when there is no digit or no
/// text; the nearest end of the range beyond 32 bits.
TORV_API int ParseInteger(const char* text);

/// Leading white space, a sign, a decimal number with optional fraction and exponent; reading stops where it ends.
/// 0 when there is none (the words for infinity and NaN are none). Always finite: too large gives the largest double.
TORV_API double ParseReal(const char* text);

/// Six decimals, exactly the digits of "%f" in the C locale; "0.000000" for a value that is not finite.
TORV_API CString FormatReal(double value);

/// Whether this byte begins a double-byte character of code page 932.
constexpr bool IsLeadByte932(unsigned char byte) {
    return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

/// The next character's first byte; the same place at the terminating NUL. A lead byte at the end is taken alone.
TORV_API const char* NextChar932(const char* text);

/// The first character that is the single byte `c`; a double-byte character's bytes never match. Null when absent, and
/// for the NUL, which ends the text and is not part of it.
TORV_API const char* FindChar932(const char* text, char c);

/// Copies as much of a text as a field of `size` bytes can hold with its NUL, and zeroes the rest of the field. Null
/// texts are empty; the text may lie in the field.
TORV_API void CopyText(char* field, std::size_t size, const char* text);

} // namespace torv
