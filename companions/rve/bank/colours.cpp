#include "colours.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

Colours ReadColours(std::istream& text, const std::vector<std::string>& phones) {
    Colours colours;
    int number = 0;
    for (std::string line; std::getline(text, line);) {
        ++number;
        const auto fail = [number](const std::string& why) {
            throw std::runtime_error("colours, line " + std::to_string(number) + ": " + why);
        };
        std::istringstream words(line);
        std::string phone;
        if (!(words >> phone) || phone.front() == '#')
            continue;
        if (std::find(phones.begin(), phones.end(), phone) == phones.end())
            fail("the voice has no sound \"" + phone + "\"");
        int state = -1;
        if (!(words >> state) || state < 0 || state >= rve::bank::kStates)
            fail("a sound's state is 0 to " + std::to_string(rve::bank::kStates - 1));
        const auto [place, isNew] = colours.try_emplace({phone, state});
        if (!isNew)
            fail("\"" + phone + " " + std::to_string(state) + "\" stands there twice");
        size_t count = 1;
        for (int hundredths = 0; words >> hundredths;) {
            if (count == place->second.size())
                fail("more than " + std::to_string(count - 1) + " numbers");
            place->second[count++] = static_cast<float>(hundredths) / 100;
        }
        if (!words.eof())
            fail("what follows " + std::to_string(count - 1) + " numbers is none");
    }
    if (text.bad())
        throw std::runtime_error("colours cannot be read");
    return colours;
}
