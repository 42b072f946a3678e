#include "play_place.h"

#include "errors.h"
#include <torv/songs/engine_stream.h>

#include <algorithm>
#include <charconv>
#include <cmath>

using namespace torv::songs;

namespace {

constexpr double kMostSeconds = 1e6;

std::optional<double> ReadSeconds(const char* begin, const char* end) {
    double seconds = 0;
    const auto [at, error] = std::from_chars(begin, end, seconds, std::chars_format::fixed);
    return error == std::errc() && at == end && begin != end && *begin != '-' && seconds <= kMostSeconds
               ? std::optional(seconds)
               : std::nullopt;
}

std::optional<unsigned> ReadBar(const std::string& text) {
    unsigned bar = 0;
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data(), end, bar);
    return error == std::errc() && at == end && bar > 0 ? std::optional(bar) : std::nullopt;
}

} // namespace

std::optional<double> ReadTime(const std::string& text) {
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    if (!text.empty() && text.back() == 's')
        return ReadSeconds(begin, end - 1);
    const size_t colon = text.find(':');
    if (colon == std::string::npos)
        return std::nullopt;
    unsigned minutes = 0;
    const auto [at, error] = std::from_chars(begin, begin + colon, minutes);
    const auto seconds = ReadSeconds(begin + colon + 1, end);
    if (error != std::errc() || at != begin + colon || !seconds || *seconds >= 60 || minutes > kMostSeconds / 60)
        return std::nullopt;
    return minutes * 60.0 + *seconds;
}

DWORD PlaceInStream(const std::string& option, const std::string& text, const SongScore& song) {
    if (const auto bar = ReadBar(text))
        return torv::songs::StreamTimeOfTick(song.score, torv::songs::TickOfMeasure(song.song, static_cast<int>(*bar)));
    const auto seconds = ReadTime(text);
    if (!seconds)
        throw InputError{option + " \"" + text +
                         "\": write a bar, counted from 1, as in 9, or a time, as in 1:23.5 or 12.5s"};
    return song.score.leadMilliseconds + static_cast<DWORD>(std::lround(*seconds * 1000));
}
