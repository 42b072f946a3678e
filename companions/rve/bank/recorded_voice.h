#pragma once

#include "bank_format.h"

#include <array>
#include <string>
#include <vector>

struct cst_voice_struct;
struct cst_cg_db_struct;

/// What flite's models of a recorded person say of the sounds of a language.
class RecordedVoice {
public:
    explicit RecordedVoice(cst_voice_struct* voice);

    /// The phones that the models know, silence first, then by name.
    const std::vector<std::string>& Phones() const { return m_phones; }

    static bool IsVowel(const std::string& phone);

    /// A phone in its context: numbers of the phones before it, itself, and after it.
    struct Triple {
        int before, phone, after;
    };
    /// Whether it can be spoken: a consonant between silences cannot.
    bool IsWord(const Triple& triple) const;
    /// How a phone is spoken there: the frames of each of its states, as numbers of the models' vectors.
    using Sequence = std::array<std::vector<int>, rve::bank::kStates>;
    /// One sequence for each triple, which all are spoken in one utterance, each in a word of its own.
    std::vector<Sequence> Speak(const std::vector<Triple>& triples);

    struct Vector {
        std::array<float, rve::bank::kCoefficients> cepstrum;
        std::array<float, rve::bank::kBands> strength; ///< 0..1
        float voicing;                                 ///< 0..1
    };
    Vector VectorAt(int number) const;
    /// The mean of the cepstra of all vectors.
    std::array<float, rve::bank::kCoefficients> MeanCepstrum() const;

private:
    std::vector<std::string> WordFor(const Triple& triple, size_t& place) const;

    cst_voice_struct* m_voice;
    const cst_cg_db_struct* m_models;
    std::vector<std::string> m_phones;
};
