#include "player_object.h"

#include "device_play.h"
#include "level.h"

#include <algorithm>
#include <cmath>

namespace torv::c {

namespace {

constexpr uint64_t kNoSeek = UINT64_MAX;
constexpr float kFullScale = 1.0F / 32768;

double GainOf(double level) {
    CheckLevel(level);
    return std::pow(10, level / 20);
}

} // namespace

PlayerObject::PlayerObject(ScoreObject& score, const torv_player_options& options)
    : m_callback(options.callback), m_user(options.user), m_device(options.device ? options.device : ""),
      m_isPulled(options.pull != 0), m_milliseconds(score.Milliseconds()), m_sung(score, options.rate),
      m_gains(score.parts.size()), m_seek(kNoSeek) {
    for (size_t i = 0; i < m_gains.size(); ++i) {
        SetPart(i, score.parts[i].level, score.parts[i].pan, false);
        m_gains[i].lastLeft = m_gains[i].left * kFullScale;
        m_gains[i].lastRight = m_gains[i].right * kFullScale;
    }
}

PlayerObject::~PlayerObject() { Stop(); }

void PlayerObject::Start() {
    if (IsOnOwnThread())
        throw Failure{TORV_BUSY, "a player is not started from inside its callback"};
    if (m_isPlaying)
        return;
    if (m_play)
        m_play->End(); // of a play that has ended by itself
    const uint64_t asked = m_seek.load();
    const Region region = TheRegion();
    if ((asked == kNoSeek ? m_frame.load() : asked) >= region.end || m_hasEnded)
        m_seek = region.start;
    m_hasEnded = false;
    m_hasDeviceFailed = false;
    if (m_isPulled) {
        m_isPlaying = true;
        return;
    }
    m_play = std::make_unique<DevicePlay>(*this, m_device, m_callback, m_user);
    m_isPlaying = true;
    try {
        m_play->Begin();
    } catch (...) {
        m_isPlaying = false;
        throw;
    }
}

bool PlayerObject::IsOnOwnThread() const { return m_play && m_play->IsCurrent(); }

void PlayerObject::Stop() {
    m_isPlaying = false;
    if (m_play)
        m_play->End();
    if (!m_isPulled && m_seek.load() == kNoSeek)
        m_seek = m_heard.load(); // what the device still had is played again
}

void PlayerObject::Seek(uint32_t milliseconds) {
    const uint64_t frame = FrameAt(milliseconds);
    m_hasEnded = false;
    m_heard = frame;
    m_seek = frame;
}

void PlayerObject::SetRegion(uint32_t start, uint32_t end, bool isLooped) {
    if (end != 0 && end <= start)
        throw Failure{TORV_OUT_OF_RANGE, "the region's end lies before its start"};
    m_region = uint64_t{end} << 32 | start;
    m_isLooped = isLooped;
}

void PlayerObject::SetPart(size_t part, double level, double pan, bool isMuted) {
    CheckIndex(part, m_gains.size(), "part that is sung");
    const double gain = GainOf(level);
    if (!(pan >= -1 && pan <= 1))
        throw Failure{TORV_OUT_OF_RANGE, "a pan is -1 to 1"};
    const StereoGain sides = GainsAt(isMuted ? 0 : gain, isMuted ? 0 : gain, pan);
    m_gains[part].left = static_cast<float>(sides.left);
    m_gains[part].right = static_cast<float>(sides.right);
}

void PlayerObject::SetLevel(double level) { m_level = static_cast<float>(GainOf(level)); }

torv_player_state PlayerObject::State() const {
    const auto milliseconds = [this](uint64_t frames) { return static_cast<uint32_t>(frames * 1000 / m_sung.Rate()); };
    const uint64_t asked = m_seek.load();
    const uint64_t frame = m_isPulled ? (asked == kNoSeek ? m_frame.load() : asked) : m_heard.load();
    torv_player_state state{};
    state.position = milliseconds(frame);
    state.length = m_sung.IsComplete() ? milliseconds(m_sung.Sung()) : m_milliseconds;
    state.sung = milliseconds(m_sung.Sung());
    state.playing = m_isPlaying;
    state.ended = m_hasEnded;
    state.failed = m_sung.HasFailed() || m_hasDeviceFailed;
    state.waited = m_waited;
    return state;
}

PlayerObject::Region PlayerObject::TheRegion() const {
    const uint64_t region = m_region;
    const auto end = static_cast<uint32_t>(region >> 32);
    return {FrameAt(static_cast<uint32_t>(region)), end ? FrameAt(end) : UINT64_MAX};
}

void PlayerObject::Silence(float* frames, size_t count) { std::fill_n(frames, 2 * count, 0.0F); }

void PlayerObject::Read(float* frames, size_t count) noexcept {
    if (const uint64_t asked = m_seek.exchange(kNoSeek); asked != kNoSeek)
        m_frame = asked;
    for (bool hasTurned = false; count > 0 && m_isPlaying;) {
        const Region region = TheRegion();
        const uint64_t sung = m_sung.Sung();
        const bool isAllSung = m_sung.IsComplete();
        const uint64_t frame = m_frame;
        const uint64_t end = isAllSung ? std::min(region.end, m_isLooped ? UINT64_MAX : sung) : region.end;
        const bool isEmptyLoop = hasTurned && frame >= end;
        if (frame >= end || (isAllSung && region.end == UINT64_MAX && frame >= sung)) {
            if (!m_isLooped || isEmptyLoop) {
                m_isPlaying = false;
                m_hasEnded = true;
                break;
            }
            m_frame = region.start;
            hasTurned = true;
            continue;
        }
        const uint64_t there = isAllSung ? end : std::min(end, sung);
        if (frame >= there) { // the singers are behind, or have given up
            m_isPlaying = m_isPlaying && !m_sung.HasFailed();
            m_waited = m_waited + 1;
            break;
        }
        const auto run = static_cast<size_t>(std::min<uint64_t>(count, there - frame));
        Mix(frames, run);
        m_frame = frame + run;
        frames += 2 * run;
        count -= run;
        hasTurned = false;
    }
    Silence(frames, count);
}

void PlayerObject::Mix(float* frames, size_t count) {
    Silence(frames, count);
    const uint64_t first = m_frame;
    const float level = m_level * kFullScale;
    for (size_t part = 0; part < m_gains.size(); ++part) {
        Gain& gain = m_gains[part];
        const float left = gain.left * level;
        const float right = gain.right * level;
        const float stepLeft = (left - gain.lastLeft) / static_cast<float>(count);
        const float stepRight = (right - gain.lastRight) / static_cast<float>(count);
        const int16_t* samples = nullptr;
        for (size_t at = 0; const size_t run = m_sung.Run(part, first + at, count - at, samples);) {
            for (size_t i = 0; i < run; ++i, ++at) {
                const auto way = static_cast<float>(at + 1);
                frames[2 * at] += static_cast<float>(samples[i]) * (gain.lastLeft + stepLeft * way);
                frames[2 * at + 1] += static_cast<float>(samples[i]) * (gain.lastRight + stepRight * way);
            }
            if (at == count)
                break;
        }
        gain.lastLeft = left;
        gain.lastRight = right;
    }
}

} // namespace torv::c
