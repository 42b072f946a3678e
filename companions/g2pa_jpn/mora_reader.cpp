#include "mora_reader.h"

#include "kana_tables.h"

#include <algorithm>

namespace g2pa_jpn {
namespace {

constexpr size_t maxMorae = 512;
constexpr size_t longestConsonant = 2; // letters of a consonant spelling in the tables

bool IsLetter(char32_t c) { return c >= U'a' && c <= U'z'; }
bool IsVowel(char32_t c) { return c == U'a' || c == U'i' || c == U'u' || c == U'e' || c == U'o'; }

class Reader {
public:
    explicit Reader(std::u32string_view text) : m_text(text) {}

    std::vector<Mora> Read() {
        while (m_at < m_text.size() && m_morae.size() < maxMorae) {
            const char32_t c = m_text[m_at];
            if (IsLetter(c))
                ReadLetter(c);
            else
                ReadKana(c);
        }
        return std::move(m_morae);
    }

private:
    char32_t Ahead(size_t distance) const { return m_at + distance < m_text.size() ? m_text[m_at + distance] : U'\0'; }

    void Take(Mora::Kind kind, std::string_view sound, size_t characters) {
        m_morae.push_back({kind, sound});
        m_at += characters;
    }

    void ReadKana(char32_t c) {
        const std::string_view pair = SoundOfPair(c, Ahead(1));
        const std::string_view single = SoundOfKana(c);
        if (c == U'ン')
            Take(Mora::Kind::Nasal, {}, 1);
        else if (c == U'ッ')
            Take(Mora::Kind::Geminate, {}, 1);
        else if (c == U'ー' || c == U'-')
            Take(Mora::Kind::Long, {}, 1);
        else if (!pair.empty())
            Take(Mora::Kind::Sound, pair, 2);
        else if (!single.empty())
            Take(Mora::Kind::Sound, single, 1);
        else
            ++m_at;
    }

    void ReadLetter(char32_t c) {
        for (size_t letters = longestConsonant + 1; letters-- > 0;) { // the longest spelling wins
            const std::string_view sound =
                m_at + letters < m_text.size() ? SoundOfRomaji(m_text.substr(m_at, letters), Ahead(letters)) : "";
            if (!sound.empty())
                return Take(Mora::Kind::Sound, sound, letters + 1);
        }
        const char32_t next = Ahead(1);
        if (c == U'n') {
            // "nn" is one nasal unless its second n begins a syllable, as in "konna"; "n'" keeps a vowel off.
            const bool doubled = next == U'n' && !IsVowel(Ahead(2)) && Ahead(2) != U'y';
            Take(Mora::Kind::Nasal, {}, doubled || next == U'\'' ? 2 : 1);
        } else if (c == U'm' && (next == U'm' || next == U'b' || next == U'p')) {
            Take(Mora::Kind::Nasal, {}, 1);
        } else if ((!IsVowel(c) && next == c) || (next == U'c' && Ahead(2) == U'h' && c == U't')) {
            Take(Mora::Kind::Geminate, {}, 1);
        } else {
            ++m_at;
        }
    }

    std::u32string_view m_text;
    size_t m_at = 0;
    std::vector<Mora> m_morae;
};

} // namespace

std::vector<Mora> ReadMorae(std::u32string_view text) {
    const size_t first = text.find_first_not_of(U" -");
    const size_t last = text.find_last_not_of(U" -");
    if (first == text.npos)
        return {};
    return Reader(text.substr(first, last - first + 1)).Read();
}

} // namespace g2pa_jpn
