#include "converter.h"
#include "kana_tables.h"
#include "kana_text.h"
#include "mora_reader.h"

#include <g2pa_abi.h>

#include <algorithm>

namespace g2pa_jpn {
namespace {

using g2pa::Symbols;

constexpr std::string_view defaultVowel = "a";

/// An element of nothing but marks sings on; a blank text is no such element.
bool SingsOn(std::u32string_view text) {
    return text.find_first_not_of(U" -ー") == text.npos && text.find_first_of(U"-ー") != text.npos;
}

/// The last mora of an element may be a nasal or a geminate mark, whose symbol depends on the consonant after it. Then
/// the element, and those that sing on after it, are held until that consonant or the end of the song is known.
class JapaneseConverter : public g2pa::Converter {
public:
    void Put(std::string_view cp932) override {
        std::u32string text = FoldLyric(cp932);
        ExpandIterationMarks(text, m_lastKana);
        if (SingsOn(text))
            return SingOn();
        Release(ReadMorae(text));
    }

    void Finish() override { Settle({}); }

private:
    enum class Open { Nothing, Nasal, Geminate };

    void SingOn() {
        if (m_open == Open::Nothing)
            Deliver({m_vowel});
        else if (m_held.front().empty()) // a nasal alone sings on as itself
            m_held.emplace_back();
        else
            m_held.push_back({m_vowel});
    }

    void Release(const std::vector<Mora>& morae) {
        Settle(morae.empty() ? std::string_view() : morae.front().sound);
        Symbols symbols;
        const bool onlyGeminate =
            std::all_of(morae.begin(), morae.end(), [](const Mora& mora) { return mora.kind == Mora::Kind::Geminate; });
        if (onlyGeminate && !morae.empty())
            symbols.push_back(m_vowel); // something to sing before the closure
        for (const Mora& mora : morae)
            AppendMora(symbols, mora);
        if (morae.empty())
            m_vowel = defaultVowel; // what the host puts in the place of an element without a sound
        if (m_open == Open::Nothing)
            Deliver(std::move(symbols));
        else
            m_held.push_back(std::move(symbols));
    }

    void AppendMora(Symbols& symbols, const Mora& mora) {
        if (mora.kind == Mora::Kind::Long && m_open != Open::Nothing)
            return; // a nasal or a closure is as long as it is
        const std::string_view sound = mora.kind == Mora::Kind::Long ? m_vowel : mora.sound;
        Append(symbols, OpenSymbolBefore(sound));
        m_open = mora.kind == Mora::Kind::Nasal      ? Open::Nasal
                 : mora.kind == Mora::Kind::Geminate ? Open::Geminate
                                                     : Open::Nothing;
        for (size_t at = 0; at < sound.size();) {
            const size_t end = std::min(sound.find(' ', at), sound.size());
            const std::string_view symbol = sound.substr(at, end - at);
            Append(symbols, symbol);
            if (IsVowelSymbol(symbol))
                m_vowel = symbol;
            at = end + 1;
        }
    }

    static void Append(Symbols& symbols, std::string_view symbol) {
        if (!symbol.empty() && symbols.size() < G2PA_MAX_SLOTS)
            symbols.push_back(symbol);
    }

    std::string_view OpenSymbolBefore(std::string_view sound) const {
        if (m_open == Open::Nothing)
            return {};
        const ConsonantContext& context = ContextBefore(sound);
        return m_open == Open::Nasal ? context.nasal : context.closure;
    }

    /// Gives the held elements their last symbol and lets them go.
    void Settle(std::string_view nextSound) {
        const std::string_view symbol = OpenSymbolBefore(nextSound);
        const bool nasalAlone = !m_held.empty() && m_held.front().empty();
        for (size_t i = 0; i < m_held.size(); ++i) {
            if (nasalAlone || i + 1 == m_held.size())
                Append(m_held[i], symbol);
            Deliver(std::move(m_held[i]));
        }
        m_held.clear();
        m_open = Open::Nothing;
    }

    std::vector<Symbols> m_held;
    Open m_open = Open::Nothing; // what the last held element ends with
    std::string_view m_vowel = defaultVowel;
    char32_t m_lastKana = 0;
};

} // namespace
} // namespace g2pa_jpn

namespace g2pa {

std::unique_ptr<Converter> MakeConverter() { return std::make_unique<g2pa_jpn::JapaneseConverter>(); }
const char* const versionText = "G2PA_JPN 1.0";
const bool slotsEndWithBlank = true;

} // namespace g2pa
