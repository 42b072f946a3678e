#include "phones.h"

#include <algorithm>
#include <iterator>

namespace g2pa_eng {
namespace {

constexpr std::string_view names[] = {"aa", "ae", "ah", "ao", "aw", "ax", "ay", "eh", "er", "ey", "ih", "iy",
                                      "ow", "oy", "uh", "uw", //
                                      "b",  "ch", "d",  "dh", "f",  "g",  "hh", "jh", "k",  "l",  "m",  "n",
                                      "ng", "p",  "r",  "s",  "sh", "t",  "th", "v",  "w",  "y",  "z",  "zh"};
static_assert(std::size(names) == static_cast<size_t>(Sound::zh) + 1);

void AppendPhone(Phones& phones, std::string_view name) {
    const size_t letters = std::min(name.find_first_of("012"), name.size());
    const auto* found = std::find(std::begin(names), std::end(names), name.substr(0, letters));
    if (found != std::end(names))
        phones.push_back({static_cast<Sound>(found - std::begin(names)), name.substr(letters) == "1"});
}

} // namespace

void AppendPhones(Phones& phones, std::string_view text) {
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find(' ', at), text.size());
        AppendPhone(phones, text.substr(at, end - at));
        at = end + 1;
    }
}

} // namespace g2pa_eng
