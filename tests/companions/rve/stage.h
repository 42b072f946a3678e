#pragma once

#include "rve_abi.h"
#include "singer.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

/// Engine messages, written block by block.
class Stream {
public:
    /// One parameter: data MSB, and data LSB unless it is negative.
    Stream& Parameter(int block, int parameter, int msb, int lsb = -1) {
        Put(99, block);
        Put(98, parameter);
        Put(6, msb);
        if (lsb >= 0)
            Put(38, lsb);
        return *this;
    }
    Stream& Open(int block, int delayMs) {
        return Parameter(block, 0, 0, 0).Parameter(block, 1, delayMs / 128, delayMs % 128);
    }
    Stream& Value(int block, int value, int delayMs = 0) { return Open(block, delayMs).Parameter(block, 2, value); }
    Stream& Bend(int value, int delayMs = 0) {
        return Open(0x54, delayMs).Parameter(0x54, 2, (value + 8192) >> 7, (value + 8192) & 127);
    }
    Stream& VoiceControl(int index, int value, int delayMs = 0) {
        const int selector = index == 16 ? 0x70 : 0x30 + index / 4 * 16 + index % 4;
        return Open(0x55, delayMs).Parameter(0x55, 2, selector).Parameter(0x55, 3, value);
    }

    struct NoteText {
        int note = 57;
        int startMs = 100;
        int lengthMs = 600;
        std::string phonemes = "a"; ///< parted by blanks
        int advancement = 64;       ///< of every sound but the last
        int type = 3;
        int velocity = 64;
        int attackCode = -1, attackDepth = 64, attackDuration = 64;
        int releaseCode = -1, releaseDuration = 64;
        int transitionDuration = -1;
        int vibratoStart = -1, vibratoExtent = 0;
    };
    Stream& Note(const NoteText& text) {
        Open(0x50, text.startMs);
        Parameter(0x50, 2, text.note).Parameter(0x50, 3, text.velocity);
        Parameter(0x50, 4, text.lengthMs / 128, text.lengthMs % 128).Parameter(0x50, 5, text.type);
        if (text.attackCode >= 0)
            Parameter(0x50, 6, 1, text.attackCode)
                .Parameter(0x50, 7, 0, text.attackDepth)
                .Parameter(0x50, 8, text.attackDuration);
        if (text.releaseCode >= 0)
            Parameter(0x50, 9, 2, text.releaseCode)
                .Parameter(0x50, 10, 0, 64)
                .Parameter(0x50, 11, text.releaseDuration);
        if (text.vibratoStart >= 0)
            Parameter(0x50, 12, 4, 0).Parameter(0x50, 13, 0, text.vibratoExtent).Parameter(0x50, 14, text.vibratoStart);
        if (text.transitionDuration >= 0)
            Parameter(0x50, 15, 3, 0).Parameter(0x50, 16, 0, text.transitionDuration);
        std::string plain;
        std::vector<int> marks;
        bool starts = true;
        for (const char c : text.phonemes) {
            if (c == ' ') {
                starts = true;
                continue;
            }
            plain += c;
            marks.push_back(starts ? text.advancement : -1);
            starts = false;
        }
        for (size_t i = marks.size(); i-- > 0;)
            if (marks[i] >= 0) {
                marks[i] = 0; // the last sound: the vowel
                break;
            }
        Parameter(0x50, 17, 1).Parameter(0x50, 18, static_cast<int>(plain.size()));
        for (size_t i = 0; i < plain.size(); ++i)
            Parameter(0x50, 19 + static_cast<int>(i), plain[i], marks[i]);
        return Parameter(0x50, 127, 127);
    }
    const std::vector<RVEEvent>& Events() const { return m_events; }

private:
    void Put(int controller, int value) {
        m_events.push_back({0, 0xB0, static_cast<uint8_t>(controller), static_cast<uint8_t>(value), 0});
    }
    std::vector<RVEEvent> m_events;
};

/// What an instance makes of a stream that arrives at once, -1..1.
inline std::vector<double> Sing(const Stream& stream, double seconds = 0.8, uint32_t rate = 44100) {
    const auto singer = std::make_unique<rve::Singer>();
    singer->Configure(rate);
    std::vector<double> sound;
    const auto steps = static_cast<int>(seconds * 44100 / 256);
    for (int i = 0; i < steps; ++i) {
        int16_t samples[558];
        const uint32_t count =
            singer->Step(i ? 0 : static_cast<int32_t>(stream.Events().size()), stream.Events().data(), samples, 558);
        for (uint32_t k = 0; k < count; ++k)
            sound.push_back(samples[k] / 32768.0);
    }
    return sound;
}

// Measurements that share nothing with the engine.

inline std::vector<double> Part(const std::vector<double>& sound, double fromMs, double toMs, double rate = 44100) {
    const auto at = [&](double ms) { return std::min(sound.size(), static_cast<size_t>(ms * rate / 1000)); };
    return {sound.begin() + static_cast<std::ptrdiff_t>(at(fromMs)),
            sound.begin() + static_cast<std::ptrdiff_t>(at(toMs))};
}

inline double Rms(const std::vector<double>& sound) {
    double sum = 0;
    for (const double x : sound)
        sum += x * x;
    return sound.empty() ? 0 : std::sqrt(sum / static_cast<double>(sound.size()));
}

inline double Db(double ratio) { return 20 * std::log10(ratio); }

/// Fundamental near `about` Hz (within a few per cent): the autocorrelation over as many periods as fit, and a parabola
/// through its peak; first over one period, then over more and more, so that no period is miscounted.
inline double PitchOf(const std::vector<double>& sound, double about, double rate = 44100) {
    const auto correlation = [&](int lag) {
        double product = 0, a = 0, b = 0;
        for (size_t i = 0; i + static_cast<size_t>(lag) < sound.size(); ++i) {
            const double x = sound[i], y = sound[i + static_cast<size_t>(lag)];
            product += x * y;
            a += x * x;
            b += y * y;
        }
        return product / std::sqrt(a * b + 1e-30);
    };
    const double most = 0.5 * static_cast<double>(sound.size()) * about / rate;
    double hz = about;
    for (int periods = 1; periods <= std::max(1.0, most); periods *= 3) {
        const double centre = periods * rate / hz;
        const double reach = periods == 1 ? centre * 0.2 : rate / hz * 0.3;
        int best = static_cast<int>(centre - reach);
        double highest = -2;
        for (int lag = std::max(best, 2); lag <= static_cast<int>(centre + reach) + 1; ++lag)
            if (const double value = correlation(lag); value > highest) {
                highest = value;
                best = lag;
            }
        const double left = correlation(best - 1), right = correlation(best + 1);
        const double bend = left - 2 * highest + right;
        hz = periods * rate / (best + (bend < 0 ? (left - right) / (2 * bend) : 0));
    }
    return hz;
}

inline double Cents(double hz, double reference) { return 1200 * std::log2(hz / reference); }
inline double HzOf(double note) { return 440 * std::pow(2, (note - 69) / 12); }

/// Amplitude of one frequency, Hann window.
inline double Tone(const std::vector<double>& sound, double hz, double rate = 44100) {
    double re = 0, im = 0;
    const auto n = static_cast<double>(sound.size());
    for (size_t i = 0; i < sound.size(); ++i) {
        const double w = 0.5 - 0.5 * std::cos(2 * M_PI * static_cast<double>(i) / n);
        re += w * sound[i] * std::cos(2 * M_PI * hz * static_cast<double>(i) / rate);
        im += w * sound[i] * std::sin(2 * M_PI * hz * static_cast<double>(i) / rate);
    }
    return 4 * std::hypot(re, im) / n;
}

/// RMS of a band, by tones 40 Hz apart.
inline double Band(const std::vector<double>& sound, double from, double to) {
    double sum = 0;
    for (double hz = from; hz < to; hz += 40) {
        const double tone = Tone(sound, hz);
        sum += tone * tone / 2;
    }
    return std::sqrt(sum);
}

/// The largest second difference, which a click stands out in.
inline double Roughness(const std::vector<double>& sound) {
    double worst = 0;
    for (size_t i = 2; i < sound.size(); ++i)
        worst = std::max(worst, std::abs(sound[i] - 2 * sound[i - 1] + sound[i - 2]));
    return worst;
}

/// Where the envelope (2 ms) first passes a share of its later level, in milliseconds.
inline double OnsetOf(const std::vector<double>& sound, double level) {
    for (size_t i = 0; i + 88 < sound.size(); i += 11)
        if (Rms({sound.begin() + static_cast<std::ptrdiff_t>(i), sound.begin() + static_cast<std::ptrdiff_t>(i + 88)}) >
            level)
            return static_cast<double>(i + 44) / 44.1;
    return -1;
}
