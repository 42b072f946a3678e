#include "voice_line.h"

#include "errors.h"

#include <algorithm>

namespace {

/// Lyrics may stand a little beside their note, and programs end notes a little early: a thirty-second note.
constexpr uint32_t kTolerance = 60;

std::string Describe(const MidiSong& song) {
    std::string text;
    for (size_t i = 0; i < song.tracks.size(); ++i) {
        const MidiSongTrack& track = song.tracks[i];
        text += (i ? ", " : "") + std::to_string(i + 1);
        if (!track.name.empty())
            text += " \"" + ToUtf8(track.name, DetectEncoding(track.name)) + "\"";
        text += " (" + std::to_string(track.notes.size()) + " notes)";
    }
    return text;
}

size_t CountLyricEvents(const MidiSongTrack& track) {
    return static_cast<size_t>(
        std::count_if(track.texts.begin(), track.texts.end(), [](const MidiText& text) { return text.lyric; }));
}

struct LyricChoice {
    std::optional<size_t> track;
    bool karaoke = false;
};

/// The track with the most lyric events; without any in the file, the one with the most karaoke texts.
LyricChoice ChooseLyrics(const MidiSong& song, std::optional<size_t> wanted) {
    LyricChoice best;
    size_t most = 0;
    const auto consider = [&](size_t i, size_t count, bool karaoke) {
        if (count > most) {
            best = {i, karaoke};
            most = count;
        }
    };
    if (wanted && CountLyricEvents(song.tracks[*wanted]) > 0)
        return {wanted, false};
    if (wanted && HasKaraokeTexts(song.tracks[*wanted]))
        return {wanted, true};
    for (size_t i = 0; i < song.tracks.size(); ++i)
        consider(i, CountLyricEvents(song.tracks[i]), false);
    if (most == 0)
        for (size_t i = 0; i < song.tracks.size(); ++i)
            if (HasKaraokeTexts(song.tracks[i]))
                consider(i, song.tracks[i].texts.size(), true);
    return best;
}

/// The track whose notes begin where most syllables stand; on a tie the one with fewer notes besides, then the first.
size_t ChooseNotes(const MidiSong& song, const LyricLine& line) {
    size_t best = 0;
    size_t bestHits = 0;
    bool found = false;
    for (size_t i = 0; i < song.tracks.size(); ++i) {
        const auto& notes = song.tracks[i].notes;
        if (notes.empty())
            continue;
        size_t hits = 0;
        for (const Syllable& syllable : line.syllables) {
            const uint32_t from = syllable.tick > kTolerance ? syllable.tick - kTolerance : 0;
            const auto at = std::lower_bound(notes.begin(), notes.end(), from,
                                             [](const MidiNote& note, uint32_t tick) { return note.tick < tick; });
            hits += at != notes.end() && at->tick <= syllable.tick + kTolerance;
        }
        if (!found || hits > bestHits || (hits == bestHits && notes.size() < song.tracks[best].notes.size())) {
            best = i;
            bestHits = hits;
            found = true;
        }
    }
    return best;
}

/// One voice: of notes that begin together the highest stays; a note that runs into the next one is cut there.
void MakeMonophonic(const std::vector<MidiNote>& notes, VoiceLine& line) {
    for (const MidiNote& note : notes) {
        if (!line.notes.empty()) {
            SungNote& before = line.notes.back();
            if (before.tick == note.tick) { // sorted by key: the later one is higher
                ++line.cutNotes;
                line.notes.pop_back();
            } else if (before.tick + before.length > note.tick) {
                ++line.cutNotes;
                before.length = note.tick - before.tick;
            }
        }
        line.notes.push_back({note.tick, note.length, note.key, note.velocity, {}});
    }
    for (size_t i = 1; i < line.notes.size(); ++i) {
        SungNote& before = line.notes[i - 1];
        const uint32_t gap = line.notes[i].tick - (before.tick + before.length);
        if (gap < kTolerance) {
            before.length += gap;
            line.notes[i].joined = true;
        }
    }
}

/// Every syllable goes to the note that begins next to it, or else to the one that sounds at its time.
void PlaceSyllables(const std::vector<Syllable>& syllables, VoiceLine& line) {
    auto note = line.notes.begin();
    for (const Syllable& syllable : syllables) {
        while (note + 1 != line.notes.end() && (note + 1)->tick <= syllable.tick + kTolerance)
            ++note;
        const bool meets =
            note->tick <= syllable.tick + kTolerance && syllable.tick < note->tick + note->length + kTolerance;
        if (!meets) {
            ++line.lostSyllables;
        } else if (syllable.prolongs) {
            if (note->syllables.empty())
                note->syllables.emplace_back("-");
        } else {
            if (note->syllables.size() == 1 && note->syllables[0] == "-")
                note->syllables.clear();
            note->syllables.push_back(syllable.text);
            line.unreadableCharacters |= HasKanji(syllable.text);
        }
    }
    // A note without a syllable goes on with the vowel before.
    for (SungNote& sung : line.notes)
        if (sung.syllables.empty())
            sung.syllables.emplace_back("-");
}

} // namespace

VoiceLine MakeVoiceLine(const std::string& path, const MidiSong& song, std::optional<size_t> track,
                        std::optional<TextEncoding> encoding) {
    if (std::all_of(song.tracks.begin(), song.tracks.end(), [](const MidiSongTrack& t) { return t.notes.empty(); }))
        throw InputError{path + ": there are no notes in it to sing"};
    if (track && *track >= song.tracks.size())
        throw InputError{path + ": there is no track " + std::to_string(*track + 1) + "; it has " + Describe(song)};

    VoiceLine line;
    const LyricChoice choice = ChooseLyrics(song, track);
    LyricLine lyrics;
    if (choice.track) {
        lyrics = ReadLyricLine(song.tracks[*choice.track].texts, choice.karaoke, encoding);
        line.lyricTrack = *choice.track;
        line.hasLyrics = !lyrics.syllables.empty();
        line.japanese = LooksJapanese(lyrics);
    }
    if (track && (!choice.track || *choice.track != *track || !song.tracks[*track].notes.empty()))
        line.noteTrack = *track;
    else if (choice.track && !song.tracks[*choice.track].notes.empty())
        line.noteTrack = *choice.track;
    else
        line.noteTrack = ChooseNotes(song, lyrics);
    const std::vector<MidiNote>& notes = song.tracks[line.noteTrack].notes;
    if (notes.empty())
        throw InputError{path + ": track " + std::to_string(line.noteTrack + 1) +
                         " has no notes to sing; choose another with --track: it has " + Describe(song)};
    MakeMonophonic(notes, line);
    if (line.hasLyrics)
        PlaceSyllables(lyrics.syllables, line);
    return line;
}
