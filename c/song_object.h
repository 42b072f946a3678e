#pragma once

#include "handles.h"
#include "records.h"
#include "texts.h"

#include <torv/songs/song.h>

#include <array>
#include <map>
#include <string>
#include <vector>

namespace torv::c {

constexpr int kNoteIcons = TORV_ICON_VIBRATO + 1;
/// By torv_icon_kind; empty: the usual one.
using IconNames = std::array<std::string, kNoteIcons>;

struct VoiceMark {
    uint32_t tick;
    std::string name;
};

/// What a host gives a part beside what songs have.
struct PartPlanning {
    int32_t sing = TORV_SING_WITH_WORDS;
    double level = 0;
    double pan = TORV_PAN_STAGE;
    std::vector<VoiceMark> voices; ///< by tick
    bool hasOwnDynamics = false;   ///< the host has set a mark
    IconNames icons;
    std::vector<IconNames> noteIcons; ///< one a note
    std::map<int32_t, std::vector<torv_point>> curves;
};

class SongObject final : public Object {
public:
    static constexpr Kind kKind = Kind::Song;

    SongObject() = default;
    SongObject(const SongObject&) = default;
    SongObject& operator=(const SongObject&) = delete;
    /// Takes a song that a reader has made.
    explicit SongObject(songs::Song read);

    songs::Song song;
    std::vector<PartPlanning> planning; ///< one a part

    /// These throw Failure for what is not there.
    songs::Part& Part(size_t part);
    PartPlanning& Planning(size_t part);
    songs::Note& Note(size_t part, size_t note);
    songs::Word& Word(size_t part, size_t note, size_t word);

    /// Puts a note in its place; its index.
    size_t Insert(size_t part, songs::Note note, IconNames icons);
    void Remove(size_t part, size_t note);
    /// After a change of meters full measures are made anew; after one of notes, only as many as are missing.
    void RemakeMeasures();
    void Lengthen(uint32_t end);
};

} // namespace torv::c
