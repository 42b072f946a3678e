#include "torv/songs/nearest_names.h"

#include <algorithm>
#include <numeric>

namespace torv::songs {

namespace {

constexpr size_t kFewNames = 8;
constexpr size_t kSuggestions = 3;

std::string Lower(std::string text) {
    for (char& c : text)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

/// How many bytes to insert, remove or change from one to the other (Levenshtein 1966); what one has beyond the
/// other's beginning counts little, so that "soft" is near "Soft Attack".
size_t Distance(const std::string& a, const std::string& b) {
    if (b.starts_with(a) || a.starts_with(b))
        return a.size() == b.size() ? 0 : 1;
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = row[0]++;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t change = diagonal + (a[i] != b[j]);
            diagonal = row[j + 1];
            row[j + 1] = std::min({change, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

std::optional<size_t> FindName(const std::vector<std::string>& names, const std::string& wanted) {
    auto found = std::find(names.begin(), names.end(), wanted);
    if (found == names.end())
        found = std::find_if(names.begin(), names.end(),
                             [&](const std::string& name) { return Lower(name) == Lower(wanted); });
    if (found == names.end()) {
        const auto begins = [&](const std::string& name) { return Lower(name).starts_with(Lower(wanted)); };
        const auto first = wanted.empty() ? names.end() : std::find_if(names.begin(), names.end(), begins);
        if (first != names.end() && std::find_if(first + 1, names.end(), begins) == names.end())
            found = first;
    }
    return found == names.end() ? std::nullopt : std::optional(static_cast<size_t>(found - names.begin()));
}

std::string SuggestNames(const std::vector<std::string>& names, const std::string& wanted) {
    if (names.empty())
        return "there is none at all";
    std::vector<std::string> nearest = names;
    std::stable_sort(nearest.begin(), nearest.end(), [&wanted](const std::string& a, const std::string& b) {
        return Distance(Lower(wanted), Lower(a)) < Distance(Lower(wanted), Lower(b));
    });
    if (names.size() > kFewNames)
        nearest.resize(kSuggestions);
    std::string text = "did you mean ";
    for (size_t i = 0; i < nearest.size(); ++i)
        text += (i == 0 ? "" : i + 1 == nearest.size() ? " or " : ", ") + nearest[i];
    return text + "?";
}

} // namespace torv::songs
