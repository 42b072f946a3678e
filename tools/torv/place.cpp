#include "place.h"

#include "errors.h"
#include "messages.h"

#include <torv/songs/engine_stream.h>
#include <torv/songs/song_clock.h>

#include <algorithm>
#include <charconv>
#include <cmath>

using namespace torv::songs;

namespace {

constexpr double kMostSeconds = 1e6;
constexpr double kMostBeats = 1000;
constexpr uint32_t kTicksPerWhole = 4 * kTicksPerQuarter;

/// A number without sign or exponent.
std::optional<double> ReadDecimal(const std::string& text, double most) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data(), end, value, std::chars_format::fixed);
    const bool isWhole = error == std::errc() && at == end && !text.empty() && text.front() != '-';
    return isWhole && value <= most ? std::optional(value) : std::nullopt;
}

std::optional<int> ReadWhole(const std::string& text) {
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && at == end && value >= 0 ? std::optional(value) : std::nullopt;
}

struct BarAndBeat {
    int bar;
    double beat;
};

std::optional<BarAndBeat> ReadBar(const std::string& text) {
    const size_t colon = text.find(':');
    const std::optional<int> bar = ReadWhole(text.substr(0, colon));
    if (!bar || colon == std::string::npos)
        return bar ? std::optional(BarAndBeat{*bar, 1}) : std::nullopt;
    std::string beatText = text.substr(colon + 1);
    if (!beatText.empty() && beatText.back() == 'b')
        beatText.pop_back();
    const std::optional<double> beat = ReadDecimal(beatText, kMostBeats);
    return beat && *beat >= 1 ? std::optional(BarAndBeat{*bar, *beat}) : std::nullopt;
}

Meter MeterAt(const Song& song, uint32_t tick) {
    const auto next = std::upper_bound(song.meters.begin(), song.meters.end(), tick,
                                       [](uint32_t at, const Meter& meter) { return at < meter.tick; });
    return next == song.meters.begin() ? Meter{} : *(next - 1);
}

uint32_t TickOfBar(const std::string& option, const std::string& text, const BarAndBeat& place, const Song& song) {
    const uint32_t start = TickOfMeasure(song, place.bar);
    const uint32_t beatTicks = kTicksPerWhole >> MeterAt(song, start).denominatorExponent;
    const double ticks = (place.beat - 1) * beatTicks;
    const auto measure = std::find_if(song.measures.begin(), song.measures.end(),
                                      [start](const Measure& candidate) { return candidate.tick == start; });
    if (const uint32_t length = measure == song.measures.end() ? 1 : measure->length; ticks >= length)
        throw InputError{option + " \"" + text + "\": bar " + std::to_string(place.bar) + " has " +
                         Counted((length + beatTicks - 1) / beatTicks, "beat")};
    return start + static_cast<uint32_t>(std::lround(ticks));
}

[[noreturn]] void FailToRead(const std::string& option, const std::string& text) {
    throw WrongUse{option + " \"" + text +
                   "\": write a bar, as in 9, a beat of it, as in 9:3, or a time, as in 1:23.5 or 12.5s"};
}

[[noreturn]] void FailBehindEnd(const std::string& option, const std::string& text) {
    throw InputError{option + " " + text + ": the song ends before that"};
}

} // namespace

std::optional<double> ReadTime(const std::string& text) {
    if (!text.empty() && text.back() == 's')
        return ReadDecimal(text.substr(0, text.size() - 1), kMostSeconds);
    const size_t colon = text.find(':');
    const std::string secondsText = colon == std::string::npos ? std::string() : text.substr(colon + 1);
    const std::optional<int> minutes = ReadWhole(text.substr(0, colon));
    const std::optional<double> seconds = ReadDecimal(secondsText, kMostSeconds);
    if (!minutes || !seconds || std::min(secondsText.find('.'), secondsText.size()) != 2 || *seconds >= 60 ||
        *minutes > kMostSeconds / 60)
        return std::nullopt;
    return *minutes * 60.0 + *seconds;
}

uint32_t TickOfPlace(const std::string& option, const std::string& text, const Song& song) {
    if (const auto seconds = ReadTime(text)) {
        const SongClock clock(song.tempos);
        if (*seconds > clock.SecondsAt(song.end))
            FailBehindEnd(option, text);
        return clock.TickAt(*seconds);
    }
    if (const auto bar = ReadBar(text))
        return TickOfBar(option, text, *bar, song);
    FailToRead(option, text);
}

DWORD BeginInStream(const std::string& option, const std::string& text, const SongScore& song) {
    const DWORD begin = PlaceInStream(option, text, song);
    if (begin >= StreamTimeOfTick(song.score, song.song.end))
        FailBehindEnd(option, text);
    return begin;
}

DWORD PlaceInStream(const std::string& option, const std::string& text, const SongScore& song) {
    if (const auto seconds = ReadTime(text))
        return song.score.leadMilliseconds + static_cast<DWORD>(std::lround(*seconds * 1000));
    return StreamTimeOfTick(song.score, TickOfPlace(option, text, song.song));
}

PlacedName ReadPlacedName(const std::string& option, const std::string& text, bool needsPlace) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos && !needsPlace && !text.empty())
        return {{}, text};
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
        throw WrongUse{option + " \"" + text +
                       "\": write the place and the name, as in 3=NAME, 3:2=NAME or 0:12.5=NAME"};
    return {text.substr(0, equals), text.substr(equals + 1)};
}
