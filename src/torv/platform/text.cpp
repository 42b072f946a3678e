#include "torv/platform/text.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace torv {
namespace {

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

const char* SkipSpace(const char* text) {
    while (*text == ' ' || (*text >= '\t' && *text <= '\r'))
        ++text;
    return text;
}

/// Reads a sign and leaves `text` after it; whether it was a minus.
bool TakeSign(const char*& text) {
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+')
        ++text;
    return negative;
}

/// The extent of a decimal number without sign, and the power of ten just above its first significant digit.
struct Number {
    const char* end;     // null when there is no digit
    long long magnitude; // 3 for 123.4, -2 for 0.001234
    bool isZero;
};

Number Scan(const char* text) {
    Number number{nullptr, 0, true};
    bool hasDigit = false;
    for (; IsDigit(*text); ++text) {
        hasDigit = true;
        number.isZero = number.isZero && *text == '0';
        number.magnitude += !number.isZero;
    }
    if (*text == '.') {
        for (++text; IsDigit(*text); ++text) {
            hasDigit = true;
            number.magnitude -= number.isZero && *text == '0';
            number.isZero = number.isZero && *text == '0';
        }
    }
    if (!hasDigit)
        return number;
    number.end = text;
    if (*text == 'e' || *text == 'E') {
        const char* exponent = text + 1;
        TakeSign(exponent);
        if (IsDigit(*exponent)) {
            number.magnitude += ParseInteger(text + 1);
            while (IsDigit(*exponent))
                ++exponent;
            number.end = exponent;
        }
    }
    return number;
}

} // namespace

int ParseInteger(const char* text) {
    using Limits = std::numeric_limits<int>;
    if (!text)
        return 0;
    text = SkipSpace(text);
    const bool negative = TakeSign(text);
    long long value = 0;
    for (; IsDigit(*text); ++text)
        value = value > Limits::max() ? value : value * 10 + (*text - '0'); // past the range it only has to stay there
    if (negative)
        return value > Limits::max() ? Limits::min() : static_cast<int>(-value);
    return value > Limits::max() ? Limits::max() : static_cast<int>(value);
}

double ParseReal(const char* text) {
    if (!text)
        return 0.0;
    text = SkipSpace(text);
    const bool negative = TakeSign(text);
    const Number number = Scan(text);
    if (!number.end || number.isZero)
        return 0.0;
    double value = 0.0;
    const auto result = std::from_chars(text, number.end, value);
    if (result.ec != std::errc() || !std::isfinite(value))
        value = number.magnitude > 0 ? std::numeric_limits<double>::max() : 0.0;
    return negative ? -value : value;
}

CString FormatReal(double value) {
    if (!std::isfinite(value))
        return {"0.000000"};
    char digits[1 + std::numeric_limits<double>::max_exponent10 + 1 + 1 + 6]; // sign, whole part, point, decimals
    const auto result = std::to_chars(digits, digits + sizeof(digits), value, std::chars_format::fixed, 6);
    return {digits, static_cast<int>(result.ptr - digits)};
}

const char* NextChar932(const char* text) {
    if (!text || !*text)
        return text;
    return text + (IsLeadByte932(static_cast<unsigned char>(text[0])) && text[1] ? 2 : 1);
}

const char* FindChar932(const char* text, char c) {
    if (!text)
        return nullptr;
    while (*text) {
        const char* next = NextChar932(text);
        if (*text == c && next == text + 1)
            return text;
        text = next;
    }
    return nullptr;
}

void CopyText(char* field, std::size_t size, const char* text) {
    if (size == 0)
        return;
    const std::size_t length = text ? strnlen(text, size - 1) : 0;
    if (length > 0)
        std::memmove(field, text, length);
    std::memset(field + length, 0, size - length);
}

} // namespace torv
