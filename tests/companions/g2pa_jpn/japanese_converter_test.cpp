#include "companions/g2pa/protocol_laws.h"
#include "cp932_text.h"

using namespace g2pa_test;

namespace {

const ConverterLibrary& Library() {
    static const ConverterLibrary library("G2PA_JPN");
    return library;
}

/// Slots joined without a separator, as the host does.
Texts Sung(const Texts& elements) { return Convert(Library(), elements, ""); }
std::string Sung(std::u32string_view kana) { return Sung(Texts{Cp932(kana)}).at(0); }

Texts Kana(std::initializer_list<std::u32string_view> elements) {
    Texts texts;
    for (const auto element : elements)
        texts.push_back(Cp932(element));
    return texts;
}

} // namespace

TEST_CASE("Japanese: hiragana, katakana, half-width katakana and romaji sound the same") {
    const struct {
        const char* romaji;
        std::u32string_view kana;
        const char* symbols;
    } rows[] = {
        {"a i u e o", U"あいうえお", "a i M e o"},
        {"ka ki ku ke ko", U"かきくけこ", "k a k' i k M k e k o"},
        {"ga gi gu ge go", U"がぎぐげご", "g a g' i g M g e g o"},
        {"sa shi su se so", U"さしすせそ", "s a S i s M s e s o"},
        {"za ji zu ze zo", U"ざじずぜぞ", "dz a dZ i dz M dz e dz o"},
        {"ta chi tsu te to", U"たちつてと", "t a tS i ts M t e t o"},
        {"da di du de do", U"だぢづでど", "d a dZ i dz M d e d o"},
        {"na ni nu ne no", U"なにぬねの", "n a J i n M n e n o"},
        {"ha hi fu he ho", U"はひふへほ", "h a C i p\\ M h e h o"},
        {"ba bi bu be bo", U"ばびぶべぼ", "b a b' i b M b e b o"},
        {"pa pi pu pe po", U"ぱぴぷぺぽ", "p a p' i p M p e p o"},
        {"ma mi mu me mo", U"まみむめも", "m a m' i m M m e m o"},
        {"ya yu yo", U"やゆよ", "j a j M j o"},
        {"ra ri ru re ro", U"らりるれろ", "4 a 4' i 4 M 4 e 4 o"},
        {"wa wo", U"わを", "w a o"},
        {"kya shu cho nya hyu myo rya", U"きゃしゅちょにゃひゅみょりゃ", "k' a S M tS o J a C M m' o 4' a"},
        {"gyu ja dyo byu pya", U"ぎゅじゃぢょびゅぴゃ", "g' M dZ a dZ o b' M p' a"},
        {"she je che ye", U"しぇじぇちぇいぇ", "S e dZ e tS e j e"},
        {"fa fi fe fo fyu", U"ふぁふぃふぇふぉふゅ", "p\\ a p\\' i p\\ e p\\ o p\\' M"},
        {"thi dhi twu dwu thu dhu", U"てぃでぃとぅどぅてゅでゅ", "t' i d' i t M d M t' M d' M"},
        {"wi we tsa tso", U"うぃうぇつぁつぉ", "w i w e ts a ts o"},
        {"kwa gwa", U"くぁぐぁ", "k w a g w a"},
        {"vu va vi vyu", U"ゔゔぁゔぃゔゅ", "b M b a b' i b' M"},
    };
    for (const auto& row : rows) {
        CAPTURE(std::string(row.romaji));
        std::u32string katakana(row.kana);
        for (char32_t& c : katakana)
            c += U'ア' - U'あ';
        CHECK(Sung(Texts{row.romaji}).at(0) == row.symbols);
        CHECK(Sung(katakana) == row.symbols);
        CHECK(Sung(HalfWidth(katakana)) == row.symbols);
        if (row.kana[0] != U'ゔ') // which the code page lacks
            CHECK(Sung(row.kana) == row.symbols);
    }
    CHECK(Sung(U"ゐゑヰヱかぁゃヵヶ") == "i e i e k a a j a k a k e"); // small kana that join nothing are kana
    // The bytes themselves, where the code page has its gap: 837E is mi, 8380 mu, 8396 the last of all.
    CHECK(Sung({"\x82\xA0", "\x83\x7E", "\x83\x80", "\x83\x7F", "\x83\x96", "\x82\xF1"}) ==
          Texts{"a", "m' i", "m M", "", "k e", "N\\"});
    CHECK(Sung(U"か゛は゜ﾞあﾟ") == "g a p a a"); // and marks with nothing to voice
}

TEST_CASE("Japanese: the long mark prolongs the vowel before it") {
    CHECK(Sung(U"ラーメン") == "4 a a m e N\\");
    CHECK(Sung(U"ーく") == "a k M"); // no vowel yet: the default
    CHECK(Sung(Kana({U"こ", U"ー", U"-", U"~", U"_", U"+", U"〜", U"ｰ", U"ーく"})) ==
          Texts{"k o", "o", "o", "o", "o", "o", "o", "o", "o k M"});
    CHECK(Sung({"-"}) == Texts{"a"});
    CHECK(Sung(Kana({U"こ", U"字", U"-"})) == Texts{"k o", "", "a"}); // the host sings "a" for what has no sound
}

TEST_CASE("Japanese: the nasal follows the next consonant, in the same element or a later one") {
    const struct {
        std::u32string_view next;
        const char* nasal;
        const char* symbols;
    } contexts[] = {{U"ぱ", "m", "p a"},     {U"ば", "m", "b a"},  {U"ま", "m", "m a"},   {U"ぴ", "m'", "p' i"},
                    {U"みゃ", "m'", "m' a"}, {U"た", "n", "t a"},  {U"だ", "n", "d a"},   {U"な", "n", "n a"},
                    {U"ざ", "n", "dz a"},    {U"ら", "n", "4 a"},  {U"に", "J", "J i"},   {U"ち", "J", "tS i"},
                    {U"じゃ", "J", "dZ a"},  {U"か", "N", "k a"},  {U"が", "N", "g a"},   {U"き", "N'", "k' i"},
                    {U"ぎゅ", "N'", "g' M"}, {U"あ", "N\\", "a"},  {U"や", "N\\", "j a"}, {U"わ", "N\\", "w a"},
                    {U"は", "N\\", "h a"},   {U"ん", "N\\", "N\\"}};
    for (const auto& context : contexts) {
        const std::string withNasal = std::string("s a ") + context.nasal;
        CHECK(Sung(U"さん" + std::u32string(context.next)) == withNasal + " " + context.symbols);
        CHECK(Sung(Kana({U"さん", context.next})) == Texts{withNasal, context.symbols});
        CHECK(Sung(Kana({U"さ", U"ん", context.next})) == Texts{"s a", context.nasal, context.symbols});
    }
    CHECK(Sung(U"ほん") == "h o N\\");
    // What sings on takes the vowel, and the nasal goes with it to where the vowel ends; a nasal alone is held.
    CHECK(Sung(Kana({U"さん", U"ー", U"ー", U"か"})) == Texts{"s a", "a", "a N", "k a"});
    CHECK(Sung(Kana({U"さ", U"ん", U"ー", U"か"})) == Texts{"s a", "N", "N", "k a"});
    CHECK(Sung(Kana({U"さん", U"字"})) == Texts{"s a N\\", ""});
}

TEST_CASE("Japanese: a geminate mark closes on the next consonant") {
    CHECK(Sung(U"かった") == "k a t t a");
    CHECK(Sung(U"いっしょ") == "i S S o");
    CHECK(Sung(U"まっちゃ") == "m a t tS a"); // affricates close as their stop
    CHECK(Sung(U"ざっぴ") == "dz a p' p' i");
    CHECK(Sung(U"あっ") == "a");
    CHECK(Sung(U"あっあ") == "a a");
    CHECK(Sung(Kana({U"かっ", U"た"})) == Texts{"k a t", "t a"});
    CHECK(Sung(Kana({U"か", U"っ", U"た"})) == Texts{"k a", "a t", "t a"}); // alone it has the vowel to sing
    CHECK(Sung(Kana({U"かっ", U"ー", U"た"})) == Texts{"k a", "a t", "t a"});
}

TEST_CASE("Japanese: iteration marks repeat the kana before, across elements too") {
    CHECK(Sung(U"すゝめ") == "s M s M m e");
    CHECK(Sung(U"つゞく") == "ts M dz M k M");
    CHECK(Sung(U"ヅヽミヾ") == "dz M ts M m' i m' i"); // the plain mark takes the voicing away; mi has none to add
    CHECK(Sung(Kana({U"こ", U"ゝ", U"ろ"})) == Texts{"k o", "k o", "4 o"});
    CHECK(Sung(Kana({U"ゝ"})) == Texts{""});
}

TEST_CASE("Japanese: spellings of romaji") {
    const struct {
        const char* romaji;
        std::u32string_view kana;
    } words[] = {
        {"si sya ti tya tu hu", U"ししゃちちゃつふ"},
        {"zi zya jya di dya la", U"じじゃじゃぢぢゃら"},
        {"KonNIchiwa", U"こんにちわ"},
        {"konna konnyaku", U"こんなこんにゃく"},
        {"hon'ya honya kinyou", U"ほんやほにゃきにょう"},
        {"shimbun sammyaku", U"しんぶんさんみゃく"},
        {"honn", U"ほん"},
        {"matcha maccha", U"まっちゃまっちゃ"},
        {"kitte zasshi", U"きってざっし"},
        {"ra-men", U"らーめん"},
        {"toukyou", U"とうきょう"},
        {"\x82\x6A\x82\x81", U"か"}, // wide
    };
    for (const auto& word : words)
        CHECK_MESSAGE(Sung(Texts{word.romaji})[0] == Sung(word.kana), word.romaji);
    CHECK(Sung({"sa-", "ku-", "-ra"}) == Texts{"s a", "k M", "4 a"}); // hyphens that only divide
    CHECK(Sung({"san", "po", "san", "ka"}) == Texts{"s a m", "p o", "s a N", "k a"});
    CHECK(Sung({"xk", "123", "?!", "", " "}) == Texts{"", "", "", "", ""});
}

TEST_CASE("Japanese: longer than an output") {
    const Texts sung = Convert(Library(), {std::string(5000, 'a'), "-"}, "");
    CHECK(sung[0].size() == 256 * 2 - 1); // 256 symbols of one byte, a blank between each two
    CHECK(sung[1] == "a");
    CHECK(Convert(Library(),
                  {"\x82", "a\x83",
                   "\x83\xFF"
                   "a"},
                  "") == Texts{"", "a", "a"}); // cut and unknown characters
}

TEST_CASE("Japanese: protocol") {
    CHECK(std::string(Library().version()) == "G2PA_JPN 1.0");
    CheckHandles(Library());
    Texts pieces{"-", "n", "k", "a", "'", " ", "\x81\x5B", "\xDE", "\xB0"};
    for (char32_t c = U'ぁ'; c <= U'ん'; ++c)
        pieces.push_back(Cp932(std::u32string(1, c)));
    CheckRandomSongs(Library(), pieces, 0);
    CheckRefusedMemory(Library(), Kana({U"か", U"ゝ", U"ゞん", U"ー", U"かっ", U"ん", U"ー"}));
    CheckThreads(Library(), Kana({U"さん", U"ー", U"か", U"っ", U"た"}), "");
}
