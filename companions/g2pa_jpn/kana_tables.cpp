#include "kana_tables.h"

#include <algorithm>
#include <iterator>

namespace g2pa_jpn {
namespace {

constexpr std::string_view kanaSounds[] = {
    // U'ァ' to U'ヶ'
    "a",   "a",    "i",    "i",    "M",    "M",    "e",     "e",    "o",   "o",    // ァアィイゥウェエォオ
    "k a", "g a",  "k' i", "g' i", "k M",  "g M",  "k e",   "g e",  "k o", "g o",  // カガキギクグケゲコゴ
    "s a", "dz a", "S i",  "dZ i", "s M",  "dz M", "s e",   "dz e", "s o", "dz o", // サザシジスズセゼソゾ
    "t a", "d a",  "tS i", "dZ i", "",     "ts M", "dz M",  "t e",  "d e", "t o",  "d o", // タダチヂッツヅテデトド
    "n a", "J i",  "n M",  "n e",  "n o",                                                 // ナニヌネノ
    "h a", "b a",  "p a",  "C i",  "b' i", "p' i", "p\\ M", "b M",  "p M",                // ハバパヒビピフブプ
    "h e", "b e",  "p e",  "h o",  "b o",  "p o",                                         // ヘベペホボポ
    "m a", "m' i", "m M",  "m e",  "m o",                                                 // マミムメモ
    "j a", "j a",  "j M",  "j M",  "j o",  "j o",                                         // ャヤュユョヨ
    "4 a", "4' i", "4 M",  "4 e",  "4 o",                                                 // ラリルレロ
    "w a", "w a",  "i",    "e",    "o",    "",     "b M",   "k a",  "k e",                // ヮワヰヱヲンヴヵヶ
};

struct Pair {
    char32_t kana;
    char32_t small;
    std::string_view sound;
};
constexpr Pair pairSounds[] = {
    {U'キ', U'ェ', "k' e"},   {U'キ', U'ャ', "k' a"},   {U'キ', U'ュ', "k' M"},   {U'キ', U'ョ', "k' o"},
    {U'ギ', U'ェ', "g' e"},   {U'ギ', U'ャ', "g' a"},   {U'ギ', U'ュ', "g' M"},   {U'ギ', U'ョ', "g' o"},
    {U'シ', U'ェ', "S e"},    {U'シ', U'ャ', "S a"},    {U'シ', U'ュ', "S M"},    {U'シ', U'ョ', "S o"},
    {U'ジ', U'ェ', "dZ e"},   {U'ジ', U'ャ', "dZ a"},   {U'ジ', U'ュ', "dZ M"},   {U'ジ', U'ョ', "dZ o"},
    {U'チ', U'ェ', "tS e"},   {U'チ', U'ャ', "tS a"},   {U'チ', U'ュ', "tS M"},   {U'チ', U'ョ', "tS o"},
    {U'ヂ', U'ェ', "dZ e"},   {U'ヂ', U'ャ', "dZ a"},   {U'ヂ', U'ュ', "dZ M"},   {U'ヂ', U'ョ', "dZ o"},
    {U'ニ', U'ェ', "J e"},    {U'ニ', U'ャ', "J a"},    {U'ニ', U'ュ', "J M"},    {U'ニ', U'ョ', "J o"},
    {U'ヒ', U'ェ', "C e"},    {U'ヒ', U'ャ', "C a"},    {U'ヒ', U'ュ', "C M"},    {U'ヒ', U'ョ', "C o"},
    {U'ビ', U'ェ', "b' e"},   {U'ビ', U'ャ', "b' a"},   {U'ビ', U'ュ', "b' M"},   {U'ビ', U'ョ', "b' o"},
    {U'ピ', U'ェ', "p' e"},   {U'ピ', U'ャ', "p' a"},   {U'ピ', U'ュ', "p' M"},   {U'ピ', U'ョ', "p' o"},
    {U'ミ', U'ェ', "m' e"},   {U'ミ', U'ャ', "m' a"},   {U'ミ', U'ュ', "m' M"},   {U'ミ', U'ョ', "m' o"},
    {U'リ', U'ェ', "4' e"},   {U'リ', U'ャ', "4' a"},   {U'リ', U'ュ', "4' M"},   {U'リ', U'ョ', "4' o"},
    {U'フ', U'ァ', "p\\ a"},  {U'フ', U'ェ', "p\\ e"},  {U'フ', U'ォ', "p\\ o"},  {U'フ', U'ィ', "p\\' i"},
    {U'フ', U'ャ', "p\\' a"}, {U'フ', U'ュ', "p\\' M"}, {U'フ', U'ョ', "p\\' o"}, {U'ヴ', U'ァ', "b a"},
    {U'ヴ', U'ェ', "b e"},    {U'ヴ', U'ォ', "b o"},    {U'ヴ', U'ィ', "b' i"},   {U'ヴ', U'ャ', "b' a"},
    {U'ヴ', U'ュ', "b' M"},   {U'ヴ', U'ョ', "b' o"},   {U'テ', U'ィ', "t' i"},   {U'テ', U'ャ', "t' a"},
    {U'テ', U'ュ', "t' M"},   {U'テ', U'ョ', "t' o"},   {U'デ', U'ィ', "d' i"},   {U'デ', U'ャ', "d' a"},
    {U'デ', U'ュ', "d' M"},   {U'デ', U'ョ', "d' o"},   {U'ト', U'ゥ', "t M"},    {U'ド', U'ゥ', "d M"},
    {U'ウ', U'ァ', "w a"},    {U'ウ', U'ィ', "w i"},    {U'ウ', U'ェ', "w e"},    {U'ウ', U'ォ', "w o"},
    {U'ツ', U'ァ', "ts a"},   {U'ツ', U'ィ', "ts i"},   {U'ツ', U'ェ', "ts e"},   {U'ツ', U'ォ', "ts o"},
    {U'イ', U'ェ', "j e"},    {U'ス', U'ィ', "s i"},    {U'ズ', U'ィ', "dz i"},   {U'ク', U'ァ', "k w a"},
    {U'ク', U'ィ', "k w i"},  {U'ク', U'ェ', "k w e"},  {U'ク', U'ォ', "k w o"},  {U'ク', U'ヮ', "k w a"},
    {U'グ', U'ァ', "g w a"},  {U'グ', U'ィ', "g w i"},  {U'グ', U'ェ', "g w e"},  {U'グ', U'ォ', "g w o"},
    {U'グ', U'ヮ', "g w a"},
};

struct Row {
    std::u32string_view consonant;
    std::string_view sounds[5]; // before a i u e o
};
constexpr Row romajiSounds[] = {
    {U"", {"a", "i", "M", "e", "o"}},
    {U"k", {"k a", "k' i", "k M", "k e", "k o"}},
    {U"g", {"g a", "g' i", "g M", "g e", "g o"}},
    {U"s", {"s a", "S i", "s M", "s e", "s o"}},
    {U"z", {"dz a", "dZ i", "dz M", "dz e", "dz o"}},
    {U"t", {"t a", "tS i", "ts M", "t e", "t o"}},
    {U"d", {"d a", "dZ i", "dz M", "d e", "d o"}},
    {U"n", {"n a", "J i", "n M", "n e", "n o"}},
    {U"h", {"h a", "C i", "p\\ M", "h e", "h o"}},
    {U"b", {"b a", "b' i", "b M", "b e", "b o"}},
    {U"p", {"p a", "p' i", "p M", "p e", "p o"}},
    {U"m", {"m a", "m' i", "m M", "m e", "m o"}},
    {U"r", {"4 a", "4' i", "4 M", "4 e", "4 o"}},
    {U"l", {"4 a", "4' i", "4 M", "4 e", "4 o"}},
    {U"y", {"j a", "i", "j M", "j e", "j o"}},
    {U"w", {"w a", "w i", "M", "w e", "o"}},
    {U"f", {"p\\ a", "p\\' i", "p\\ M", "p\\ e", "p\\ o"}},
    {U"j", {"dZ a", "dZ i", "dZ M", "dZ e", "dZ o"}},
    {U"v", {"b a", "b' i", "b M", "b e", "b o"}},
    {U"ky", {"k' a", "k' i", "k' M", "k' e", "k' o"}},
    {U"gy", {"g' a", "g' i", "g' M", "g' e", "g' o"}},
    {U"sy", {"S a", "S i", "S M", "S e", "S o"}},
    {U"sh", {"S a", "S i", "S M", "S e", "S o"}},
    {U"zy", {"dZ a", "dZ i", "dZ M", "dZ e", "dZ o"}},
    {U"jy", {"dZ a", "dZ i", "dZ M", "dZ e", "dZ o"}},
    {U"ty", {"tS a", "tS i", "tS M", "tS e", "tS o"}},
    {U"ch", {"tS a", "tS i", "tS M", "tS e", "tS o"}},
    {U"cy", {"tS a", "tS i", "tS M", "tS e", "tS o"}},
    {U"dy", {"dZ a", "dZ i", "dZ M", "dZ e", "dZ o"}},
    {U"ny", {"J a", "J i", "J M", "J e", "J o"}},
    {U"hy", {"C a", "C i", "C M", "C e", "C o"}},
    {U"by", {"b' a", "b' i", "b' M", "b' e", "b' o"}},
    {U"py", {"p' a", "p' i", "p' M", "p' e", "p' o"}},
    {U"my", {"m' a", "m' i", "m' M", "m' e", "m' o"}},
    {U"ry", {"4' a", "4' i", "4' M", "4' e", "4' o"}},
    {U"ly", {"4' a", "4' i", "4' M", "4' e", "4' o"}},
    {U"fy", {"p\\' a", "p\\' i", "p\\' M", "p\\' e", "p\\' o"}},
    {U"vy", {"b' a", "b' i", "b' M", "b' e", "b' o"}},
    {U"ts", {"ts a", "ts i", "ts M", "ts e", "ts o"}},
    {U"th", {"t' a", "t' i", "t' M", "t' e", "t' o"}},
    {U"dh", {"d' a", "d' i", "d' M", "d' e", "d' o"}},
    {U"tw", {"t w a", "t w i", "t M", "t w e", "t w o"}},
    {U"dw", {"d w a", "d w i", "d M", "d w e", "d w o"}},
    {U"kw", {"k w a", "k w i", "k w M", "k w e", "k w o"}},
    {U"gw", {"g w a", "g w i", "g w M", "g w e", "g w o"}},
};

constexpr ConsonantContext contexts[] = {
    {"p", "m", "p"},   {"b", "m", "b"},       {"m", "m", ""},          {"p'", "m'", "p'"}, {"b'", "m'", "b'"},
    {"m'", "m'", ""},  {"t", "n", "t"},       {"d", "n", "d"},         {"n", "n", ""},     {"ts", "n", "t"},
    {"dz", "n", "d"},  {"s", "n", "s"},       {"4", "n", "4"},         {"tS", "J", "t"},   {"dZ", "J", "d"},
    {"J", "J", ""},    {"t'", "J", "t'"},     {"d'", "J", "d'"},       {"S", "J", "S"},    {"4'", "J", "4'"},
    {"k", "N", "k"},   {"g", "N", "g"},       {"k'", "N'", "k'"},      {"g'", "N'", "g'"}, {"h", "N\\", "h"},
    {"C", "N\\", "C"}, {"p\\", "N\\", "p\\"}, {"p\\'", "N\\", "p\\'"}, {"", "N\\", ""},
};

constexpr std::string_view vowelSymbols[] = {"a", "i", "M", "e", "o"};

} // namespace

std::string_view SoundOfKana(char32_t kana) {
    return kana >= U'ァ' && kana <= U'ヶ' ? kanaSounds[kana - U'ァ'] : std::string_view();
}

std::string_view SoundOfPair(char32_t kana, char32_t small) {
    if (SoundOfKana(kana).empty() || SoundOfKana(small).empty())
        return {};
    for (const Pair& pair : pairSounds)
        if (pair.kana == kana && pair.small == small)
            return pair.sound;
    return {};
}

std::string_view SoundOfRomaji(std::u32string_view consonant, char32_t vowel) {
    const size_t column = std::u32string_view(U"aiueo").find(vowel);
    if (column == std::u32string_view::npos)
        return {};
    for (const Row& row : romajiSounds)
        if (row.consonant == consonant)
            return row.sounds[column];
    return {};
}

const ConsonantContext& ContextBefore(std::string_view sound) {
    const std::string_view first = sound.substr(0, sound.find(' '));
    const auto* row = std::find_if(std::begin(contexts), std::end(contexts),
                                   [first](const ConsonantContext& each) { return each.symbol == first; });
    return row == std::end(contexts) ? contexts[std::size(contexts) - 1] : *row;
}

bool IsVowelSymbol(std::string_view symbol) {
    return std::find(std::begin(vowelSymbols), std::end(vowelSymbols), symbol) != std::end(vowelSymbols);
}

} // namespace g2pa_jpn
