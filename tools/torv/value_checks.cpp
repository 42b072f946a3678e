#include "value_checks.h"

#include "number_text.h"

#include <algorithm>
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

CLI::Validator OneOf(const std::vector<std::string>& values) {
    std::string names = values.front();
    std::string list = "{" + values.front();
    for (size_t i = 1; i < values.size(); ++i) {
        names += (i + 1 < values.size() ? ", " : " or ") + values[i];
        list += "," + values[i];
    }
    const auto check = [values, names](const std::string& text) {
        const bool isOne = std::find(values.begin(), values.end(), text) != values.end();
        return isOne ? std::string() : "\"" + text + "\" is not " + names;
    };
    return {check, list + "}"};
}
