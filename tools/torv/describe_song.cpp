#include "describe.h"

#include <torv/songs/song_clock.h>

#include <algorithm>

using namespace torv::songs;

namespace {

Json AboutPart(const Part& part) {
    const auto isLower = [](const Note& a, const Note& b) { return a.key < b.key; };
    const auto [lowest, highest] = std::minmax_element(part.notes.begin(), part.notes.end(), isLower);
    Json about{{"name", part.name}, {"notes", part.notes.size()}, {"lowest", lowest->key}, {"highest", highest->key}};
    about["syllables"] = std::count_if(part.notes.begin(), part.notes.end(), [](const Note& note) {
        return std::any_of(note.words.begin(), note.words.end(), [](const Word& word) { return word.verse == 1; });
    });
    if (!part.clef.empty())
        about["clef"] = part.clef;
    return about;
}

} // namespace

Json DescribeSong(const Song& song) {
    Json about{{"file", song.source}, {"kind", song.format}};
    for (const auto& [name, value] :
         {std::pair{"title", song.title}, {"composer", song.composer}, {"language", song.language}})
        if (!value.empty())
            about[name] = value;
    about["seconds"] = SongClock(song.tempos).SecondsAt(song.end);
    about["measures"] = song.measures.size();
    about["verses"] = CountVerses(song);
    about["parts"] = Json::array();
    for (const Part& part : song.parts)
        about["parts"].push_back(AboutPart(part));
    if (!song.remarks.empty())
        about["remarks"] = song.remarks;
    return about;
}
