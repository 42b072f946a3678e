#ifndef TORV_C_TORV_HPP
#define TORV_C_TORV_HPP

/// @file
/// torv/c/torv.h for hosts in C++20: owners that are moved, spans, and calls that throw. It is a header alone, so that
/// a host built by any compiler works with the library. What a call takes and means stands in torv.h.
///
/// A host without exceptions defines TORV_NO_EXCEPTIONS: then a call that fails calls `torv::c::OnFailure`, which it
/// sets, and answers a default; without one the program ends.

#include <torv/c/torv.h>

#include <cstdlib>
#include <span>
#include <string>
#include <utility>
#include <vector>
#if !defined(TORV_NO_EXCEPTIONS)
#include <stdexcept>
#endif

namespace torv::c {

#if defined(TORV_NO_EXCEPTIONS)
/// Is told a failure's status and text.
inline void (*OnFailure)(torv_status status, const char* text) = nullptr;
#else
/// A call that failed: its status, and what torv_error_text says.
class Failure : public std::runtime_error {
public:
    /// Of the call that has just failed on this thread.
    explicit Failure(torv_status status) : std::runtime_error(torv_error_text()), m_status(status) {}
    /// What the call answered.
    torv_status Status() const { return m_status; }

private:
    torv_status m_status;
};
#endif

/// Throws Failure unless the status is TORV_OK.
inline void Check(torv_status status) {
    if (status == TORV_OK)
        return;
#if defined(TORV_NO_EXCEPTIONS)
    if (!OnFailure)
        std::abort();
    OnFailure(status, torv_error_text());
#else
    throw Failure(status);
#endif
}

/// The text that a call gives out, whose last arguments are a buffer, its capacity and what is needed.
template <class Call>
std::string TextOf(Call call) {
    std::size_t needed = 0;
    Check(call(nullptr, 0, &needed));
    std::string text(needed, '\0');
    if (needed > 0)
        Check(call(text.data(), needed, &needed));
    text.resize(needed > 0 ? needed - 1 : 0);
    return text;
}

/// A record with its size set.
template <class Record>
Record Sized() {
    Record record{};
    record.size = sizeof(Record);
    return record;
}

/// Owns a handle: movable, frees it at its end. Converts to the handle, for all calls that have no function here.
template <class Handle, torv_status (*Free)(Handle*)>
class Owner {
public:
    /// Owns nothing.
    Owner() = default;
    /// Takes a handle over.
    explicit Owner(Handle* handle) : m_handle(handle) {}
    ~Owner() { Reset(); }
    /// The other owns nothing afterwards.
    Owner(Owner&& other) noexcept : m_handle(other.Release()) {}
    /// Frees what it owns and takes the other's, which owns nothing afterwards.
    Owner& operator=(Owner&& other) noexcept {
        if (this != &other) {
            Reset();
            m_handle = other.Release();
        }
        return *this;
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    /// The handle, which stays here; null without one.
    operator Handle*() const { return m_handle; }
    /// Whether it owns a handle.
    explicit operator bool() const { return m_handle != nullptr; }
    /// Gives the handle up.
    Handle* Release() noexcept { return std::exchange(m_handle, nullptr); }
    /// Frees it.
    void Reset() noexcept { static_cast<void>(Free(Release())); }

private:
    Handle* m_handle = nullptr;
};

/// Sound in memory.
class Sound : public Owner<torv_sound, torv_sound_free> {
public:
    /// As an owner is made.
    using Owner::Owner;
    /// Of samples, interleaved where there are two channels.
    Sound(std::uint32_t rate, std::uint32_t channels, std::span<const float> samples) {
        torv_sound* sound = nullptr;
        Check(torv_sound_new(rate, channels, samples.data(), samples.size() / (channels ? channels : 1), &sound));
        *this = Sound(sound);
    }
    /// Reads a wave file: torv_sound_open.
    static Sound Open(const std::string& path) {
        torv_sound* sound = nullptr;
        Check(torv_sound_open(path.c_str(), &sound));
        return Sound(sound);
    }
    /// torv_sound_get_info.
    torv_sound_info Info() const {
        auto info = Sized<torv_sound_info>();
        Check(torv_sound_get_info(*this, &info));
        return info;
    }
    /// Good while the sound lives.
    std::span<const float> Samples() const {
        const torv_sound_info info = Info();
        const float* samples = nullptr;
        Check(torv_sound_get_samples(*this, &samples));
        return {samples, static_cast<std::size_t>(info.frames) * info.channels};
    }
    /// Writes a wave file: torv_sound_save.
    torv_saved Save(const std::string& path, bool lower = true) const {
        auto saved = Sized<torv_saved>();
        Check(torv_sound_save(*this, path.c_str(), lower, &saved));
        return saved;
    }
};

/// The databases of voices and expressions, once in a process.
class Databases : public Owner<torv_databases, torv_databases_free> {
public:
    /// As an owner is made.
    using Owner::Owner;
    /// torv_databases_open.
    static Databases Open() {
        torv_databases* databases = nullptr;
        Check(torv_databases_open(&databases));
        return Databases(databases);
    }
    /// The names of a kind.
    std::vector<std::string> Names(torv_icon_kind kind) const {
        std::size_t count = 0;
        Check(torv_databases_count(*this, kind, &count));
        std::vector<std::string> names;
        for (std::size_t i = 0; i < count; ++i)
            names.push_back(TextOf([&](char* buffer, std::size_t capacity, std::size_t* needed) {
                return torv_databases_get(*this, kind, i, nullptr, buffer, capacity, needed);
            }));
        return names;
    }
};

/// A song as plain values.
class Song : public Owner<torv_song, torv_song_free> {
public:
    /// As an owner is made.
    using Owner::Owner;
    /// An empty song.
    static Song Make() {
        torv_song* song = nullptr;
        Check(torv_song_new(&song));
        return Song(song);
    }
    /// Reads a song file: torv_song_open.
    static Song Open(const std::string& path, const std::string& encoding = {}) {
        torv_song* song = nullptr;
        Check(torv_song_open(path.c_str(), encoding.c_str(), &song));
        return Song(song);
    }
    /// A song of its own with the same content.
    Song Copy() const {
        torv_song* copy = nullptr;
        Check(torv_song_copy(*this, &copy));
        return Song(copy);
    }
    /// torv_song_get_info.
    torv_song_info Info() const {
        auto info = Sized<torv_song_info>();
        Check(torv_song_get_info(*this, &info));
        return info;
    }
    /// torv_song_get_text.
    std::string Text(torv_song_text which) const {
        return TextOf([&](char* buffer, std::size_t capacity, std::size_t* needed) {
            return torv_song_get_text(*this, which, buffer, capacity, needed);
        });
    }
    /// The new part's index.
    std::size_t AddPart(const std::string& name) {
        std::size_t index = 0;
        Check(torv_part_add(*this, name.c_str(), &index));
        return index;
    }
    /// torv_note_get.
    torv_note Note(std::size_t part, std::size_t note) const {
        auto record = Sized<torv_note>();
        Check(torv_note_get(*this, part, note, &record));
        return record;
    }
    /// A note with a word, which may be empty; its index.
    std::size_t AddNote(std::size_t part, std::uint32_t tick, std::uint32_t length, int key, const std::string& text) {
        auto note = Sized<torv_note>();
        note.tick = tick;
        note.length = length;
        note.key = key;
        note.velocity = 80;
        std::size_t index = 0;
        Check(torv_note_add(*this, part, &note, &index));
        auto word = Sized<torv_word>();
        word.verse = 1;
        if (!text.empty())
            Check(torv_word_add(*this, part, index, &word, text.c_str(), nullptr));
        return index;
    }
    /// torv_part_set_curve.
    void SetCurve(std::size_t part, int curve, std::span<const torv_point> points) {
        Check(torv_part_set_curve(*this, part, curve, points.data(), points.size()));
    }
};

/// A song made ready to be sung.
class Score : public Owner<torv_score, torv_score_free> {
public:
    /// As an owner is made.
    using Owner::Owner;
    /// The options' size is set here, as with all options below.
    static Score Make(const Song& song, const Databases& databases, torv_score_options options = {}) {
        options.size = sizeof options;
        torv_score* score = nullptr;
        Check(torv_score_make(song, databases, &options, &score));
        return Score(score);
    }
    /// torv_score_get_info.
    torv_score_info Info() const {
        auto info = Sized<torv_score_info>();
        Check(torv_score_get_info(*this, &info));
        return info;
    }
    /// torv_score_get_phonemes.
    std::string Phonemes(std::size_t part, std::size_t note) const {
        return TextOf([&](char* buffer, std::size_t capacity, std::size_t* needed) {
            return torv_score_get_phonemes(*this, part, note, buffer, capacity, needed);
        });
    }
    /// torv_sing.
    Sound Sing(torv_sing_options options = {}) const {
        options.size = sizeof options;
        torv_sound* sound = nullptr;
        Check(torv_sing(*this, &options, &sound));
        return Sound(sound);
    }
    /// torv_sing_file.
    torv_saved SingFile(const std::string& path, torv_sing_options options = {}) const {
        options.size = sizeof options;
        auto saved = Sized<torv_saved>();
        Check(torv_sing_file(*this, &options, path.c_str(), &saved));
        return saved;
    }
};

/// Plays a score.
class Player : public Owner<torv_player, torv_player_free> {
public:
    /// As an owner is made.
    using Owner::Owner;
    /// torv_player_new.
    static Player Make(const Score& score, torv_player_options options = {}) {
        options.size = sizeof options;
        torv_player* player = nullptr;
        Check(torv_player_new(score, &options, &player));
        return Player(player);
    }
    /// torv_player_start.
    void Start() { Check(torv_player_start(*this)); }
    /// torv_player_stop.
    void Stop() { Check(torv_player_stop(*this)); }
    /// torv_player_seek.
    void Seek(std::uint32_t milliseconds) { Check(torv_player_seek(*this, milliseconds)); }
    /// torv_player_get_state.
    torv_player_state State() const {
        auto state = Sized<torv_player_state>();
        Check(torv_player_get_state(*this, &state));
        return state;
    }
    /// For audio callbacks: two interleaved channels; the status in place of an exception.
    torv_status Read(std::span<float> samples) noexcept {
        return torv_player_read(*this, samples.data(), samples.size() / 2);
    }
};

} // namespace torv::c

#endif
