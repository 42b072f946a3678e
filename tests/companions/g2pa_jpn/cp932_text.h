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

} // namespace g2pa_test
