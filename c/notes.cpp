// Notes of a part and their words.
#include "song_object.h"

#include <utility>

using namespace torv::c;

namespace {

using torv::songs::Note;
using torv::songs::Word;

constexpr std::pair<torv_note_flag, bool Note::*> kNoteFlags[] = {
    {TORV_NOTE_SLURRED, &Note::slurred}, {TORV_NOTE_STACCATO, &Note::staccato}, {TORV_NOTE_TENUTO, &Note::tenuto},
    {TORV_NOTE_ACCENT, &Note::accent},   {TORV_NOTE_FERMATA, &Note::fermata},   {TORV_NOTE_BREATH, &Note::breathAfter}};
constexpr std::pair<torv_word_flag, bool Word::*> kWordFlags[] = {{TORV_WORD_HYPHEN_BEFORE, &Word::hyphenBefore},
                                                                  {TORV_WORD_HYPHEN_AFTER, &Word::hyphenAfter},
                                                                  {TORV_WORD_EXTENDS, &Word::extends}};

template <class Item, class Flags>
uint32_t FlagsOf(const Item& item, const Flags& flags) {
    uint32_t set = 0;
    for (const auto& [flag, member] : flags)
        set |= item.*member ? static_cast<uint32_t>(flag) : 0U;
    return set;
}

template <class Item, class Flags>
void SetFlags(Item& item, const Flags& flags, uint32_t set) {
    for (const auto& [flag, member] : flags)
        item.*member = (set & static_cast<uint32_t>(flag)) != 0;
}

/// What a record says of a note, whose words stay.
void Take(const torv_note* record, Note& note) {
    const torv_note taken = Taken(record, "torv_note");
    if (taken.tick > torv::songs::kLastTick || taken.length == 0 ||
        taken.length > torv::songs::kLastTick + 1 - taken.tick)
        throw Failure{TORV_OUT_OF_RANGE, "a note begins and ends at ticks up to " +
                                             std::to_string(torv::songs::kLastTick) + ", and has a length"};
    if (taken.key < 0 || taken.key > 127 || taken.velocity < 1 || taken.velocity > 127)
        throw Failure{TORV_OUT_OF_RANGE, "a note has a key of 0 to 127 and a velocity of 1 to 127"};
    note.tick = taken.tick;
    note.length = taken.length;
    note.key = taken.key;
    note.velocity = taken.velocity;
    SetFlags(note, kNoteFlags, taken.flags);
}

void Take(const torv_word* record, Word& word) {
    const torv_word taken = Taken(record, "torv_word");
    if (taken.verse < 1)
        throw Failure{TORV_OUT_OF_RANGE, "verses count from 1"};
    word.verse = taken.verse;
    SetFlags(word, kWordFlags, taken.flags);
}

} // namespace

torv_status torv_note_get(torv_song* song, size_t part, size_t note, torv_note* record) {
    return Guard([&] {
        const Held<SongObject> held(song);
        NeedRecord(record, "torv_note");
        const Note& of = held->Note(part, note);
        Give(torv_note{0, of.tick, of.length, of.key, of.velocity, FlagsOf(of, kNoteFlags),
                       static_cast<uint32_t>(of.words.size())},
             record);
    });
}

torv_status torv_note_add(torv_song* song, size_t part, const torv_note* record, size_t* index) {
    return Guard([&] {
        const Held<SongObject> held(song);
        held->Part(part);
        Note note;
        Take(record, note);
        const size_t place = held->Insert(part, std::move(note), {});
        if (index)
            *index = place;
    });
}

torv_status torv_note_set(torv_song* song, size_t part, size_t note, const torv_note* record, size_t* index) {
    return Guard([&] {
        const Held<SongObject> held(song);
        Note changed = held->Note(part, note);
        Take(record, changed);
        IconNames icons = held->Planning(part).noteIcons[note];
        held->Remove(part, note); // which leaves room for it
        const size_t place = held->Insert(part, std::move(changed), std::move(icons));
        if (index)
            *index = place;
    });
}

torv_status torv_note_remove(torv_song* song, size_t part, size_t note) {
    return Guard([&] { Held<SongObject>(song)->Remove(part, note); });
}

torv_status torv_word_get(torv_song* song, size_t part, size_t note, size_t word, torv_word* record) {
    return Guard([&] {
        const Held<SongObject> held(song);
        NeedRecord(record, "torv_word");
        const Word& of = held->Word(part, note, word);
        Give(torv_word{0, of.verse, FlagsOf(of, kWordFlags)}, record);
    });
}

torv_status torv_word_get_text(torv_song* song, size_t part, size_t note, size_t word, char* buffer, size_t capacity,
                               size_t* needed) {
    return Guard([&] {
        const Held<SongObject> held(song);
        Give(held->Word(part, note, word).text, {buffer, capacity, needed});
    });
}

torv_status torv_word_add(torv_song* song, size_t part, size_t note, const torv_word* record, const char* text,
                          size_t* index) {
    return Guard([&] {
        const Held<SongObject> held(song);
        std::vector<Word>& words = held->Note(part, note).words;
        Word word;
        Take(record, word);
        word.text = Taken(text, "text");
        words.push_back(std::move(word));
        if (index)
            *index = words.size() - 1;
    });
}

torv_status torv_word_set(torv_song* song, size_t part, size_t note, size_t word, const torv_word* record,
                          const char* text) {
    return Guard([&] {
        const Held<SongObject> held(song);
        Word& of = held->Word(part, note, word);
        Word changed = of;
        Take(record, changed);
        if (text) {
            changed.text = Taken(text, "text");
            changed.phonemes.clear();
        }
        of = std::move(changed);
    });
}

torv_status torv_word_remove(torv_song* song, size_t part, size_t note, size_t word) {
    return Guard([&] {
        const Held<SongObject> held(song);
        held->Word(part, note, word);
        std::vector<Word>& words = held->Note(part, note).words;
        words.erase(words.begin() + static_cast<std::ptrdiff_t>(word));
    });
}

torv_status torv_word_get_phonemes(torv_song* song, size_t part, size_t note, size_t word, char* buffer,
                                   size_t capacity, size_t* needed) {
    return Guard([&] {
        const Held<SongObject> held(song);
        Give(held->Word(part, note, word).phonemes, {buffer, capacity, needed});
    });
}

torv_status torv_word_set_phonemes(torv_song* song, size_t part, size_t note, size_t word, const char* phonemes) {
    return Guard([&] {
        const Held<SongObject> held(song);
        held->Word(part, note, word).phonemes = TakenOrEmpty(phonemes, "phonemes");
    });
}
