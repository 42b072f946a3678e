#include "../../../companions/g2pa_eng/english_converter.h"
#include "companions/g2pa/protocol_laws.h"

using namespace g2pa_test;

namespace {

const ConverterLibrary& Library() {
    static const ConverterLibrary library("G2PA_ENG");
    return library;
}

Texts SungByRules(const Texts& elements) {
    g2pa_eng::EnglishConverter converter(g2pa_eng::RuleDictionary());
    Texts outputs;
    for (const std::string& element : elements)
        converter.Put(element);
    for (converter.Finish(); converter.HasOutput(); converter.DropOutput()) {
        std::string joined;
        for (const std::string_view symbol : converter.NextOutput())
            joined.append(joined.empty() ? "" : " ").append(symbol);
        outputs.push_back(joined);
    }
    return outputs;
}

struct Song {
    const char* elements; // '|' after each
    const char* sung;
};

std::string WithBars(const Texts& outputs) {
    std::string text;
    for (const std::string& output : outputs)
        text.append(output).push_back('|');
    return text;
}

/// Our own rules, on every target, and the library, if it is to be asked, sing the same.
template <size_t count>
void CheckSongs(const Song (&songs)[count], bool isLibraryAsked = true) {
    for (const Song& song : songs) {
        Texts elements;
        const std::string_view all = song.elements;
        for (size_t at = 0; at < all.size(); at = all.find('|', at) + 1)
            elements.emplace_back(all.substr(at, all.find('|', at) - at));
        CAPTURE(std::string(song.elements));
        CHECK(WithBars(SungByRules(elements)) == std::string(song.sung));
        if (isLibraryAsked)
            CHECK(WithBars(Convert(Library(), elements, " ")) == std::string(song.sung));
    }
}

} // namespace

TEST_CASE("English: words, and the allophones that their place asks for") {
    CheckSongs({
        {"hello|", "h @ l @U|"},
        {"pin|spin|stop|kick|", "ph I n|s p I n|s t Q p|kh I k|"}, // aspirated at the beginning, not after s
        {"tree|play|apple|", "th r i:|ph l eI|{ p @ l0|"},
        {"today|attack|", "th @ d eI|@ th { k|"}, // and where a stressed syllable begins
        {"let|all|little|yellow|", "l e t|O: l0|l I t @ l0|j e l @U|"},
        {"car|care|ear|four|poor|her|", "kh Q@|kh e@|I@|f O@|ph U@|h @r|"},
        {"very|sorry|story|", "v e r i:|s Q r i:|s t O: r i:|"}, // r between vowels begins a syllable
        {"fire|power|", "f aI @r|ph aU @r|"},
        {"sing|finger|thing|this|", "s I N|f I N g @r|T I N|D I s|"},
        {"chain|jam|shine|vision|", "tS eI n|dZ { m|S aI n|v I Z @ n|"},
        {"behind|", "b I hv aI n d|"},
        {"to the moon|", "th u: D @ m u: n|"},
        {"\"Don't\"|you're|'tis|I'm|rock'n'roll|", "d @U n t|j O@|th I z|aI m|r Q k n r @U l0|"},
        {"singin'|girl's|kiss's|they'll|moon'll|", "s I N I n|g @r l0 z|kh I s @ z|D eI l0|m u: n @ l0|"},
        {"2|24|7-11|", "th u:|th w e n t i: f O@|s e v @ n I l e v @ n|"},
        {"YEAH,|soooo|ahhh...|caf\xE9|", "j {|s @U|Q|kh { f eI|"},
        {"you & me|", "j u: { n d m i:|"},
        {"don\x81\x66t|", "d @U n t|"}, // the code page's own apostrophe
        {"?|...||(|", "||||"},
    });
}

TEST_CASE("English: a double-byte character is one character, not two bytes") {
    CheckSongs({
        {"\x82\x67\x82\x64\x82\x6B\x82\x6B\x82\x6E|", "h @ l @U|"},               // HELLO, wide
        {"\x82\x53\x81\x40\x81\x95\x81\x40\x82\x95\x82\x93|", "f O@ { n d V s|"}, // 4 & us, wide
        {"hel\x81\x5D|lo|", "h @|l @U|"},                                         // a wide hyphen divides a word, too
        {"\x83\x4A|\x8C\x4E|sun\x8C\x4E\x82\xCC|", "||s V n|"},                   // ka, kimi, no
    });
    for (unsigned lead = 0x83; lead <= 0xFC; lead = lead == 0x9F ? 0xE0 : lead + 1) {
        CAPTURE(lead);
        Texts elements;
        for (unsigned trail = 0x40; trail <= 0xFC; trail += trail == 0x7E ? 2 : 1)
            elements.push_back({'s', 'u', 'n', static_cast<char>(lead), static_cast<char>(trail), 's', 'u', 'n'});
        CHECK(SungByRules(elements) == Texts(188, "s V n s V n"));
    }
}

TEST_CASE("English: a word divided by hyphens is pronounced whole and shared out") {
    CheckSongs({
        {"hel-|lo|", "h @|l @U|"},
        {"hel|-lo|", "h @|l @U|"},
        {"twin-|kle|twin-|kle|lit-|tle|star|", "th w I N|k @ l0|th w I N|k @ l0|l I|t @ l0|s t Q@|"},
        {"beau-|ti-|ful|", "b j u:|t @|f @ l0|"},
        {"to-|mor-|row|", "th @|m Q|r @U|"},
        {"moth-|er|sis-|ter|", "m V D|@r|s I s|t @r|"},  // as the spelling divides, not as the tongue would
        {"love-|ly|an-|gry|", "l V v|l i:|{ N|g r i:|"}, // a silent e, and n spelled where ng sounds
        {"some-|one|be-|hind|", "s V m|w V n|b I|hv aI n d|"},
        {"ev-|er-|y|", "e|e v|r i:|"}, // two vowels for three: the first two share one
        {"ev'ry-|where|", "e v r i:|w e@|"},
        {"me-|mories|", "m e|m @r i: z|"}, // three vowels for two
        {"la-|la-|la|fa-|la-|la|", "l Q|l Q|l Q|f Q|l Q|l Q|"},
        {"oh hel-|lo there|", "@U h @|l @U D e@|"},
        {"h-|m-|m|", "h m|m|m|"}, // no vowel to share: the last sound goes on
    });
}

TEST_CASE("English: the consonants after a prolonged vowel are sung where it ends") {
    CheckSongs({
        {"sun|-|", "s V|V n|"},
        {"sun|-|_|+|~|shine|", "s V|V|V|V|V n|S aI n|"},
        {"star|\x81\x5B|\xB0|", "s t Q@|Q@|Q@|"},
        {"hel-|-|lo|-|", "h @|@|l @U|@U|"}, // inside a word
        {"twin-|-|kle|-|", "th w I|I N|k @|@ l0|"},
        {"the sun|-|", "D @ s V|V n|"},
        {"mm|-|", "m|m|"},
        {"-|--|sun|", "u:|u:|s V n|"}, // nothing to prolong: the default vowel
        {"?|-|", "|u:|"},
    });
}

TEST_CASE("English: letters to sounds by our own rules") {
    CheckSongs(
        {
            {"cat|bake|knight|phrase|gently|",
             "kh { t|b eI k|n aI t|f r eI s|dZ e n t l i:|"}, // silent and soft letters
            {"mission|temptation|became|q|", "m I S @ n|th e m p th eI S @ n|b I kh eI m|kh|"},  // stress aspirates
            {"making|running|happily|hated|", "m eI k I N|r V n I N|h { p i: l i:|h eI t @ d|"}, // by their stems
            {"walked|dreamed|bells|boats|", "w O: k t|d r i: m d|b e l0 z|b @U t s|"},
            {"wishes|boxes|cries|", "w I S @ z|b Q k s @ z|kh r aI z|"},
            {"bring|red|glass|", "b r I N|r e d|g l { s|"}, // no stem before the ending
        },
        false);
}

TEST_CASE("English: syllables divide by the spelling and by what English lets begin") {
    CheckSongs(
        {
            {"mis-|ter|mi-|ster|sing-|ing|", "m I s|t @r|m I|s t @r|s I N|I N|"},
            {"ex-|act|com-|pu-|ter|", "I g z|{ k t|kh Q m|p j u:|t @r|"},
            {"ac-|cuse|coh-|ere|", "@|kh j u: z|kh @U|hv e@|"}, // y goes with the u; no syllable ends in h
            {"lan-|guage|qui-|et|", "l { N|g w Q dZ|kh w aI|@ t|"},
            {"walk-|ed|bus-|i-|ness|ev-|ery|", "w O:|O: k t|b I|I z|n @ s|e v|r i:|"}, // none without a vowel
        },
        false);
}

TEST_CASE("English: longer than a word, a record, an output") {
    for (const std::string& element : {std::string(5000, 'a'), std::string(5000, 'x'), std::string(5000, '\'')}) {
        CHECK(Convert(Library(), {element, "sun"}, " ").at(1) == "s V n");
        CHECK(SungByRules({element, "sun"}).at(1) == "s V n");
    }
    std::string word;
    for (int i = 0; i < 32; ++i)
        word += "ba";
    CHECK(Convert(Library(), {word + "sun"}, " ") == Convert(Library(), {word}, " ")); // 64 letters count
    std::string many;
    for (int i = 0; i < 400; ++i)
        many += "oh ";
    const std::string sung = Convert(Library(), {many}, " ").at(0);
    CHECK(Split(sung) == Texts(256, "@U"));
    Texts endless(2000, "ba-"); // a hyphen always promises more; what is no word falls apart into its parts
    endless.emplace_back("sun");
    CHECK(Convert(Library(), endless, " ").at(2000) == "s V n");
}

TEST_CASE("English: protocol") {
    CHECK(std::string(Library().version()).starts_with("G2PA_ENG 1.0"));
    CheckHandles(Library());
    const Texts pieces{"-", "-", " ", "'", "a",   "e",  "i",  "o",  "u",    "y",    "b",  "c",  "d",
                       "f", "g", "h", "k", "l",   "m",  "n",  "p",  "q",    "r",    "s",  "t",  "v",
                       "w", "x", "z", "7", "ing", "ed", "th", "ch", "tion", "ough", "qu", "la", "\xE9"};
    CheckRandomSongs(Library(), pieces, 1);
    CheckRefusedMemory(Library(), {"twin-", "kle", "-", "rare words", "and", "-", "star"});
    CheckThreads(Library(), {"twin-", "kle", "-", "un-", "known", "words", "in", "thread-", "ed", "songs"}, " ");
}

TEST_CASE("English: the rules take random songs as the library does") {
    const Texts pieces{"-", "a", "e", "i", "o", "u", "y",   "g",  "h",  "l",
                       "n", "r", "s", "t", "q", "x", "ing", "ed", "ies"};
    Random random;
    for (int round = 0; round < 300; ++round) {
        const Texts song = RandomSong(random, pieces);
        REQUIRE(SungByRules(song).size() == song.size());
    }
}

TEST_CASE("English: where a word's sounds come from") {
    for (const auto& [text, source] : {std::pair{"night", G2PA_WORD_COMMON},
                                       {"si-lent NIGHT", G2PA_WORD_COMMON},
                                       {"la-la-la", G2PA_WORD_COMMON}, // words of their own
                                       {"sooo", G2PA_WORD_COMMON},
                                       {"night blorf", G2PA_WORD_RULE},
                                       {"blor-fing's", G2PA_WORD_RULE},
                                       {"- ?", G2PA_WORD_SILENT},
                                       {"", G2PA_WORD_SILENT}}) {
        CAPTURE(text);
        CHECK(g2pa_eng::FindWords(g2pa_eng::RuleDictionary(), text) == source);
    }
}
