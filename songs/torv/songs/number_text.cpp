#include "torv/songs/number_text.h"

#include <charconv>
#include <cmath>

namespace torv::songs {

namespace {

template <class Number>
bool Read(std::string_view text, Number& value) {
    if (text.starts_with('+'))
        text.remove_prefix(1);
    return std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc();
}

} // namespace

double NumberOf(std::string_view text, double otherwise) {
    double value = 0;
    return Read(text, value) && std::isfinite(value) ? value : otherwise;
}

int WholeNumberOf(std::string_view text, int otherwise) {
    int value = 0;
    return Read(text, value) ? value : otherwise;
}

} // namespace torv::songs
