#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// What the editor edits: plain values that can be copied and compared, which is all that undo, saving and "was it
/// changed?" need. Times are ticks of 480 to a quarter note, texts UTF-8. Nothing here knows of the library: the score
/// that it sings from is made anew from these values (score.h).
namespace editor {

constexpr uint32_t kQuarter = 480;      ///< ticks
constexpr uint32_t kLastTick = 1 << 24; ///< two and a half hours and more at any usual tempo
constexpr size_t kMostTracks = 16;      ///< as many as the library's mixer plays
constexpr size_t kMostNotes = 60000;    ///< of a track: each needs one of its 65534 handles, and icons need some
constexpr int kHighestKey = 127;

/// The icons that a note can carry.
enum IconSlot : size_t { kAttack, kRelease, kTransition, kVibrato, kIconSlots };

struct Note {
    uint32_t tick = 0;
    uint32_t length = kQuarter; ///< 1 or more
    int key = 60;               ///< 0..127, 60 is middle C
    int velocity = 80;          ///< 1..127
    /// As it is typed: "twin-" is a syllable whose word goes on, "night[n aI t]" one with phonemes given by hand, an
    /// empty one goes on with the vowel before it.
    std::string lyric = {};
    std::array<std::string, kIconSlots> icons = {}; ///< names in the databases; empty: none

    uint32_t End() const { return tick + length; }
    bool operator==(const Note&) const = default;
};

/// A dynamics icon ("mf", "Crescendo") at its place.
struct Mark {
    uint32_t tick = 0;
    std::string icon = {};
    bool operator==(const Mark&) const = default;
};

/// From its tick on a curve has this value.
struct CurvePoint {
    uint32_t tick = 0;
    int value = 0;
    bool operator==(const CurvePoint&) const = default;
};
using Curve = std::vector<CurvePoint>; ///< by tick, one point a tick

enum CurveKind : size_t { kDynamics, kPitch, kCurveKinds };
struct CurveRange {
    const char* name;
    int lowest;
    int highest;
    int usual; ///< where nothing is drawn
};
/// Loudness as the engine counts it (it begins at 72); pitch in cents around the note.
constexpr CurveRange kCurveRanges[kCurveKinds] = {{"Dynamics", 0, 127, 72}, {"Pitch", -200, 200, 0}};

struct Track {
    std::string name = {};
    std::string voice = {};       ///< its name in the databases; empty: the one that suits the notes
    std::vector<Note> notes = {}; ///< by tick, then key
    std::vector<Mark> marks = {}; ///< by tick; they count while no dynamics are drawn
    std::array<Curve, kCurveKinds> curves = {};
    double volume = 0; ///< dB, -60..12
    double pan = 0;    ///< -1 left .. 1 right
    bool isMuted = false;
    bool isSolo = false;

    bool operator==(const Track&) const = default;
};

struct TempoChange {
    uint32_t tick = 0;
    uint32_t microseconds = 500000; ///< of a quarter note, 1..0xFFFFFF
    bool operator==(const TempoChange&) const = default;
};

/// Numerator over 1 << denominatorExponent.
struct MeterChange {
    uint32_t tick = 0;
    int numerator = 4;           ///< 1..255
    int denominatorExponent = 2; ///< 0..7
    bool operator==(const MeterChange&) const = default;
};

struct Document {
    std::string title;
    std::vector<TempoChange> tempos = {{}}; ///< by tick, the first at 0
    std::vector<MeterChange> meters = {{}}; ///< likewise
    std::vector<Track> tracks = {Track{.name = "Voice 1"}};

    bool operator==(const Document&) const = default;
};

/// Where the last note ends.
uint32_t EndOf(const Document& document);
/// Whether a track is heard: not muted, and solo where any is.
bool IsHeard(const Document& document, const Track& track);
/// What a curve says at a tick.
int ValueAt(const Curve& curve, CurveKind kind, uint32_t tick);

} // namespace editor
