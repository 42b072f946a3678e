#include "bars.h"

#include "errors.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace {

constexpr size_t kMostDigits = 6;

} // namespace

BarMark ReadBarMark(const std::string& option, const std::string& text, bool needsBar) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos && !needsBar && !text.empty())
        return {1, text};
    const std::string bar = text.substr(0, equals);
    const bool isNumber = !bar.empty() && bar.size() <= kMostDigits &&
                          std::all_of(bar.begin(), bar.end(), [](unsigned char c) { return std::isdigit(c); });
    const int number = isNumber ? std::atoi(bar.c_str()) : 0;
    if (number == 0 || equals == std::string::npos || equals + 1 == text.size())
        throw WrongUse{
            option + " \"" + text + "\": write the bar, counted from 1, and the name, as in 3=" +
            (equals == std::string::npos || equals + 1 == text.size() ? std::string("NAME") : text.substr(equals + 1))};
    return {number, text.substr(equals + 1)};
}
