#include "help.h"

#include <algorithm>
#include <sstream>

namespace {

constexpr size_t kNameColumns = 30;
constexpr size_t kFewestColumns = 60; // for both: what is narrower is folded by the terminal
constexpr size_t kMostColumns = 100;  // longer lines are hard to read

/// The parser's "DB:-60 to 24" is what stands for the value, and what it is checked for.
struct ValueType {
    std::string name;
    std::string bounds;
};

ValueType TypeOf(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    int depth = 0; // what may be left out stands in brackets, colons in them among it
    const auto end = std::find_if(type.begin(), type.end(), [&depth](char c) {
        depth += c == '[' ? 1 : c == ']' ? -1 : 0;
        return c == ':' && depth == 0;
    });
    return {{type.begin(), end}, {end == type.end() ? end : end + 1, type.end()}};
}

} // namespace

std::string ValueNameOf(const CLI::Option& option) {
    auto [name, bounds] = TypeOf(option);
    if (option.get_expected_max() == 0)
        return {};
    if (bounds.starts_with('{')) {
        std::replace(bounds.begin(), bounds.end(), ',', '|');
        return bounds.substr(1, bounds.size() - 2);
    }
    return name == "INT" || name == "UINT" || name == "FLOAT" ? "NUMBER" : name == "TEXT" ? "NAME" : name;
}

std::string DescriptionOf(const CLI::Option& option) {
    const std::string bounds = TypeOf(option).bounds;
    std::string more = bounds.starts_with('{') ? "" : bounds;
    if (option.get_expected_max() != 0 && !option.get_default_str().empty())
        more += (more.empty() ? "else " : "; else ") + option.get_default_str();
    return option.get_description() + (more.empty() ? "" : " (" + more + ")");
}

std::string Wrapped(const std::string& text, size_t columns) {
    std::istringstream lines(text);
    std::string wrapped;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        size_t used = 0;
        wrapped += wrapped.empty() ? "" : "\n";
        for (std::string word; words >> word; used += word.size()) {
            const bool fits = used + 1 + word.size() <= columns;
            if (used > 0)
                wrapped += fits ? " " : "\n";
            used = used > 0 && fits ? used + 1 : 0;
            wrapped += word;
        }
    }
    return wrapped;
}

HelpFormatter::HelpFormatter(size_t columns) : m_columns(std::clamp(columns, kFewestColumns, kMostColumns)) {
    column_width(kNameColumns);
    label("SUBCOMMAND", "VERB");
}

/// What is simply named has its own name already.
std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
    const std::string value = ValueNameOf(*option);
    return value.empty() || (option->get_positional() && value == "NAME") ? "" : " " + value;
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
    return Wrapped(DescriptionOf(*option), m_columns - kNameColumns);
}

std::string HelpFormatter::make_footer(const CLI::App* app) const {
    return Wrapped(app->get_footer(), m_columns) + "\n";
}
