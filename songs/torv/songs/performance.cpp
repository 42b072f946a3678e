#include "torv/songs/performance.h"

#include "torv/songs/song_clock.h"
#include "torv/songs/text_encoding.h"

#include <algorithm>
#include <filesystem>

namespace torv::songs {

namespace {

/// Scientific pitch names: note 60 is C4. A key signature with flats has flat names.
std::string NameOfKey(int key, bool flats) {
    constexpr const char* kSharps[] = {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};
    constexpr const char* kFlats[] = {"C", "Db", "D", "Eb", "E", "F", "Gb", "G", "Ab", "A", "Bb", "B"};
    const char* const name = flats ? kFlats[key % 12] : kSharps[key % 12];
    return name + std::to_string(key / 12 - 1);
}

/// Whether the signature has flats when all is transposed: a semitone is seven steps on the circle of fifths.
bool HasFlats(int fifths, int transpose) {
    const int steps = ((fifths + 7 * transpose) % 12 + 12) % 12;
    return steps > 6;
}

class Describer {
public:
    Describer(const Song& song, const Score& score, const PerformanceOptions& options)
        : m_song(song), m_score(score), m_options(options), m_clock(song.tempos) {}

    PerformedPart Describe(const ScorePart& scored, const PartPlan& plan, const Databases& databases) {
        PerformedPart part;
        part.name = plan.name;
        for (const ScoreMark& voice : plan.voices)
            part.voices.push_back({At(voice.tick), databases.NameOf(voice.id)});
        auto words = plan.line.notes.begin();
        auto signature = m_song.keys.begin();
        bool flats = false;
        for (const ScoredNote& note : scored.notes) {
            const uint32_t tick = note.tick - m_score.leadTicks;
            for (; signature != m_song.keys.end() && signature->tick <= tick; ++signature)
                flats = HasFlats(signature->fifths, m_options.transpose);
            while (words != plan.line.notes.end() && words->tick < tick)
                ++words;
            PerformedNote performed{
                At(tick), At(tick + note.length), tick,        note.length, note.key + m_options.transpose,
                {},       note.velocity,          note.joined, {}};
            performed.name = NameOfKey(performed.key, flats);
            const bool isWhole = words != plan.line.notes.end() && words->tick == tick;
            AddLyric(*note.lyric, isWhole ? words->words : std::vector<Word>(), performed);
            part.notes.push_back(std::move(performed));
        }
        return part;
    }

    std::vector<PerformedMeasure> Measures() const {
        std::vector<PerformedMeasure> measures;
        auto meter = m_song.meters.begin();
        Meter current;
        for (const Measure& measure : m_song.measures) {
            for (; meter != m_song.meters.end() && meter->tick <= measure.tick; ++meter)
                current = *meter;
            const uint32_t beat = std::max(4 * kTicksPerQuarter >> current.denominatorExponent, 1U);
            PerformedMeasure performed{measure.number, At(measure.tick), At(measure.tick + measure.length), {}};
            for (uint32_t tick = 0; tick < measure.length; tick += beat)
                performed.beats.push_back(At(measure.tick + tick));
            measures.push_back(std::move(performed));
        }
        return measures;
    }

    std::vector<PerformedTempo> Tempos() const {
        std::vector<PerformedTempo> tempos;
        if (m_song.tempos.empty() || m_song.tempos.front().tick > 0)
            tempos.push_back({At(0), 60e6 / kDefaultTempo});
        for (const Tempo& tempo : m_song.tempos)
            tempos.push_back({At(tempo.tick), 60e6 / tempo.microsecondsPerQuarter});
        return tempos;
    }

private:
    double At(uint32_t tick) const { return m_options.songStart + m_clock.SecondsAt(tick); }

    /// The library's lyrics have lost accents and the like: where they are as many as the file's words, those are told.
    static void AddLyric(CLyricObject& lyric, const std::vector<Word>& words, PerformedNote& note) {
        const int count = lyric.GetElementCount();
        const bool wordsFit = words.size() == static_cast<size_t>(count);
        double share = 0;
        for (int i = 0; i < count; ++i) {
            CLyricElement& element = *lyric.GetElementAt(i);
            PerformedSyllable syllable;
            syllable.text = ToUtf8(std::string(element.GetLyricString()), kShiftJis);
            if (syllable.text.ends_with('-')) {
                syllable.text.pop_back();
                syllable.hyphenAfter = !syllable.text.empty();
            }
            if (wordsFit) {
                syllable.text = words[static_cast<size_t>(i)].text;
                syllable.hyphenAfter = words[static_cast<size_t>(i)].hyphenAfter;
            }
            syllable.start = note.start + share * (note.end - note.start);
            share = std::min(share + element.GetDeltaRate(), 1.0);
            syllable.end = i + 1 < count ? note.start + share * (note.end - note.start) : note.end;
            for (int p = 0; p < element.GetPhonemeCharaCount(); ++p)
                syllable.phonemes.push_back(
                    {std::string(element.GetPhonemeChara(p)), element.GetConsonantAdvancement(p)});
            note.lyric.push_back(std::move(syllable));
        }
    }

    const Song& m_song;
    const Score& m_score;
    const PerformanceOptions& m_options;
    const SongClock m_clock;
};

} // namespace

void AddSound(KeptSound sound, PerformedPart& part) {
    std::vector<ExpectedKey> keys;
    for (const PerformedNote& note : part.notes)
        keys.push_back({note.start, note.end, note.key});
    part.heard = MeasureSound(sound.samples, sound.rate, keys);
    part.sound = std::move(sound);
}

Performance DescribePerformance(const Song& song, const Score& score, const std::vector<PartPlan>& plans,
                                const Databases& databases, const PerformanceOptions& options) {
    Describer describer(song, score, options);
    Performance performance;
    performance.title = song.title.empty() ? std::filesystem::path(song.source).stem().string() : song.title;
    performance.composer = song.composer;
    performance.input = song.source;
    performance.transpose = options.transpose;
    performance.verse = options.verse;
    performance.remarks = song.remarks;
    performance.measures = describer.Measures();
    performance.tempos = describer.Tempos();
    for (size_t i = 0; i < plans.size(); ++i)
        performance.parts.push_back(describer.Describe(score.parts[i], plans[i], databases));
    return performance;
}

} // namespace torv::songs
