#include "torv/songs/casting.h"

#include "torv/songs/text_encoding.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <set>
#include <sstream>

namespace torv::songs {

namespace {

constexpr double kOutermostPan = 0.6;
constexpr int kLowestOfWomen = 62; // middle keys of a part
constexpr int kLowestOfTenors = 54;
constexpr size_t kFewestKnownWords = 4;

std::string Lower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

enum class Kind { Soprano, Child, Tenor, Bass };

struct Hint {
    const char* word;
    Kind kind;
};
/// What parts are called, in the languages that scores come in; an earlier line wins.
constexpr Hint kNames[] = {
    {"sopran", Kind::Soprano}, {"mezzo", Kind::Soprano}, {"alto", Kind::Soprano},   {"alt", Kind::Soprano},
    {"treble", Kind::Child},   {"child", Kind::Child},   {"boy", Kind::Child},      {"kind", Kind::Child},
    {"tenor", Kind::Tenor},    {"bariton", Kind::Bass},  {"bass", Kind::Bass},      {"basso", Kind::Bass},
    {"women", Kind::Soprano},  {"woman", Kind::Soprano}, {"female", Kind::Soprano}, {"frau", Kind::Soprano},
    {"girl", Kind::Soprano},   {"men", Kind::Tenor},     {"male", Kind::Tenor},     {"cantus", Kind::Soprano},
    {"discant", Kind::Child},  {"descant", Kind::Child},
};
constexpr Hint kInitials[] = {
    {"s", Kind::Soprano}, {"a", Kind::Soprano}, {"t", Kind::Tenor}, {"b", Kind::Bass}, {"bar", Kind::Bass}};
constexpr Hint kClefs[] = {{"treble-8", Kind::Tenor}, {"tenor", Kind::Tenor}, {"bass", Kind::Bass}};

/// "S", "S1" and "S 2" are initials; a longer name is one by its beginning.
std::optional<Kind> KindOfName(const std::string& name) {
    std::string letters;
    for (const char c : Lower(name))
        if (std::isalpha(static_cast<unsigned char>(c)))
            letters += c;
    for (const Hint& hint : kNames)
        if (letters.find(hint.word) != std::string::npos)
            return hint.kind;
    for (const Hint& hint : kInitials)
        if (letters == hint.word)
            return hint.kind;
    return std::nullopt;
}

std::optional<Kind> KindOfClef(const std::string& clef) {
    for (const Hint& hint : kClefs)
        if (clef == hint.word)
            return hint.kind;
    return std::nullopt;
}

Kind KindOfRange(const Part& part) {
    std::vector<int> keys;
    for (const Note& note : part.notes)
        keys.push_back(note.key);
    const auto middle = keys.begin() + static_cast<std::ptrdiff_t>(keys.size() / 2);
    std::nth_element(keys.begin(), middle, keys.end());
    return *middle >= kLowestOfWomen ? Kind::Soprano : *middle >= kLowestOfTenors ? Kind::Tenor : Kind::Bass;
}

/// The nearest kinds, the recorded persons' first.
std::vector<const char*> SoundsOf(Kind kind) {
    switch (kind) {
    case Kind::Soprano:
        return {"woman", "soprano", "child"};
    case Kind::Child:
        return {"child", "woman", "soprano"};
    case Kind::Tenor:
        return {"man (tenor)", "tenor", "bass"};
    case Kind::Bass:
        break;
    }
    return {"man (baritone)", "bass", "tenor"};
}

} // namespace

DWORD CastVoice(const Part& part, int language, Databases& databases) {
    const DWORD first = torv::MakeIconID(torv::kStatusSinger, torv::kSingerArticulation,
                                         databases.Manager().GetDefaultSingerVariation(language));
    std::optional<Kind> kind = KindOfName(part.name);
    if (!kind)
        kind = KindOfClef(part.clef);
    if (!kind && !part.notes.empty())
        kind = KindOfRange(part);
    if (!kind)
        return first;
    const std::vector<Databases::Entry> voices = databases.List(kVoices);
    for (const char* const sound : SoundsOf(*kind))
        for (const Databases::Entry& voice : voices) {
            const int program = torv::VariationFromID(voice.id) & 0xFF;
            if (LanguageOfSinger(voice.id) == language &&
                Lower(databases.Voices().GetInstalledVoiceName(language, program).GetStdString()).find(sound) !=
                    std::string::npos)
                return voice.id;
        }
    return first;
}

double StagePan(size_t index, size_t count) {
    return count < 2 ? 0.0 : kOutermostPan * (2.0 * static_cast<double>(index) / static_cast<double>(count - 1) - 1.0);
}

std::vector<std::string> WholeWords(const VoiceLine& line) {
    std::vector<std::string> words;
    for (const SungNote& note : line.notes)
        for (const Word& word : note.words) {
            if (!word.hyphenBefore || words.empty())
                words.emplace_back();
            words.back() += word.text;
        }
    return words;
}

std::string GuessOtherLanguage(const std::vector<std::string>& words) {
    static const struct {
        const char* name;
        const char* words;
    } kLanguages[] = {
        {"", "the and of to in is that my me you your we all our with for are his her it thee thy from when"},
        {"German", "der die das und ich nicht ist du wir mein mir ein eine dem den auf mit dich sich uns zu von"},
        {"French", "le la les et un une des je tu il nous vous est dans mon ma pour que qui sur ne pas au du"},
        {"Italian", "il la le e di che non un una mio mia per con del della si ti amor core o gli al"},
        {"Spanish", "el la los las y de que no un una mi tu por con del se es en al su yo"},
        {"Latin", "et in deus domine dominus gloria tua qui sanctus miserere nobis te est ad agnus dei maria ave cum"},
        {"Dutch", "de het een en van ik is niet dat wij zijn op te met mijn voor je hij"},
    };
    std::set<std::string> sung;
    for (const std::string& word : words) {
        std::string letters;
        for (const char c : Lower(word))
            if (std::isalpha(static_cast<unsigned char>(c)) || static_cast<unsigned char>(c) >= 0x80)
                letters += c;
        sung.insert(letters);
    }
    std::string best;
    size_t most = 0;
    for (const auto& language : kLanguages) {
        std::istringstream list(language.words);
        const std::set<std::string> known{std::istream_iterator<std::string>(list), {}};
        const auto count = static_cast<size_t>(
            std::count_if(sung.begin(), sung.end(), [&](const std::string& word) { return known.count(word) > 0; }));
        if (count > most) {
            most = count;
            best = language.name;
        }
    }
    return most >= kFewestKnownWords ? best : std::string();
}

} // namespace torv::songs
