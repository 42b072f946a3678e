/// Japanese lyrics as tests write them.
#pragma once

#include <string>
#include <string_view>

namespace g2pa_test {

/// Kana, half-width katakana, the marks ー ゝ ゞ ヽ ヾ ゛ ゜ 〜 and ASCII as code page 932.
inline std::string Cp932(std::u32string_view text) {
    constexpr std::u32string_view marks = U"ー〜ヽヾゝゞ゛゜字";
    constexpr unsigned codes[] = {0x815B, 0x8160, 0x8152, 0x8153, 0x8154, 0x8155, 0x814A, 0x814B, 0x8E9A};
    std::string bytes;
    for (const char32_t c : text) {
        unsigned code = c;
        if (marks.find(c) != marks.npos)
            code = codes[marks.find(c)];
        else if (c >= U'ぁ' && c <= U'ん')
            code = 0x829F + (c - U'ぁ');
        else if (c >= U'ァ' && c <= U'ミ')
            code = 0x8340 + (c - U'ァ');
        else if (c >= U'ム' && c <= U'ヶ')
            code = 0x8380 + (c - U'ム');
        else if (c >= U'ｦ' && c <= U'ﾟ')
            code = 0xA6 + (c - U'ｦ');
        if (code > 0xFF)
            bytes.push_back(static_cast<char>(code >> 8));
        bytes.push_back(static_cast<char>(code & 0xFF));
    }
    return bytes;
}

/// Katakana as half-width ones, their voicing marks apart.
inline std::u32string HalfWidth(std::u32string_view katakana) {
    constexpr std::u32string_view full = U"ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテト"
                                         U"ナニヌネノハヒフヘホマミムメモヤユヨラリルレロワン";
    constexpr std::u32string_view marked = U"ガギグゲゴザジズゼゾダヂヅデドバビブベボヴパピプペポ";
    constexpr std::u32string_view plain = U"カキクケコサシスセソタチツテトハヒフヘホウハヒフヘホ";
    std::u32string half;
    for (const char32_t c : katakana) {
        const size_t mark = marked.find(c);
        const size_t at = full.find(mark == marked.npos ? c : plain[mark]);
        half += static_cast<char32_t>(U'ｦ' + at);
        if (mark != marked.npos)
            half += mark < marked.find(U'パ') ? U'ﾞ' : U'ﾟ';
    }
    return half;
}

} // namespace g2pa_test
