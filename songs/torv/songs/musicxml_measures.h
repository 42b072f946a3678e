#pragma once

#include "torv/songs/measure_order.h"
#include "torv/songs/musicxml_lyrics.h"
#include "torv/songs/song.h"
#include "torv/songs/xml_document.h"

#include <map>

/// What a part's measures say, one by one as they are written, before they are put in the order in which they sound.
namespace torv::songs::musicxml {

/// Which notes belong together: of each staff each voice. A voice that goes over to another staff stays with the one
/// that has most of its notes.
struct VoiceId {
    int staff = 1;
    int voice = 1;

    // NOLINTNEXTLINE(modernize-use-nullptr): what the default compares with is no pointer
    auto operator<=>(const VoiceId&) const = default;
};

struct WrittenNote {
    uint32_t onset = 0; ///< ticks from the measure's beginning
    Note note;          ///< without its time and its words
    std::vector<WrittenWord> words;
    double bend = 0;         ///< semitones that it sounds above its key
    std::vector<int> passes; ///< through a repeat, in which it is sung; empty: in all
    bool isChord = false;
    bool isGrace = false;
    bool hasSlash = false; ///< a grace note that is sung as short as can be
    bool hasPitch = true;
    bool tieStarts = false;
    bool tieStops = false;
    std::vector<int> slurStarts;
    std::vector<int> slurStops;
};

struct Wedge {
    enum class Type { Crescendo, Diminuendo, Stop };
    uint32_t onset = 0;
    int number = 1;
    Type type = Type::Stop;
};

/// A tempo that begins somewhere in a measure.
struct TempoMark {
    uint32_t onset = 0;
    double quartersPerMinute = 0; ///< 0: `speed` says it
    double speed = 0;             ///< how many times as fast as before
};

/// From somewhere in a measure on notes of one length are sung in unequal pairs.
struct Swing {
    uint32_t onset = 0;
    uint32_t unit = kTicksPerQuarter / 2; ///< ticks of each as it is written
    double share = 0.5;                   ///< of the pair's time that the first has
};

/// What stands over a staff.
struct StaffMarks {
    std::vector<std::pair<uint32_t, std::string>> levels; ///< onset and dynamic
    std::vector<Wedge> wedges;
};

struct WrittenMeasure {
    int number = 1;
    uint32_t length = 0;   ///< ticks that are filled
    bool isPickup = false; ///< shorter than its meter by intent
    MeasureSigns signs;
    std::optional<Meter> meter; ///< that begins here
    std::optional<KeySignature> key;
    std::vector<TempoMark> tempos;
    std::vector<Swing> swings;
    std::vector<Hold> holds;                            ///< from the measure's beginning
    std::map<VoiceId, std::vector<WrittenNote>> voices; ///< by onset; chord notes and the main note of graces follow
    std::map<int, StaffMarks> staves;
};

struct WrittenPart {
    std::vector<WrittenMeasure> measures;
    std::map<int, std::string> clefs; ///< the first of each staff
    bool isPercussion = false;        ///< all notes are without a pitch
    bool hasWords = false;            ///< under any note
    size_t unpitched = 0;             ///< notes without a pitch among others, left out
    size_t cues = 0;                  ///< small notes of another part, left out
    size_t ornaments = 0;             ///< trills and the like, left out
    size_t oddTempos = 0;             ///< that no song has, left out
    size_t laughs = 0;                ///< in place of words, left out
    bool hasTempoWords = false;       ///< "rit." and the like
    bool hasSwingWords = false;       ///< which alone say that notes are sung in unequal pairs
    std::string language;             ///< of the words
};

WrittenPart ReadPart(const std::vector<XmlElement>& measures);

} // namespace torv::songs::musicxml
