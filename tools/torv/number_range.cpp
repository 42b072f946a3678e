#include "number_range.h"

#include "number_text.h"

#include <cstdio>

CLI::Validator NumberFrom(double least, double most) {
    char bounds[64];
    std::snprintf(bounds, sizeof bounds, "%g to %g", least, most);
    const auto check = [least, most, name = std::string(bounds)](const std::string& text) {
        const auto number = NumberOf(text);
        const bool isWithin = number && *number >= least && *number <= most;
        return isWithin ? std::string() : "\"" + text + "\" is no number from " + name;
    };
    return {check, bounds};
}
