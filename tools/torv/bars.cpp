#include "bars.h"

#include "errors.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace {

constexpr uint32_t kWhole = 1920; // ticks
constexpr size_t kMostDigits = 6;

uint32_t TicksOfBar(const MidiSignature& signature) {
    return std::max<uint32_t>(1, kWhole / (1U << std::min(signature.denominatorExponent, 10)) *
                                     static_cast<uint32_t>(std::max(signature.numerator, 1)));
}

} // namespace

BarMark ReadBarMark(const std::string& option, const std::string& text, bool needsBar) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos && !needsBar && !text.empty())
        return {1, text};
    const std::string bar = text.substr(0, equals);
    const bool isNumber = !bar.empty() && bar.size() <= kMostDigits &&
                          std::all_of(bar.begin(), bar.end(), [](unsigned char c) { return std::isdigit(c); });
    const unsigned number = isNumber ? static_cast<unsigned>(std::atoi(bar.c_str())) : 0;
    if (number == 0 || equals == std::string::npos || equals + 1 == text.size())
        throw InputError{
            option + " \"" + text + "\": write the bar, counted from 1, and the name, as in 3=" +
            (equals == std::string::npos || equals + 1 == text.size() ? std::string("NAME") : text.substr(equals + 1))};
    return {number, text.substr(equals + 1)};
}

uint32_t TickOfBar(const std::string& path, const MidiSong& song, unsigned bar) {
    MidiSignature signature{0, 4, 2};
    auto next = song.signatures.begin();
    uint64_t tick = 0;
    for (unsigned at = 1;; ++at) {
        while (next != song.signatures.end() && next->tick <= tick)
            signature = *next++;
        if (tick > song.end || at == bar) {
            if (tick > song.end && at > 1)
                throw InputError{path + ": has no bar " + std::to_string(bar) + "; the last one is " +
                                 std::to_string(at - 1)};
            return static_cast<uint32_t>(tick);
        }
        uint64_t end = tick + TicksOfBar(signature);
        if (next != song.signatures.end() && next->tick < end)
            end = next->tick; // a signature begins a bar wherever it stands
        tick = end;
    }
}
