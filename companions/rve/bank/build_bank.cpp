// Asks flite for everything that a recorded voice can say, colours it, and writes it to a bank: build_bank VOICE
// COLOURS FILE.
#include "bank_format.h"
#include "colours.h"
#include "recorded_voice.h"
#include "spectral_shape.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" {
#include <flite/flite.h>
cst_voice* register_cmu_us_slt(const char*);
cst_voice* register_cmu_us_rms(const char*);
cst_voice* register_cmu_us_awb(const char*);
}

namespace {

namespace bank = rve::bank;

struct Person {
    const char* name;
    cst_voice* (*make)(const char*);
    float size; ///< how much higher the formants lie than an average man's
};
constexpr Person kPersons[] = {
    {"slt", register_cmu_us_slt, 1.17F}, {"rms", register_cmu_us_rms, 1.0F}, {"awb", register_cmu_us_awb, 1.0F}};

constexpr float kSharpness = 0.4F;
constexpr float kConsonantContrast = 1.15F; ///< models of many recorded frames make consonants too much alike
constexpr size_t kTriplesAtOnce = 20;

/// Where a man's formants are looked for: vowels after Peterson and Barney (1952).
std::array<float, bank::kFormants> ExpectedFormants(const std::string& phone, float size) {
    static const std::map<std::string, std::array<float, 3>> kVowels = {
        {"iy", {270, 2290, 3010}}, {"ih", {390, 1990, 2550}}, {"eh", {530, 1840, 2480}}, {"ae", {660, 1720, 2410}},
        {"aa", {730, 1090, 2440}}, {"ao", {570, 840, 2410}},  {"uh", {440, 1020, 2240}}, {"uw", {300, 1200, 2240}},
        {"ah", {640, 1190, 2390}}, {"er", {490, 1350, 1690}}, {"ax", {500, 1400, 2400}}, {"ey", {450, 2000, 2550}},
        {"ow", {480, 950, 2400}},  {"ay", {650, 1400, 2450}}, {"aw", {680, 1200, 2400}}, {"oy", {480, 1200, 2450}},
        {"y", {280, 2200, 3000}},  {"w", {300, 700, 2200}},   {"r", {350, 1200, 1600}},  {"l", {370, 1000, 2600}}};
    std::array<float, bank::kFormants> expected = {400, 1400, 2500, 3500};
    if (const auto vowel = kVowels.find(phone); vowel != kVowels.end())
        std::copy(vowel->second.begin(), vowel->second.end(), expected.begin());
    for (float& hz : expected)
        hz *= size;
    return expected;
}

uint8_t Byte(float share) { return static_cast<uint8_t>(std::lround(share * 255)); }

bank::Frame FrameOf(const RecordedVoice::Vector& vector, const std::string& phone, int state, const Cepstrum& mean,
                    const Colours& colours, float size) {
    Cepstrum cepstrum = vector.cepstrum;
    if (!RecordedVoice::IsVowel(phone))
        Contrast(cepstrum, mean, kConsonantContrast);
    Sharpen(cepstrum, kSharpness);
    const auto formants = FormantsOf(cepstrum, ExpectedFormants(phone, size));
    if (const auto colour = colours.find({phone, state}); colour != colours.end())
        for (size_t m = 0; m < cepstrum.size(); ++m)
            cepstrum[m] += colour->second[m];
    bank::Frame frame{};
    for (size_t m = 0; m < cepstrum.size(); ++m) {
        const long units = std::lround(cepstrum[m] / bank::kCepstrumUnit);
        if (units < INT16_MIN || units > INT16_MAX)
            throw std::runtime_error("a coefficient is out of range");
        frame.cepstrum[m] = static_cast<int16_t>(units);
    }
    for (size_t b = 0; b < vector.strength.size(); ++b)
        frame.strength[b] = Byte(vector.strength[b]);
    frame.voicing = Byte(vector.voicing);
    for (size_t f = 0; f < formants.size(); ++f)
        frame.formants[f] = static_cast<uint16_t>(std::lround(formants[f]));
    return frame;
}

/// Everything that a bank holds, each frame and each sequence once.
class Contents {
public:
    Contents(RecordedVoice& voice, const Colours& colours, float size)
        : m_voice(voice), m_mean(voice.MeanCepstrum()), m_colours(colours), m_size(size) {
        const int phones = static_cast<int>(voice.Phones().size());
        const auto count = static_cast<size_t>(phones);
        m_places.assign(count * count * count, bank::kNoSequence);
        std::vector<RecordedVoice::Triple> triples;
        for (int phone = 1; phone < phones; ++phone)
            for (int before = 0; before < phones; ++before)
                for (int after = 0; after < phones; ++after) {
                    const RecordedVoice::Triple triple{before, phone, after};
                    if (voice.IsWord(triple))
                        triples.push_back(triple);
                    if (triples.size() == kTriplesAtOnce)
                        Speak(triples);
                }
        Speak(triples);
    }

    void Write(const char* path) const {
        std::string body;
        const auto append = [&body](const void* bytes, size_t count) {
            body.append(static_cast<const char*>(bytes), count);
        };
        for (const std::string& phone : m_voice.Phones()) {
            bank::PhoneName name{};
            std::strncpy(name.text, phone.c_str(), sizeof name.text - 1);
            append(&name, sizeof name);
        }
        append(m_frames.data(), m_frames.size() * sizeof(bank::Frame));
        append(m_places.data(), m_places.size() * sizeof(uint32_t));
        append(m_sequences.data(), m_sequences.size() * sizeof(uint16_t));
        bank::Header header{};
        std::memcpy(header.magic, bank::kMagic, sizeof header.magic);
        header.version = bank::kVersion;
        header.bytes = static_cast<uint32_t>(sizeof header + body.size());
        header.check = bank::CheckSum(reinterpret_cast<const unsigned char*>(body.data()), body.size());
        header.phones = static_cast<uint32_t>(m_voice.Phones().size());
        header.frames = static_cast<uint32_t>(m_frames.size());
        header.sequenceWords = static_cast<uint32_t>(m_sequences.size());
        std::FILE* const file = std::fopen(path, "wb");
        const bool written = file && std::fwrite(&header, sizeof header, 1, file) == 1 &&
                             std::fwrite(body.data(), body.size(), 1, file) == 1;
        if ((file && std::fclose(file) != 0) || !written)
            throw std::runtime_error(std::string("cannot write ") + path);
    }

private:
    void Speak(std::vector<RecordedVoice::Triple>& triples) {
        if (triples.empty())
            return;
        const size_t phones = m_voice.Phones().size();
        const std::vector<RecordedVoice::Sequence> spoken = m_voice.Speak(triples);
        for (size_t i = 0; i < triples.size(); ++i) {
            const auto before = static_cast<size_t>(triples[i].before), phone = static_cast<size_t>(triples[i].phone),
                       after = static_cast<size_t>(triples[i].after);
            m_places[(phone * phones + before) * phones + after] = Place(spoken[i], m_voice.Phones()[phone]);
        }
        triples.clear();
    }

    uint32_t Place(const RecordedVoice::Sequence& sequence, const std::string& phone) {
        std::vector<uint16_t> words(1);
        for (int s = 0; s < bank::kStates; ++s) {
            size_t count = 0;
            for (const int vector : sequence[static_cast<size_t>(s)])
                if (++count <= bank::kMostStateFrames)
                    words.push_back(FrameNumber(vector, phone, s));
            words[0] |= static_cast<uint16_t>(std::min<size_t>(count, bank::kMostStateFrames) << (5 * s));
        }
        const auto [place, isNew] = m_known.try_emplace(words, static_cast<uint32_t>(m_sequences.size()));
        if (isNew)
            m_sequences.insert(m_sequences.end(), words.begin(), words.end());
        return place->second;
    }

    uint16_t FrameNumber(int vector, const std::string& phone, int state) {
        const auto [number, isNew] = m_numbers.try_emplace(vector, static_cast<uint16_t>(m_frames.size()));
        if (isNew) {
            if (m_frames.size() > UINT16_MAX)
                throw std::runtime_error("too many frames");
            m_frames.push_back(FrameOf(m_voice.VectorAt(vector), phone, state, m_mean, m_colours, m_size));
        }
        return number->second;
    }

    RecordedVoice& m_voice;
    Cepstrum m_mean;
    const Colours& m_colours;
    float m_size;
    std::vector<bank::Frame> m_frames;
    std::vector<uint32_t> m_places; ///< by phone, the one before, the one after
    std::vector<uint16_t> m_sequences;
    std::map<int, uint16_t> m_numbers;
    std::map<std::vector<uint16_t>, uint32_t> m_known;
};

} // namespace

int main(int count, char** arguments) try {
    if (count != 4)
        throw std::runtime_error("build_bank VOICE COLOURS FILE");
    flite_init();
    for (const Person& person : kPersons)
        if (std::strcmp(person.name, arguments[1]) == 0) {
            RecordedVoice voice(person.make(nullptr));
            std::ifstream text(arguments[2]);
            if (!text)
                throw std::runtime_error(std::string("cannot read ") + arguments[2]);
            Contents(voice, ReadColours(text, voice.Phones()), person.size).Write(arguments[3]);
            return 0;
        }
    throw std::runtime_error(std::string("no such voice: ") + arguments[1]);
} catch (const std::exception& error) {
    std::fprintf(stderr, "build_bank: %s\n", error.what());
    return 1;
}
