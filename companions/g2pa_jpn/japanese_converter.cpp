#include "converter.h"
#include "kana_tables.h"
#include "kana_text.h"
#include "mora_reader.h"

#include "torv/abi/g2pa.h"

#include <algorithm>

namespace g2pa_jpn {
namespace {

using g2pa::Outputs;
using g2pa::Symbols;

constexpr std::string_view defaultVowel = "a";

/// An element of nothing but marks sings on; a blank text is no such element.
bool SingsOn(std::u32string_view text) {
    return text.find_first_not_of(U" -ー") == text.npos && text.find_first_of(U"-ー") != text.npos;
}

void Append(Symbols& symbols, std::string_view symbol) {
    if (!symbol.empty() && symbols.size() < G2PA_MAX_SLOTS)
        symbols.push_back(symbol);
}

/// What has been sung so far, as far as it tells how singing goes on.
struct Ending {
    enum class Open { Nothing, Nasal, Geminate };

    Open open = Open::Nothing; ///< what waits for the next consonant to be given its symbol
    std::string_view vowel = defaultVowel;

    std::string_view OpenSymbolBefore(std::string_view sound) const {
        if (open == Open::Nothing)
            return {};
        const ConsonantContext& context = ContextBefore(sound);
        return open == Open::Nasal ? context.nasal : context.closure;
    }

    void Sing(const Mora& mora, Symbols& symbols) {
        if (mora.kind == Mora::Kind::Long && open != Open::Nothing)
            return; // a nasal or a closure is as long as it is
        const std::string_view sound = mora.kind == Mora::Kind::Long ? vowel : mora.sound;
        Append(symbols, OpenSymbolBefore(sound));
        open = mora.kind == Mora::Kind::Nasal      ? Open::Nasal
               : mora.kind == Mora::Kind::Geminate ? Open::Geminate
                                                   : Open::Nothing;
        for (size_t at = 0; at < sound.size();) {
            const size_t end = std::min(sound.find(' ', at), sound.size());
            const std::string_view symbol = sound.substr(at, end - at);
            Append(symbols, symbol);
            if (IsVowelSymbol(symbol))
                vowel = symbol;
            at = end + 1;
        }
    }
};

/// The last mora of an element may be a nasal or a geminate mark, whose symbol depends on the consonant after it. Then
/// the element, and those that sing on after it, are held until that consonant or the end of the song is known.
class JapaneseConverter : public g2pa::Converter {
public:
    void Put(std::string_view cp932) override {
        std::u32string text = FoldLyric(cp932);
        char32_t lastKana = m_lastKana;
        ExpandIterationMarks(text, lastKana);
        if (SingsOn(text))
            return SingOn();
        const std::vector<Mora> morae = ReadMorae(text);
        Ending ending;
        if (!morae.empty()) // else the host puts its default vowel
            ending.vowel = m_ending.vowel;
        Outputs outputs = SettleHeld(morae.empty() ? std::string_view() : morae.front().sound);
        Outputs held;
        Symbols symbols = SingMorae(morae, ending);
        (ending.open == Ending::Open::Nothing ? outputs : held).push_back(std::move(symbols));
        Deliver(std::move(outputs));
        m_held = std::move(held);
        m_ending = ending;
        m_lastKana = lastKana;
    }

    void Finish() override { Deliver(SettleHeld({})); }

private:
    void SingOn() {
        if (m_ending.open == Ending::Open::Nothing)
            Deliver({{m_ending.vowel}});
        else if (m_held.front().empty()) // a nasal alone sings on as itself
            m_held.emplace_back();
        else
            m_held.push_back({m_ending.vowel});
    }

    static Symbols SingMorae(const std::vector<Mora>& morae, Ending& ending) {
        Symbols symbols;
        const bool onlyGeminate =
            std::all_of(morae.begin(), morae.end(), [](const Mora& mora) { return mora.kind == Mora::Kind::Geminate; });
        if (onlyGeminate && !morae.empty())
            symbols.push_back(ending.vowel); // something to sing before the closure
        for (const Mora& mora : morae)
            ending.Sing(mora, symbols);
        return symbols;
    }

    /// The held elements with the symbol that they wait for.
    Outputs SettleHeld(std::string_view nextSound) const {
        Outputs settled = m_held;
        const std::string_view symbol = m_ending.OpenSymbolBefore(nextSound);
        const bool nasalAlone = !settled.empty() && settled.front().empty();
        for (Symbols& symbols : settled)
            if (nasalAlone || &symbols == &settled.back())
                Append(symbols, symbol);
        return settled;
    }

    Outputs m_held;
    Ending m_ending;
    char32_t m_lastKana = 0;
};

} // namespace
} // namespace g2pa_jpn

namespace g2pa {

std::unique_ptr<Converter> MakeConverter() { return std::make_unique<g2pa_jpn::JapaneseConverter>(); }
/// Kana and Roman letters are read as they are spelled.
int FindWord(std::string_view text) {
    const auto converter = MakeConverter();
    converter->Put(text);
    converter->Finish();
    return converter->HasOutput() && !converter->NextOutput().empty() ? G2PA_WORD_RULE : G2PA_WORD_SILENT;
}
const char* const versionText = "G2PA_JPN 1.0";
const bool slotsEndWithBlank = true;

} // namespace g2pa
