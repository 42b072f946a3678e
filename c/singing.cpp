#include "singing.h"

#include <torv/audio/gain.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>

namespace torv::c {

namespace {

constexpr uint32_t kUsualRate = 44100;
constexpr double kFullScale = 1.0 / 32768;

uint64_t Frames(uint64_t milliseconds, uint32_t rate) { return milliseconds * rate / 1000; }

} // namespace

Singing::Singing(ScoreObject& score, const torv_sing_options& options)
    : m_rate(options.rate ? options.rate : kUsualRate), m_sumLeft(kBlock), m_sumRight(kBlock) {
    if (!CRtSynthesis::IsValidSampleRate(m_rate))
        throw Failure{TORV_OUT_OF_RANGE, "a rate is 44100, 48000 or 96000"};
    if (options.channels > 2)
        throw Failure{TORV_OUT_OF_RANGE, "there is sound of one or two channels"};
    if (options.to != 0 && options.to <= options.from)
        throw Failure{TORV_OUT_OF_RANGE, "the end lies before the beginning"};
    if (options.from > score.Milliseconds())
        throw Failure{TORV_OUT_OF_RANGE, "the song is over after " + std::to_string(score.Milliseconds()) + " ms"};
    if (options.part > score.parts.size())
        throw Failure{TORV_OUT_OF_RANGE, "there is no part " + std::to_string(options.part) + ": there are " +
                                             std::to_string(score.parts.size())};
    const uint64_t lead = Frames(score.score.leadMilliseconds, m_rate);
    m_skip = lead + Frames(options.from, m_rate);
    m_left = options.to ? lead + Frames(options.to, m_rate) - m_skip : UINT64_MAX;
    if (!m_engine.OpenSynthesizer())
        throw Failure{TORV_NO_COMPANION,
                      "the voice engine RVE cannot be loaded or started: put it beside the library, or "
                      "name its folder in TORV_LIBRARY_PATH"};
    const bool isOne = options.part != 0 || score.parts.size() == 1;
    const SungPart& first = score.parts[options.part ? options.part - 1 : 0];
    m_channels = options.channels ? options.channels : isOne && first.pan == 0 ? 1 : 2;
    m_voices.reserve(score.parts.size());
    for (size_t i = 0; i < score.parts.size(); ++i)
        if (options.part == 0 || options.part == i + 1)
            Add(score.parts[i], m_channels == 1 ? 0 : score.parts[i].pan);
}

void Singing::Add(const SungPart& part, double pan) {
    const double gain = std::pow(10, part.level / 20);
    const StereoGain sides = GainsAt(gain, gain, pan);
    auto singer = m_engine.BeginSynthesis(part.stream.get(), m_rate);
    if (!singer)
        throw std::bad_alloc();
    m_voices.push_back({std::move(singer), sides.left * kFullScale, sides.right * kFullScale, {}});
}

void Singing::SingAhead(Voice& voice, uint64_t frames) noexcept {
    try {
        while (voice.waiting.size() < frames && !voice.singer->Finished() && !voice.hasFailed) {
            voice.hasFailed = !voice.singer->Sing();
            voice.waiting.insert(voice.waiting.end(), voice.singer->Samples(),
                                 voice.singer->Samples() + voice.singer->Count());
        }
    } catch (...) {
        voice.hasFailed = true;
    }
}

/// All voices have so many frames waiting, or have ended.
void Singing::SingAhead(uint64_t frames) {
    std::atomic<size_t> next = 0;
    const auto work = [&] {
        for (size_t i = next++; i < m_voices.size(); i = next++)
            SingAhead(m_voices[i], frames);
    };
    {
        std::vector<std::jthread> others;
        const size_t most = std::min<size_t>(m_voices.size(), std::max(1U, std::thread::hardware_concurrency()));
        try {
            while (others.size() + 1 < most)
                others.emplace_back(work);
        } catch (const std::system_error&) { // fewer threads do it too
        }
        work();
    }
    for (const Voice& voice : m_voices)
        if (voice.hasFailed)
            throw Failure{TORV_FAILED, "the voice engine RVE gave up while singing: it may be damaged or not fit this "
                                       "program"};
}

size_t Singing::Next(std::vector<float>& frames) {
    while (m_skip > 0) {
        const auto part = static_cast<size_t>(std::min<uint64_t>(m_skip, kBlock));
        SingAhead(part);
        for (Voice& voice : m_voices)
            voice.waiting.erase(voice.waiting.begin(), voice.waiting.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                                                   part, voice.waiting.size())));
        m_skip -= part;
    }
    const auto wanted = static_cast<size_t>(std::min<uint64_t>(m_left, kBlock));
    SingAhead(wanted);
    size_t count = 0;
    for (const Voice& voice : m_voices)
        count = std::max(count, std::min(voice.waiting.size(), wanted));
    Mix(count, frames);
    m_left -= count;
    return count;
}

void Singing::Mix(size_t count, std::vector<float>& frames) {
    std::fill_n(m_sumLeft.begin(), count, 0.0F);
    std::fill_n(m_sumRight.begin(), count, 0.0F);
    for (Voice& voice : m_voices) {
        const size_t own = std::min(count, voice.waiting.size());
        for (size_t i = 0; i < own; ++i) {
            m_sumLeft[i] += static_cast<float>(voice.waiting[i] * voice.left);
            m_sumRight[i] += static_cast<float>(voice.waiting[i] * voice.right);
        }
        voice.waiting.erase(voice.waiting.begin(), voice.waiting.begin() + static_cast<std::ptrdiff_t>(own));
    }
    frames.resize(count * m_channels);
    for (size_t i = 0; i < count; ++i) {
        frames[i * m_channels] = m_sumLeft[i];
        if (m_channels == 2)
            frames[i * m_channels + 1] = m_sumRight[i];
    }
}

double Singing::Done() const {
    uint64_t sung = 0;
    uint64_t total = 0;
    for (const Voice& voice : m_voices) {
        sung += voice.singer->SungMilliseconds();
        total += voice.singer->TotalMilliseconds();
    }
    return total ? static_cast<double>(sung) / static_cast<double>(total) : 1.0;
}

} // namespace torv::c
