#include "play.h"

#include "describe.h"
#include "errors.h"
#include "input.h"
#include "messages.h"
#include "place.h"
#include "play_session.h"
#include "terminal.h"
#include "terminal_keys.h"
#include <torv/songs/engine_stream.h>
#include <torv/songs/nearest_names.h>
#include <torv/songs/wave_outputs.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace torv::songs;

namespace {

constexpr DWORD kTurn = 20;         // milliseconds
constexpr DWORD kSeekStep = 5000;   // milliseconds
constexpr double kVolumeStep = 2.0; // dB, as are the next two
constexpr double kLoudest = 12.0;
constexpr double kQuietest = -60.0;
constexpr DWORD kOpenEnd = 0x7FFFFFFF;
constexpr const char* kNullOutput = "Null Output";

std::string ChooseDevice(const PlayOptions& options) {
    const std::vector<std::string> names = torv::songs::WaveOutputNames();
    if (names.empty())
        throw InputError{"there is no wave output to play on: write a wave file instead (torv sing)"};
    if (options.device.empty()) {
        if (names.size() == 1 && names.front() == kNullOutput)
            Remark(options.song.quiet, "there is no sound card here: playing on the Null Output, which nobody hears");
        return names.front();
    }
    if (const auto found = FindName(names, options.device))
        return names[*found];
    throw WrongUse{"there is no wave output \"" + options.device + "\": " + SuggestNames(names, options.device)};
}

/// The line on the terminal; nothing at all when there is none.
class Display {
public:
    Display(const PlayOptions& options, DWORD lead, DWORD end)
        : m_isShown(!options.song.quiet && IsTerminal(stderr)), m_lead(lead), m_end(end) {}
    ~Display() { Wipe(); }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    std::string Clock(DWORD position) const { return ClockText((std::max(position, m_lead) - m_lead) / 1000.0); }
    void Show(const PlaySession& session, double volume, bool hasKeys) {
        if (!m_isShown)
            return;
        char level[32];
        std::snprintf(level, sizeof level, "  %+.0f dB", volume);
        const std::string line = FittingLine(
            {(session.IsPaused() ? "paused  " : "playing ") + Clock(session.Position()), " / " + Clock(m_end), level,
             hasKeys ? "  space: pause, q: quit" : "", hasKeys ? ", arrows: seek, volume" : ""},
            TerminalWidth(stderr));
        if (m_last == line)
            return;
        m_last = line;
        std::fprintf(stderr, "\r\033[K%s", line.c_str());
        std::fflush(stderr);
    }
    void Wipe() {
        if (!m_last.empty())
            std::fputs("\r\033[K", stderr);
        m_last.clear();
    }

private:
    const bool m_isShown;
    const DWORD m_lead;
    const DWORD m_end;
    std::string m_last;
};

/// False when it is to end.
bool Obey(Key key, PlaySession& session, const PlaySession::Settings& settings, double& volume) {
    switch (key) {
    case Key::Quit:
        return false;
    case Key::Pause:
        if (session.IsPaused())
            session.Play(session.Position());
        else
            session.Pause();
        break;
    case Key::Start:
        session.Seek(settings.start);
        break;
    case Key::Forward:
        session.Seek(session.Position() + kSeekStep);
        break;
    case Key::Back:
        session.Seek(session.Position() > kSeekStep ? session.Position() - kSeekStep : 0);
        break;
    case Key::Louder:
    case Key::Quieter:
        volume = std::clamp(volume + (key == Key::Louder ? kVolumeStep : -kVolumeStep), kQuietest, kLoudest);
        session.SetVolume(volume);
        break;
    default:
        break;
    }
    return true;
}

} // namespace

void Play(const PlayOptions& options) {
    SongScore song = MakeSongScore(options.song);
    const DWORD lead = song.score.leadMilliseconds;
    std::vector<std::unique_ptr<CQuillMidiBuffer>> streams;
    std::vector<PlayTrack> tracks;
    DWORD songEnd = lead;
    for (size_t i = 0; i < song.parts.size(); ++i) {
        const SungPart& part = song.parts[i];
        CQuillMidiBuffer& stream =
            *streams.emplace_back(MakeEngineStream(song.score, song.score.parts[i], song.presend));
        songEnd = std::max(songEnd, stream.GetLastTime());
        tracks.push_back({&stream, CWaveOut::Db2Amplitude(part.decibels) / std::sqrt(song.parts.size()), part.pan});
    }
    PlaySession::Settings settings;
    settings.rate = options.rate;
    settings.preroll = song.presend;
    settings.start = options.from.empty() ? lead : BeginInStream("--from", options.from, song);
    settings.end = options.to.empty() ? (options.loop ? songEnd : kOpenEnd) : PlaceInStream("--to", options.to, song);
    settings.last = std::min(settings.end, songEnd);
    settings.isLooped = options.loop;
    if (settings.end <= settings.start)
        throw InputError{"--to " + options.to + ": lies before the beginning; choose a later bar or time"};
    settings.device = ChooseDevice(options);

    song.messages->Take(); // what comes from here on is about the play
    double volume = options.level;
    Display display(options, lead, settings.last);
    PlaySession session(std::move(tracks), settings);
    session.SetVolume(volume);
    TerminalKeys keys;
    session.Play(settings.start);
    while (!session.IsOver()) {
        if (!Obey(keys.Poll(), session, settings, volume))
            break;
        session.Listen();
        display.Show(session, volume, keys.IsTerminal());
        Sleep(kTurn);
    }
    display.Wipe();
    if (!song.messages->Last().empty())
        throw InputError{song.messages->Last() + ": see torv devices for what there is to play on"};
    if (!options.song.quiet)
        std::printf("played %sto %s of %s on %s\n",
                    song.parts.size() > 1 ? (Counted(song.parts.size(), "part") + " ").c_str() : "",
                    display.Clock(session.Position()).c_str(), NameOfInput(options.song.input).c_str(),
                    settings.device.c_str());
}
