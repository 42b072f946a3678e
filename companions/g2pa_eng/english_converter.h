/// English lyrics to phonemes, over any dictionary.
#pragma once

#include "converter.h"
#include "dictionary.h"
#include "lyric_text.h"

namespace g2pa_eng {

/// Holds elements back while the word of the last one may go on or its vowel may still be prolonged.
class EnglishConverter : public g2pa::Converter {
public:
    /// `dictionary` outlives the converter.
    explicit EnglishConverter(const Dictionary& dictionary) : m_dictionary(dictionary) {}

    void Put(std::string_view bytes) override;
    void Finish() override;

private:
    struct Held {
        std::vector<std::string> words;
        size_t prolongations = 0; // elements after it that sing its vowel on
    };

    g2pa::Outputs SingHeld() const;
    void PronounceFrom(size_t held, size_t word, std::vector<g2pa::Symbols>& symbols) const;

    const Dictionary& m_dictionary;
    std::vector<Held> m_held; // a run of elements in which each joins the word before
    bool m_wordGoesOn = false;
};

/// A value of G2PA_WORD_...: where the converter has the sounds of a text from, of several words those of the least
/// known. Hyphens stand between syllables.
int FindWords(const Dictionary& dictionary, std::string_view text);

} // namespace g2pa_eng
