#include "kana_text.h"

#include "code_page_932.h"

#include <algorithm>

namespace g2pa_jpn {
namespace {

constexpr std::u32string_view halfWidth = // bytes 0xA6 to 0xDD
    U"ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテト"
    U"ナニヌネノハヒフヘホマミムメモヤユヨラリルレロワン";
constexpr std::u32string_view plainKana = U"カキクケコサシスセソタチツテトハヒフヘホウ";
constexpr std::u32string_view voicedKana = U"ガギグゲゴザジズゼゾダヂヅデドバビブベボヴ";
constexpr std::u32string_view semivoicedPlain = U"ハヒフヘホ";
constexpr std::u32string_view semivoicedKana = U"パピプペポ";
constexpr std::u32string_view smallKana = U"ァィゥェォッャュョヮヵヶ";
constexpr std::u32string_view singOnMarks = U"-_~+";

struct Mark {
    unsigned code;
    char32_t character;
};
constexpr char32_t voicingMark = U'゛';
constexpr char32_t semivoicingMark = U'゜';
constexpr Mark wideMarks[] = {
    {0x814A, voicingMark}, {0x814B, semivoicingMark}, {0x8152, U'ヽ'}, {0x8153, U'ヾ'}, {0x8154, U'ヽ'},
    {0x8155, U'ヾ'},       {0x815B, U'ー'},           {0x815C, U'-'},  {0x8160, U'ー'},
};

/// The character of `to` that stands where `character` stands in `from`; 0 when it does not.
char32_t Exchange(char32_t character, std::u32string_view from, std::u32string_view to) {
    const size_t at = from.find(character);
    return at == from.npos ? 0 : to[at];
}

char32_t FoldSingleByte(unsigned byte) {
    if (byte >= 'A' && byte <= 'Z')
        return byte + ('a' - 'A');
    if ((byte >= 'a' && byte <= 'z') || byte == '\'')
        return byte;
    if (singOnMarks.find(byte) != singOnMarks.npos)
        return U'-';
    if (byte >= 0xA6 && byte <= 0xDD)
        return halfWidth[byte - 0xA6];
    if (byte == 0xDE)
        return voicingMark;
    return byte == 0xDF ? semivoicingMark : U' ';
}

char32_t FoldDoubleByte(unsigned code) {
    if (code >= 0x829F && code <= 0x82F1)
        return U'ァ' + (code - 0x829F);
    if (code >= 0x8340 && code <= 0x8396 && code != 0x837F) // 7F is no trail byte, so the katakana jump over it
        return U'ァ' + (code - 0x8340) - (code > 0x837F ? 1 : 0);
    const auto* mark = std::find_if(std::begin(wideMarks), std::end(wideMarks),
                                    [code](const Mark& each) { return each.code == code; });
    return mark == std::end(wideMarks) ? U' ' : mark->character;
}

void Append(std::u32string& text, char32_t character) {
    if (character != voicingMark && character != semivoicingMark) {
        text.push_back(character);
        return;
    }
    if (text.empty())
        return;
    const char32_t changed = character == voicingMark ? Exchange(text.back(), plainKana, voicedKana)
                                                      : Exchange(text.back(), semivoicedPlain, semivoicedKana);
    if (changed)
        text.back() = changed;
}

} // namespace

std::u32string FoldLyric(std::string_view cp932) {
    std::u32string text;
    text.reserve(cp932.size());
    while (!cp932.empty()) {
        const unsigned character = g2pa::TakeCharacter(cp932);
        Append(text, character > 0xFF ? FoldDoubleByte(character) : FoldSingleByte(character));
    }
    return text;
}

void ExpandIterationMarks(std::u32string& text, char32_t& last) {
    for (char32_t& character : text) {
        if (character == U'ヽ' || character == U'ヾ') {
            const char32_t plain = Exchange(last, voicedKana, plainKana);
            const char32_t base = plain ? plain : last;
            const char32_t voiced = Exchange(base, plainKana, voicedKana);
            character = character == U'ヾ' && voiced ? voiced : base ? base : U' ';
        }
        const bool isKana = character >= U'ァ' && character <= U'ヶ';
        if (isKana && smallKana.find(character) == smallKana.npos)
            last = character;
    }
}

} // namespace g2pa_jpn
