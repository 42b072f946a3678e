#include "number_text.h"

#include <charconv>
#include <cmath>

std::optional<double> NumberOf(const std::string& text) {
    const char* const begin = text.data() + (!text.empty() && text.front() == '+');
    const char* const end = text.data() + text.size();
    double value = 0;
    const auto [stop, error] = std::from_chars(begin, end, value);
    if (error != std::errc() || stop != end || !std::isfinite(value))
        return std::nullopt;
    return value;
}
