// By FluidSynth's library.
#include "band.h"

#include "band_events.h"
#include "errors.h"
#include "sound_font.h"

#include <fluidsynth.h>

#include <algorithm>
#include <cmath>

using namespace torv::songs;

namespace {

constexpr double kMostBend = 24;     // semitones
constexpr int kBendCentre = 8192;    // of 14 bits
constexpr double kLongestTail = 4;   // seconds after the last event
constexpr size_t kQuietCheck = 4096; // frames
constexpr int kChannelsAtOnce = 16;  // the library's channels come in such groups
constexpr int kPolyphony = 1024;

struct Deleter {
    void operator()(fluid_settings_t* settings) const { delete_fluid_settings(settings); }
    void operator()(fluid_synth_t* synth) const { delete_fluid_synth(synth); }
};

class Band : public SoundSource {
public:
    Band(const Song& song, const BandPlan& plan)
        : m_events(BandEventsOf(song, plan)), m_settings(new_fluid_settings()) {
        m_rate = plan.rate;
        m_channels = 2;
        if (plan.end > plan.start)
            m_end = std::llround((plan.end - plan.start) * plan.rate);
        for (const size_t part : plan.parts)
            m_parts.push_back(song.parts[part]);
        const std::string soundFont = plan.soundFont.empty() ? FindSoundFont() : plan.soundFont;
        for (const int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO, FLUID_DBG})
            fluid_set_log_function(level, nullptr, nullptr); // what fails is told here
        const auto channels = static_cast<int>((m_parts.size() + kChannelsAtOnce - 1) / kChannelsAtOnce);
        fluid_settings_setint(m_settings.get(), "synth.midi-channels", std::max(channels, 1) * kChannelsAtOnce);
        fluid_settings_setint(m_settings.get(), "synth.dynamic-sample-loading", 1);
        fluid_settings_setint(m_settings.get(), "synth.polyphony", kPolyphony);
        fluid_settings_setnum(m_settings.get(), "synth.sample-rate", plan.rate);
        m_synth.reset(new_fluid_synth(m_settings.get()));
        if (!m_synth)
            throw InputError{"--band: FluidSynth cannot play at " + std::to_string(plan.rate) +
                             " samples a second; choose --rate 44100"};
        if (!fluid_is_soundfont(soundFont.c_str()) ||
            fluid_synth_sfload(m_synth.get(), soundFont.c_str(), 1) == FLUID_FAILED)
            throw InputError{soundFont +
                             ": cannot be read as a sound font (.sf2, .sf3); name another one with --soundfont"};
        Band::Rewind();
    }

    void Rewind() override {
        fluid_synth_system_reset(m_synth.get());
        for (size_t i = 0; i < m_parts.size(); ++i) {
            const auto channel = static_cast<int>(i);
            const bool isDrums = m_parts[i].IsPercussion();
            fluid_synth_set_channel_type(m_synth.get(), channel, isDrums ? CHANNEL_TYPE_DRUM : CHANNEL_TYPE_MELODIC);
            fluid_synth_bank_select(m_synth.get(), channel, isDrums ? 128 : 0);
            fluid_synth_program_change(m_synth.get(), channel, std::max(m_parts[i].program, 0));
            fluid_synth_pitch_wheel_sens(m_synth.get(), channel, static_cast<int>(kMostBend));
        }
        m_frame = 0;
        m_next = 0;
        for (; m_next < m_events.size() && m_events[m_next].frame < 0; ++m_next)
            if (m_events[m_next].kind != BandEvent::Kind::NoteOn)
                Do(m_events[m_next]);
    }

    size_t Read(double* frames, size_t count) override {
        size_t done = 0;
        while (done < count && !IsOver()) {
            for (; m_next < m_events.size() && m_events[m_next].frame <= m_frame; ++m_next)
                Do(m_events[m_next]);
            int64_t most = static_cast<int64_t>(std::min(count - done, kQuietCheck));
            if (m_next < m_events.size())
                most = std::min(most, m_events[m_next].frame - m_frame);
            if (m_end > 0)
                most = std::min(most, m_end - m_frame);
            m_sound.resize(2 * static_cast<size_t>(most));
            if (fluid_synth_write_float(m_synth.get(), static_cast<int>(most), m_sound.data(), 0, 2, m_sound.data(), 1,
                                        2) != FLUID_OK)
                throw InputError{"--band: FluidSynth gave up while playing"};
            std::copy(m_sound.begin(), m_sound.end(), frames + 2 * done);
            done += static_cast<size_t>(most);
            m_frame += most;
        }
        return done;
    }

private:
    bool IsOver() {
        if (m_end > 0)
            return m_frame >= m_end;
        if (m_next < m_events.size())
            return false;
        const int64_t last = m_events.empty() ? 0 : m_events.back().frame;
        return fluid_synth_get_active_voice_count(m_synth.get()) == 0 || m_frame - last > kLongestTail * m_rate;
    }

    void Do(const BandEvent& event) {
        fluid_synth_t* const synth = m_synth.get();
        switch (event.kind) {
        case BandEvent::Kind::NoteOff:
            fluid_synth_noteoff(synth, event.channel, event.number);
            break;
        case BandEvent::Kind::Controller:
            fluid_synth_cc(synth, event.channel, event.number, static_cast<int>(event.value));
            break;
        case BandEvent::Kind::Bend:
            fluid_synth_pitch_bend(
                synth, event.channel,
                std::clamp(kBendCentre + static_cast<int>(std::lround(event.value / kMostBend * kBendCentre)), 0,
                           2 * kBendCentre - 1));
            break;
        case BandEvent::Kind::NoteOn:
            fluid_synth_noteon(synth, event.channel, event.number, static_cast<int>(event.value));
            break;
        }
    }

    const std::vector<BandEvent> m_events;
    std::vector<Part> m_parts;
    int64_t m_end = 0; ///< frames; 0: when all has died away
    int64_t m_frame = 0;
    size_t m_next = 0;
    std::vector<float> m_sound;
    std::unique_ptr<fluid_settings_t, Deleter> m_settings;
    std::unique_ptr<fluid_synth_t, Deleter> m_synth;
};

} // namespace

std::unique_ptr<SoundSource> MakeBand(const Song& song, const BandPlan& plan) {
    return std::make_unique<Band>(song, plan);
}
