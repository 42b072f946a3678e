#include "song_object.h"

#include <algorithm>

namespace torv::c {

SongObject::SongObject(songs::Song read) : song(std::move(read)), planning(song.parts.size()) {
    for (size_t i = 0; i < planning.size(); ++i)
        planning[i].noteIcons.resize(song.parts[i].notes.size());
}

songs::Part& SongObject::Part(size_t part) {
    CheckIndex(part, song.parts.size(), "part");
    return song.parts[part];
}

PartPlanning& SongObject::Planning(size_t part) {
    CheckIndex(part, planning.size(), "part");
    return planning[part];
}

songs::Note& SongObject::Note(size_t part, size_t note) {
    std::vector<songs::Note>& notes = Part(part).notes;
    CheckIndex(note, notes.size(), "note");
    return notes[note];
}

songs::Word& SongObject::Word(size_t part, size_t note, size_t word) {
    std::vector<songs::Word>& words = Note(part, note).words;
    CheckIndex(word, words.size(), "word");
    return words[word];
}

size_t SongObject::Insert(size_t part, songs::Note note, IconNames icons) {
    std::vector<songs::Note>& notes = Part(part).notes;
    std::vector<IconNames>& noteIcons = planning[part].noteIcons;
    const auto place = std::upper_bound(notes.begin(), notes.end(), note, [](const auto& a, const auto& b) {
        return a.tick != b.tick ? a.tick < b.tick : a.key < b.key;
    });
    const auto index = place - notes.begin();
    // All memory first, so that a refusal changes nothing.
    notes.reserve(notes.size() + 1);
    noteIcons.reserve(noteIcons.size() + 1);
    const uint32_t end = note.tick + note.length;
    notes.insert(notes.begin() + index, std::move(note));
    noteIcons.insert(noteIcons.begin() + index, std::move(icons));
    Lengthen(end);
    return static_cast<size_t>(index);
}

void SongObject::Remove(size_t part, size_t note) {
    Note(part, note);
    std::vector<songs::Note>& notes = song.parts[part].notes;
    std::vector<IconNames>& noteIcons = planning[part].noteIcons;
    notes.erase(notes.begin() + static_cast<std::ptrdiff_t>(note));
    noteIcons.erase(noteIcons.begin() + static_cast<std::ptrdiff_t>(note));
}

void SongObject::RemakeMeasures() {
    songs::Song times;
    times.meters = song.meters;
    times.end = song.end;
    songs::CompleteSong(times);
    song.measures = std::move(times.measures);
}

void SongObject::Lengthen(uint32_t end) {
    song.end = std::max(song.end, end);
    if (song.measures.empty()) {
        RemakeMeasures();
        return;
    }
    songs::Meter meter;
    for (const songs::Meter& change : song.meters)
        if (change.tick <= song.measures.back().tick)
            meter = change;
    const uint32_t length = songs::TicksOfMeasure(meter);
    if ((song.end - song.measures.back().tick) / length > 100000) // a note far away: what no song has
        return;
    // The last one may have been cut at the song's end.
    songs::Measure& last = song.measures.back();
    if (last.tick + last.length < song.end)
        last.length = std::max(last.length, length);
    while (song.measures.back().tick + song.measures.back().length < song.end) {
        const songs::Measure& before = song.measures.back();
        song.measures.push_back({before.tick + before.length, length, before.number + 1});
    }
}

} // namespace torv::c
